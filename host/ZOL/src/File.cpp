#include <ZOL/File.h>

#include "FileListContents.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/TemporaryFile.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace ZOL {
namespace {

namespace filesupport = kiocore::filesupport;
using filesupport::FileCalls;
using filesupport::GetFileCalls;
using filesupport::NativePath;

constexpr int kDeleted = 0;
constexpr int kNoSuchFile = -1;
constexpr int kNoRegularFile = -2;

/// No file can have the path.
bool MeansThereIsNone(int inErrno)
{
    return inErrno == ENOENT || inErrno == ENOTDIR || inErrno == ENAMETOOLONG || inErrno == ELOOP;
}

[[noreturn]] void ThrowFileError(const char* inOperation, UTF16View inPath, int inErrno)
{
    throw kiocore::file_exception(inOperation, kiocore::utility::ToUTF8(inPath), inErrno);
}

/// A file that is only read, so that closing it cannot lose anything.
class SourceFile {
public:
    // Without blocking: nobody may ever write to a pipe that has the name.
    explicit SourceFile(const char* inPath) : mFile(::open(inPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~SourceFile()
    {
        if (mFile >= 0) {
            ::close(mFile);
        }
    }
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    int Descriptor() const { return mFile; }
    bool GetStatus(struct stat& outStatus) const { return mFile >= 0 && ::fstat(mFile, &outStatus) == 0; }

private:
    const int mFile;
};

bool CopyByReading(int inFrom, int inTo)
{
    static constexpr std::size_t kBufferBytes = 256 * 1024;
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferBytes);
    for (;;) {
        const ssize_t read = ::read(inFrom, buffer.get(), kBufferBytes);
        if (read == 0) {
            return true;
        }
        if (read < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (filesupport::WriteAll(inTo, buffer.get(), static_cast<std::size_t>(read)) != 0) {
            return false;
        }
    }
}

bool CopyContents(int inFrom, int inTo)
{
    static constexpr std::size_t kMostAtOnce = std::size_t(1) << 30;
    for (;;) {
        const ssize_t copied = GetFileCalls().CopyRange(inFrom, inTo, kMostAtOnce);
        if (copied > 0 || (copied < 0 && errno == EINTR)) {
            continue;
        }
        const bool cannot = copied < 0 && (errno == ENOSYS || errno == EXDEV || errno == EINVAL ||
                                           errno == EOPNOTSUPP || errno == EPERM || errno == EBADF);
        // Some file systems say "at the end" where they mean "not this way", so reading has the last word.
        return (copied == 0 || cannot) && CopyByReading(inFrom, inTo);
    }
}

} // namespace

int File::GetLastModificationTime(UTF16View inPath, filesupport::FileTime& outTime)
{
    KIO_HOST_CALL("ZOL::File::GetLastModificationTime", inPath);
    struct stat status;
    if (::stat(NativePath(inPath).CString(), &status) != 0) {
        return -1;
    }
    outTime = filesupport::ToFileTime(status.st_mtim);
    return 0;
}

int File::Delete(UTF16View inPath)
{
    KIO_HOST_CALL("ZOL::File::Delete", inPath);
    const NativePath path(inPath);
    struct stat status;
    if (::lstat(path.CString(), &status) != 0) {
        if (MeansThereIsNone(errno)) {
            return kNoSuchFile;
        }
        ThrowFileError("delete", inPath, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return kNoRegularFile;
    }
    if (GetFileCalls().Unlink(path.CString()) == 0) {
        return kDeleted;
    }
    if (MeansThereIsNone(errno)) {
        return kNoSuchFile;
    }
    ThrowFileError("delete", inPath, errno);
}

int File::Delete(const FileList& inFiles, std::size_t inIndex, OpenFolder& ioFolder)
{
    KIO_HOST_CALL("ZOL::File::Delete", inFiles.GetPath(inIndex));
    const FileListContents::Entry& entry = inFiles.mContents->files.at(inIndex);
    const int folder = ioFolder.Open(inFiles, entry.folder);
    const char* const name = inFiles.mContents->names.Get(entry.name);
    if (folder >= 0 && GetFileCalls().UnlinkAt(folder, name, 0) == 0) {
        return kDeleted;
    }
    const int error = errno;
    if (MeansThereIsNone(error)) {
        return kNoSuchFile;
    }
    struct stat status;
    if (folder >= 0 && ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(status.st_mode)) {
        return kNoRegularFile; // a folder that took its place
    }
    ThrowFileError("delete", inFiles.GetPath(inIndex), error);
}

int File::Copy(UTF16View inFrom, UTF16View inTo)
{
    KIO_HOST_CALL("ZOL::File::Copy", inFrom, inTo);
    const NativePath target(inTo);
    const SourceFile source(NativePath(inFrom).CString());
    struct stat from;
    if (!source.GetStatus(from) || !S_ISREG(from.st_mode)) {
        return -1;
    }
    struct stat to;
    if (::lstat(target.CString(), &to) == 0) {
        if (!S_ISREG(to.st_mode)) {
            return -1;
        }
        if (to.st_dev == from.st_dev && to.st_ino == from.st_ino) {
            return 0; // onto itself
        }
    }
    const mode_t permissions = from.st_mode & 0777;
    filesupport::TemporaryFile copy;
    if (copy.Create(target.View(), permissions | S_IWUSR) != 0 ||
        !CopyContents(source.Descriptor(), copy.Descriptor()) ||
        GetFileCalls().ChangeMode(copy.Descriptor(), permissions) != 0 || copy.Close() != 0 ||
        copy.RenameTo(target.CString()) != 0) {
        return -1;
    }
    return 0;
}

int Directory::CreateOnDisk(UTF16View inFolder, bool inRecursive)
{
    KIO_HOST_CALL("ZOL::Directory::CreateOnDisk", inFolder, inRecursive);
    const NativePath folder(inFolder);
    if (inRecursive) {
        return filesupport::MakeFolders(std::string(folder.View())) == 0 ? 0 : -1;
    }
    if (GetFileCalls().MakeFolder(folder.CString(), 0777) == 0) {
        return 0;
    }
    struct stat status;
    return ::stat(folder.CString(), &status) == 0 && S_ISDIR(status.st_mode) ? 0 : -1;
}

bool Directory::IsDirectoryEmpty(UTF16View inFolder)
{
    KIO_HOST_CALL("ZOL::Directory::IsDirectoryEmpty", inFolder);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(NativePath(inFolder).CString()), ::closedir);
    if (!listing) {
        return false;
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(listing.get());
        if (!entry) {
            return errno == 0;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            return false;
        }
    }
}

int Directory::Delete(UTF16View inFolder)
{
    KIO_HOST_CALL("ZOL::Directory::Delete", inFolder);
    return GetFileCalls().UnlinkAt(AT_FDCWD, NativePath(inFolder).CString(), AT_REMOVEDIR) == 0 ? 0 : -1;
}

} // namespace ZOL
