#include <kiocore/filesupport/DocumentLock.h>

#include "../platform/ByteLock.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/RecursiveMutex.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <system_error>
#include <thread>
#include <vector>

namespace kiocore::filesupport {
namespace {

constexpr std::size_t kMostIdleFiles = 16;

struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// An open description of the lock file, and which of the files that had its path it is.
struct OpenLockFile {
    int file;
    std::uint64_t generation;
};

std::int64_t OffsetOf(const utility::Guid& inDocumentID)
{
    // From the hash that is the same in every build: other versions lock the same files.
    const utility::Guid hash = utility::Guid::FromHash(std::as_bytes(std::span(inDocumentID.AsBytes())));
    std::uint64_t number = 0;
    for (int i = 0; i < 8; ++i) {
        number = number << 8 | hash.AsBytes()[i];
    }
    return static_cast<std::int64_t>(number >> 2);
}

/// Tells once that a wait is long. Waiting itself happens in the system, which knows no time limit for it.
class WaitReporter {
public:
    WaitReporter(utility::UTF16View inLockFile, const utility::Guid& inDocumentID)
    {
        try {
            mThread = std::thread([this, inLockFile, &inDocumentID] { Run(inLockFile, inDocumentID); });
        } catch (const std::system_error&) {
            // No thread to be had: the wait works without its report.
        }
    }
    ~WaitReporter()
    {
        {
            std::lock_guard lock(mLock);
            mDone = true;
        }
        mWake.notify_one();
        if (mThread.joinable()) {
            mThread.join();
        }
    }

private:
    void Run(utility::UTF16View inLockFile, const utility::Guid& inDocumentID)
    {
        {
            std::unique_lock lock(mLock);
            if (mWake.wait_for(lock, threads::kLockLimit, [this] { return mDone; })) {
                return;
            }
        }
        debug::Trace(1, "Threads",
                     "ScDocumentLock has been waiting for more than " +
                         std::to_string(threads::kLockLimit.count() / 1000) + " s for document " +
                         inDocumentID.AsUTF8() + " in " + utility::ToUTF8(inLockFile) +
                         ", which another thread or process holds; it goes on waiting");
    }

    std::mutex mLock;
    std::condition_variable mWake;
    bool mDone = false;
    std::thread mThread;
};

} // namespace

/// The open descriptions of one lock file that nobody uses at the moment.
struct ScDocumentLock::Pool {
    explicit Pool(utility::UTF16View inLockFile) : path(ToNative(inLockFile)) {}

    OpenLockFile Take()
    {
        std::vector<int> inherited;
        {
            std::lock_guard guard(lock);
            if (const pid_t process = ::getpid(); process != owner) {
                // A forked child shares its parent's open descriptions, and those exclude nobody who has
                // them.
                owner = process;
                inherited.swap(idle);
            }
            if (!idle.empty()) {
                const int file = idle.back();
                idle.pop_back();
                return {file, generation};
            }
        }
        for (int file : inherited) {
            GetFileCalls().Close(file);
        }
        return OpenFile();
    }

    void GiveBack(OpenLockFile inFile)
    {
        {
            std::lock_guard guard(lock);
            if (inFile.generation == generation && idle.size() < kMostIdleFiles) {
                idle.push_back(inFile.file);
                return;
            }
        }
        GetFileCalls().Close(inFile.file);
    }

    /// Whether the file is still the one that others find under the path.
    bool IsCurrent(OpenLockFile inFile)
    {
        struct stat status;
        if (::stat(path.c_str(), &status) != 0) {
            return false;
        }
        std::lock_guard guard(lock);
        return inFile.generation == generation && identity == FileIdentity{status.st_dev, status.st_ino};
    }

    /// @throws file_exception
    OpenLockFile OpenFile()
    {
        static constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC;
        FileCalls& calls = GetFileCalls();
        int file = calls.Open(path.c_str(), kFlags, 0666);
        if (file < 0 && errno == ENOENT && !path.empty()) {
            const std::size_t separator = path.rfind('/');
            if (separator != std::string::npos && MakeFolders(path.substr(0, separator + 1)) == 0) {
                file = calls.Open(path.c_str(), kFlags, 0666);
            }
        }
        if (file < 0) {
            throw file_exception("open lock file", path, errno);
        }
        struct stat status;
        if (::fstat(file, &status) != 0) {
            const int error = errno;
            calls.Close(file);
            throw file_exception("ask for the state of lock file", path, error);
        }
        const FileIdentity found{status.st_dev, status.st_ino};
        std::vector<int> outdated;
        std::uint64_t openedGeneration;
        {
            std::lock_guard guard(lock);
            if (!(found == identity)) {
                identity = found;
                ++generation;
                outdated.swap(idle);
            }
            openedGeneration = generation;
        }
        for (int old : outdated) {
            calls.Close(old);
        }
        return {file, openedGeneration};
    }

    const std::string path;
    std::mutex lock; // guards the members below
    FileIdentity identity;
    std::uint64_t generation = 0;
    pid_t owner = ::getpid(); // of the idle ones
    std::vector<int> idle;    // all of this generation
};

struct DocumentLockPools {
    static ScDocumentLock::Pool& Get(utility::UTF16View inLockFile)
    {
        // Never destroyed: locks may still be taken by objects that go at exit.
        static auto* const pools = new DocumentLockPools;
        std::lock_guard guard(pools->lock);
        auto found = pools->byPath.find(inLockFile);
        if (found == pools->byPath.end()) {
            found = pools->byPath
                        .emplace(utility::UTF16String(inLockFile),
                                 std::make_unique<ScDocumentLock::Pool>(inLockFile))
                        .first;
        }
        return *found->second;
    }

    std::mutex lock;
    std::map<utility::UTF16String, std::unique_ptr<ScDocumentLock::Pool>, std::less<>> byPath;
};

ScDocumentLock::ScDocumentLock(utility::UTF16View inLockFile, const utility::Guid& inDocumentID)
    : mPool(DocumentLockPools::Get(inLockFile)), mFile(-1), mOffset(OffsetOf(inDocumentID)), mGeneration(0)
{
    OpenLockFile file = mPool.Take();
    for (;;) {
        int error = platform::LockByte(file.file, mOffset, platform::ByteLockWait::kNo);
        if (error == EAGAIN) {
            WaitReporter reporter(inLockFile, inDocumentID);
            error = platform::LockByte(file.file, mOffset, platform::ByteLockWait::kAsLongAsItTakes);
        }
        if (error != 0) {
            GetFileCalls().Close(file.file);
            throw file_exception("lock", mPool.path, error);
        }
        if (mPool.IsCurrent(file)) {
            break;
        }
        // The file was deleted or replaced; those who come now lock the new one.
        GetFileCalls().Close(file.file);
        file = mPool.OpenFile();
    }
    mFile = file.file;
    mGeneration = file.generation;
}

ScDocumentLock::~ScDocumentLock()
{
    if (platform::UnlockByte(mFile, mOffset) == 0) {
        mPool.GiveBack({mFile, mGeneration});
    } else {
        GetFileCalls().Close(mFile); // releases it in any case
    }
}

} // namespace kiocore::filesupport
