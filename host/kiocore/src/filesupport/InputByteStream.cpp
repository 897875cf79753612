#include <kiocore/filesupport/PlatformByteStream.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace kiocore::filesupport {
namespace {

// Not blocking: opening a pipe would wait for somebody to write to it.
int OpenToRead(const char* inPath)
{
    int file;
    do {
        file = GetFileCalls().Open(inPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0);
    } while (file < 0 && errno == EINTR);
    return file;
}

/// @return 0, or why this is nothing to read blocks from.
int ReasonNotToRead(int inFile)
{
    struct stat status;
    if (::fstat(inFile, &status) != 0) {
        return errno;
    }
    if (S_ISREG(status.st_mode)) {
        return 0;
    }
    return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
}

} // namespace

IPlatformByteStream::IPlatformByteStream(const utility::UTF16String& inPath) : mPath(inPath)
{
    KIO_HOST_CALL("kiocore::filesupport::IPlatformByteStream", mPath);
    mHandle = OpenToRead(NativePath(mPath).CString());
    if (mHandle < 0) {
        throw file_exception("open", utility::ToUTF8(mPath), errno);
    }
    if (const int error = ReasonNotToRead(mHandle); error != 0) {
        GetFileCalls().Close(mHandle);
        throw file_exception("read", utility::ToUTF8(mPath), error);
    }
}

IPlatformByteStream::~IPlatformByteStream()
{
    GetFileCalls().Close(mHandle);
}

std::uint64_t IPlatformByteStream::Size() const
{
    KIO_HOST_CALL("kiocore::filesupport::IPlatformByteStream::Size", mPath);
    struct stat status;
    if (::fstat(mHandle, &status) != 0) {
        throw file_exception("find out the size of", utility::ToUTF8(mPath), errno);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

void IPlatformByteStream::SetPosition(std::uint64_t inPosition)
{
    KIO_HOST_CALL("kiocore::filesupport::IPlatformByteStream::SetPosition", mPath, inPosition);
    if (::lseek(mHandle, static_cast<off_t>(inPosition), SEEK_SET) < 0) {
        throw file_exception("read", utility::ToUTF8(mPath), errno);
    }
}

std::size_t IPlatformByteStream::ReadBlock(void* outBytes, std::size_t inSize)
{
    KIO_HOST_CALL("kiocore::filesupport::IPlatformByteStream::ReadBlock", mPath, inSize);
    char* const bytes = static_cast<char*>(outBytes);
    std::size_t size = 0;
    while (size < inSize) {
        const ssize_t got = GetFileCalls().Read(mHandle, bytes + size, inSize - size);
        if (got == 0) {
            break;
        }
        if (got < 0 && errno != EINTR) {
            throw file_exception("read", utility::ToUTF8(mPath), errno);
        }
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    return size;
}

} // namespace kiocore::filesupport
