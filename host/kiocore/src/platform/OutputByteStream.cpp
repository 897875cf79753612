#include <kiocore/filesupport/PlatformByteStream.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kiocore::filesupport {

// The system's own calls and not those of GetFileCalls: signal handlers come here.

OPlatformByteStream::OPlatformByteStream(const char* inNativePath) noexcept
{
    do {
        mHandle = ::open(inNativePath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    } while (mHandle < 0 && errno == EINTR);
    mErrno = mHandle < 0 ? errno : 0;
}

OPlatformByteStream::~OPlatformByteStream()
{
    if (mHandle >= 0) {
        ::close(mHandle);
    }
}

bool OPlatformByteStream::WriteBlock(const void* inBytes, std::size_t inSize) noexcept
{
    if (mHandle < 0) {
        return false;
    }
    const char* bytes = static_cast<const char*>(inBytes);
    while (inSize > 0) {
        const ssize_t written = ::write(mHandle, bytes, inSize);
        if (written > 0) {
            bytes += written;
            inSize -= static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            if (mErrno == 0) {
                mErrno = written == 0 ? EIO : errno; // trying on after nothing could go on for ever
            }
            return false;
        }
    }
    return true;
}

} // namespace kiocore::filesupport
