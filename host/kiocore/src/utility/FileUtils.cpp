#include <kiocore/utility/FileUtils.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kiocore::utility {
namespace {

using filesupport::NativePath;

[[noreturn]] void ThrowFileError(const char* inOperation, UTF16View inPath, int inErrno)
{
    throw file_exception(inOperation, ToUTF8(inPath), inErrno);
}

UTF16String WithSeparator(UTF16View inPath, std::size_t inRoomBehind)
{
    UTF16String path;
    path.reserve(inPath.size() + 1 + inRoomBehind);
    path = inPath;
    if (!path.empty() && path.back() != u'/') {
        path += u'/';
    }
    return path;
}

} // namespace

UTF16String FileUtils::AddTrailingSlash(UTF16View inPath)
{
    KIO_HOST_CALL("kiocore::utility::FileUtils::AddTrailingSlash", inPath);
    return WithSeparator(inPath, 0);
}

UTF16String FileUtils::BuildPathSpec(UTF16View inFolder, UTF16View inName)
{
    KIO_HOST_CALL("kiocore::utility::FileUtils::BuildPathSpec", inFolder, inName);
    return WithSeparator(inFolder, inName.size()) += inName;
}

bool FileUtils::FileOrDirExists(UTF16View inPath)
{
    KIO_HOST_CALL("kiocore::utility::FileUtils::FileOrDirExists", inPath);
    struct stat status;
    return ::stat(NativePath(inPath).CString(), &status) == 0;
}

bool FileUtils::IsReadOnly(UTF16View inPath)
{
    KIO_HOST_CALL("kiocore::utility::FileUtils::IsReadOnly", inPath);
    const NativePath path(inPath);
    if (::faccessat(AT_FDCWD, path.CString(), W_OK, AT_EACCESS) == 0) {
        return false;
    }
    const bool refused = errno == EACCES || errno == EROFS || errno == EPERM || errno == ETXTBSY;
    struct stat status;
    return refused && ::stat(path.CString(), &status) == 0;
}

void FileUtils::UpdateFileAccessedTime(UTF16View inPath)
{
    KIO_HOST_CALL("kiocore::utility::FileUtils::UpdateFileAccessedTime", inPath);
    static constexpr timespec kTimes[2] = {{0, UTIME_NOW}, {0, UTIME_OMIT}};
    const NativePath path(inPath);
    if (filesupport::GetFileCalls().SetTimesOfPath(path.CString(), kTimes) != 0) [[unlikely]] {
        const int error = errno;
        if (error != EPERM && error != EACCES && error != EROFS) {
            ThrowFileError("update the access time of", inPath, error);
        }
    }
}

} // namespace kiocore::utility
