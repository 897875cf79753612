#include "OwnedMapping.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/TemporaryFile.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <utility>

namespace trhost::effects::platform {
namespace {

using kiocore::filesupport::GetFileCalls;

std::atomic<OwnedMapping*> sLive{nullptr}; // what a forked child has to leave to its parent

// Belongs to the open file and not to the process: also this process does not get it twice, and closing some
// other descriptor of the file does not lose it.
int TryLock(int inFile)
{
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_len = 1;
    int result;
    do {
        result = ::fcntl(inFile, F_OFD_SETLK, &range);
    } while (result != 0 && errno == EINTR);
    return result;
}

bool IsSameFile(int inFile, const std::string& inPath)
{
    struct stat ours {};
    struct stat there {};
    return ::fstat(inFile, &ours) == 0 && ::lstat(inPath.c_str(), &there) == 0 && S_ISREG(ours.st_mode) &&
           ours.st_dev == there.st_dev && ours.st_ino == there.st_ino;
}

void RegisterForForks(void (*inInChild)() noexcept)
{
    static const int registered = ::pthread_atfork(nullptr, nullptr, inInChild);
    if (registered != 0) {
        throw kiocore::file_exception("watch for forks of the owner of", "a black box", registered);
    }
}

} // namespace

OwnedMapping::OwnedMapping(std::string inPath, std::size_t inSize) : mPath(std::move(inPath)), mSize(inSize)
{
    RegisterForForks(&LeaveToParent);
    try {
        Map();
    } catch (...) {
        Remove();
        throw;
    }
    sLive.store(this);
}

void OwnedMapping::Map()
{
    std::string name = kiocore::filesupport::TemporaryNameBeside(mPath);
    mFile = GetFileCalls().Open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (mFile < 0) {
        throw kiocore::file_exception("make", name, errno);
    }
    mName = std::move(name);
    if (TryLock(mFile) != 0) {
        throw kiocore::file_exception("lock", mName, errno);
    }
    // Not a file with a hole: memory that finds no place on a full disk ends the process when it is written.
    if (const int error = ::posix_fallocate(mFile, 0, static_cast<off_t>(mSize)); error != 0) {
        throw kiocore::file_exception("find room for", mName, error);
    }
    void* const memory = ::mmap(nullptr, mSize, PROT_READ | PROT_WRITE, MAP_SHARED, mFile, 0);
    if (memory == MAP_FAILED) {
        throw kiocore::file_exception("map", mName, errno);
    }
    mMemory = memory;
}

OwnedMapping::~OwnedMapping()
{
    Remove();
    if (mMemory) {
        ::munmap(mMemory, mSize);
    }
}

void OwnedMapping::Publish()
{
    if (::msync(mMemory, mSize, MS_SYNC) != 0) {
        throw kiocore::file_exception("write", mName, errno);
    }
    if (GetFileCalls().Rename(mName.c_str(), mPath.c_str()) != 0) {
        throw kiocore::file_exception("rename", mName, errno);
    }
    mName = mPath;
}

void OwnedMapping::Remove() noexcept
{
    OwnedMapping* self = this;
    sLive.compare_exchange_strong(self, nullptr);
    if (mFile < 0) {
        return;
    }
    if (!mName.empty() && IsSameFile(mFile, mName)) {
        GetFileCalls().Unlink(mName.c_str());
    }
    GetFileCalls().Close(std::exchange(mFile, -1));
}

// In a child, before fork returns there: only what may be done in a signal handler.
void OwnedMapping::LeaveToParent() noexcept
{
    OwnedMapping* const live = sLive.exchange(nullptr);
    if (!live) {
        return;
    }
    ::close(std::exchange(live->mFile, -1)); // else the lock would outlive the parent
    [[maybe_unused]] void* const own = ::mmap(live->mMemory, live->mSize, PROT_READ | PROT_WRITE,
                                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
}

std::optional<AbandonedFile> AbandonedFile::Claim(const std::string& inPath)
{
    const int file = GetFileCalls().Open(inPath.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0);
    if (file < 0) {
        return std::nullopt;
    }
    AbandonedFile claimed(inPath, file);
    // Looked at once locked: another reader may have removed it between our opening and locking.
    if (TryLock(file) != 0 || !IsSameFile(file, inPath)) {
        return std::nullopt;
    }
    return claimed;
}

AbandonedFile::AbandonedFile(AbandonedFile&& inOther) noexcept
    : mPath(std::move(inOther.mPath)), mFile(std::exchange(inOther.mFile, -1))
{}

AbandonedFile::~AbandonedFile()
{
    if (mFile >= 0) {
        GetFileCalls().Close(mFile);
    }
}

std::string AbandonedFile::Read(std::size_t inMostBytes) const
{
    std::string bytes(inMostBytes, '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t got = GetFileCalls().Read(mFile, bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno != EINTR) {
            return {};
        }
        if (got == 0) {
            break;
        }
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    bytes.resize(size);
    return bytes;
}

std::int64_t AbandonedFile::AgeInSeconds() const
{
    struct stat status {};
    return ::fstat(mFile, &status) == 0 ? std::time(nullptr) - status.st_mtim.tv_sec : 0;
}

void AbandonedFile::Remove() noexcept
{
    GetFileCalls().Unlink(mPath.c_str());
}

std::string GetBootID()
{
    std::string id(64, '\0');
    const int file = ::open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return {};
    }
    const ssize_t size = ::read(file, id.data(), id.size());
    ::close(file);
    id.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    while (!id.empty() && id.back() == '\n') {
        id.pop_back();
    }
    return id;
}

long long GetProcessNumber()
{
    return ::getpid();
}

} // namespace trhost::effects::platform
