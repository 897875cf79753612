#include <kiocore/filesupport/AtomicFile.h>

#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace kiocore::filesupport {
namespace {

bool IsLater(const timespec& inA, const timespec& inB)
{
    return inA.tv_sec != inB.tv_sec ? inA.tv_sec > inB.tv_sec : inA.tv_nsec > inB.tv_nsec;
}

timespec NextNanosecond(timespec inTime)
{
    if (++inTime.tv_nsec == static_cast<long>(kNanosecondsPerSecond)) {
        inTime.tv_nsec = 0;
        ++inTime.tv_sec;
    }
    return inTime;
}

/// A descriptor of the folder that the path lies in, and what must be undone when syncing it fails.
class FolderOfFile {
public:
    ~FolderOfFile()
    {
        const int error = errno;
        if (mFolder >= 0) {
            GetFileCalls().Close(mFolder);
        }
        if (!mKeptName.empty()) {
            GetFileCalls().Unlink(mKeptName.c_str());
        }
        errno = error;
    }

    int Open(const std::string& inPath)
    {
        const std::size_t separator = inPath.rfind('/');
        const std::string folder = separator == std::string::npos ? "." : inPath.substr(0, separator + 1);
        do {
            mFolder = GetFileCalls().Open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
        } while (mFolder < 0 && errno == EINTR);
        return mFolder < 0 ? -1 : 0;
    }

    /// Gives the file that is to be replaced a second name, from which it can come back.
    int KeepReplaced(const std::string& inPath)
    {
        std::string name = TemporaryNameBeside(inPath);
        if (GetFileCalls().Link(inPath.c_str(), name.c_str()) == 0) {
            mKeptName = std::move(name);
            return 0;
        }
        const bool cannotLink = errno == EPERM || errno == EOPNOTSUPP || errno == EMLINK || errno == ENOSYS;
        return cannotLink ? 0 : -1;
    }

    int Sync()
    {
        int result;
        do {
            result = GetFileCalls().Sync(mFolder);
        } while (result != 0 && errno == EINTR);
        return result != 0 && errno == EINVAL ? 0 : result; // this file system does not sync folders
    }

    void BringBackReplaced(const std::string& inPath, bool inThereWasOne)
    {
        const int error = errno;
        if (!inThereWasOne) {
            GetFileCalls().Unlink(inPath.c_str());
        } else if (!mKeptName.empty() && GetFileCalls().Rename(mKeptName.c_str(), inPath.c_str()) == 0) {
            mKeptName.clear();
        }
        errno = error;
    }

private:
    int mFolder = -1;
    std::string mKeptName;
};

/// One save: each step returns -1 with errno when it failed.
class Saver {
public:
    Saver(const std::string& inPath, std::string_view inBytes, Durability inDurability)
        : mPath(inPath), mBytes(inBytes), mDurability(inDurability)
    {}

    SaveResult Run()
    {
        static constexpr struct {
            const char* name;
            int (Saver::*step)();
        } kSteps[] = {
            {"check", &Saver::Check},
            {"open", &Saver::Open},
            {"write", &Saver::Write},
            {"set mode", &Saver::SetMode},
            {"set time", &Saver::SetTime},
            {"sync", &Saver::Sync},
            {"close", &Saver::Close},
            {"open folder", &Saver::OpenFolder},
            {"link", &Saver::KeepReplaced},
            {"rename", &Saver::Rename},
            {"sync folder", &Saver::SyncFolder},
        };
        SaveResult result;
        for (const auto& [name, step] : kSteps) {
            if ((this->*step)() != 0) {
                result.errorNumber = errno;
                result.failedStep = name;
                return result;
            }
        }
        result.result = 0;
        result.modificationTime = ToFileTime(mTime);
        return result;
    }

private:
    int Check()
    {
        struct stat status;
        if (::stat(mPath.c_str(), &status) != 0) {
            return errno == ENOENT ? 0 : -1;
        }
        if (!S_ISREG(status.st_mode)) {
            errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
            return -1;
        }
        mReplaces = true;
        mReplacedMode = status.st_mode & 07777;
        mReplacedTime = status.st_mtim;
        return 0;
    }

    int Open() { return mTemporary.Create(mPath, mReplaces ? mReplacedMode & 0777 : 0666); }
    int Write() { return WriteAll(mTemporary.Descriptor(), mBytes.data(), mBytes.size()); }
    int SetMode()
    {
        // What the mask for new files took away, the replaced file may have; mostly it has nothing of that.
        struct stat status;
        if (!mReplaces) {
            return 0;
        }
        if (::fstat(mTemporary.Descriptor(), &status) == 0 && (status.st_mode & 07777) == mReplacedMode) {
            return 0;
        }
        return GetFileCalls().ChangeMode(mTemporary.Descriptor(), mReplacedMode);
    }

    int SetTime()
    {
        timespec time{};
        ::clock_gettime(CLOCK_REALTIME, &time);
        if (mReplaces && !IsLater(time, mReplacedTime)) {
            time = NextNanosecond(mReplacedTime);
        }
        // File systems keep times as finely as they can, down to two seconds.
        static constexpr int kCoarsestSeconds = 2;
        for (int more = 0; more <= kCoarsestSeconds; ++more) {
            const timespec times[2] = {{0, UTIME_OMIT}, time};
            struct stat status;
            if (GetFileCalls().SetTimes(mTemporary.Descriptor(), times) != 0 ||
                ::fstat(mTemporary.Descriptor(), &status) != 0) {
                return -1;
            }
            mTime = status.st_mtim;
            if (!mReplaces || IsLater(mTime, mReplacedTime)) {
                return 0;
            }
            ++time.tv_sec;
        }
        errno = EOVERFLOW; // the replaced file has the latest time that the file system knows
        return -1;
    }

    int Sync()
    {
        if (mDurability == Durability::kNone) {
            return 0;
        }
        int result;
        do {
            result = GetFileCalls().Sync(mTemporary.Descriptor());
        } while (result != 0 && errno == EINTR);
        return result;
    }

    int Close() { return mTemporary.Close(); }
    int OpenFolder() { return mDurability == Durability::kFull ? mFolder.Open(mPath) : 0; }
    int KeepReplaced()
    {
        return mDurability == Durability::kFull && mReplaces ? mFolder.KeepReplaced(mPath) : 0;
    }
    int Rename() { return mTemporary.RenameTo(mPath.c_str()); }
    int SyncFolder()
    {
        if (mDurability != Durability::kFull || mFolder.Sync() == 0) {
            return 0;
        }
        mFolder.BringBackReplaced(mPath, mReplaces);
        return -1;
    }

    const std::string& mPath;
    const std::string_view mBytes;
    const Durability mDurability;
    bool mReplaces = false;
    mode_t mReplacedMode = 0;
    timespec mReplacedTime{};
    timespec mTime{};
    TemporaryFile mTemporary;
    FolderOfFile mFolder;
};

} // namespace

SaveResult SaveFileAtomically(utility::UTF16View inPath, std::string_view inBytes, Durability inDurability)
{
    KIO_HOST_CALL("kiocore::filesupport::SaveFileAtomically", inPath, inBytes.size());
    const std::string path(NativePath(inPath).View());
    return Saver(path, inBytes, inDurability).Run();
}

} // namespace kiocore::filesupport
