#include <kiocore/filesupport/File.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>

#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace kiocore::filesupport {

File::File(utility::UTF16String inPath) : mPath(std::move(inPath)) {}

utility::UTF16String File::GetExtension(bool inWithDot) const
{
    KIO_HOST_CALL("kiocore::filesupport::File::GetExtension", mPath);
    const std::size_t name = mPath.find_last_of(u'/') + 1; // 0 where there is no separator
    const std::size_t dot = mPath.find_last_of(u'.');
    if (dot == utility::UTF16String::npos || dot <= name) {
        return {};
    }
    return mPath.substr(inWithDot ? dot : dot + 1);
}

bool File::Exists() const
{
    KIO_HOST_CALL("kiocore::filesupport::File::Exists", mPath);
    struct stat status;
    return ::stat(NativePath(mPath).CString(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::uint64_t File::Size() const
{
    KIO_HOST_CALL("kiocore::filesupport::File::Size", mPath);
    struct stat status;
    int error = ::stat(NativePath(mPath).CString(), &status) == 0 ? 0 : errno;
    if (error == 0 && S_ISDIR(status.st_mode)) {
        error = EISDIR;
    }
    if (error != 0) {
        throw file_exception("find out the size of", utility::ToUTF8(mPath), error);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

void File::Delete() const
{
    KIO_HOST_CALL("kiocore::filesupport::File::Delete", mPath);
    if (GetFileCalls().Unlink(NativePath(mPath).CString()) != 0 && errno != ENOENT) {
        throw file_exception("delete", utility::ToUTF8(mPath), errno);
    }
}

} // namespace kiocore::filesupport
