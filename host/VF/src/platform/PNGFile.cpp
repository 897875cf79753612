#include "PNGFile.h"

#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace VF::platform {
namespace {

std::string Reason(const char* inStep)
{
    return std::string("cannot ") + inStep + " it: " + std::generic_category().message(errno);
}

} // namespace

PNGFile::~PNGFile()
{
    if (mFile >= 0) {
        ::close(mFile);
    }
}

std::string PNGFile::Open(kiocore::UTF16View inPath)
{
    const kiocore::filesupport::NativePath path(inPath);
    mFile = ::open(path.CString(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (mFile < 0) {
        return Reason("open");
    }
    struct stat status;
    if (::fstat(mFile, &status) != 0) {
        return Reason("examine");
    }
    if (!S_ISREG(status.st_mode)) {
        return "it is no file";
    }
    mSize = static_cast<std::uint64_t>(status.st_size);
    mDevice = status.st_dev;
    mNumber = status.st_ino;
    return {};
}

std::size_t PNGFile::ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize)
{
    std::size_t got = 0;
    while (got < inSize) {
        const ssize_t more = ::pread(mFile, static_cast<std::byte*>(outBytes) + got, inSize - got,
                                     static_cast<off_t>(inOffset + got));
        if (more == 0) {
            break;
        }
        if (more > 0) {
            got += static_cast<std::size_t>(more);
        } else if (errno != EINTR) {
            mFailure = Reason("read");
            break;
        }
    }
    return got;
}

bool PNGFile::IsSameAs(const PNGFile& inOther) const
{
    return mFile >= 0 && inOther.mFile >= 0 && mDevice == inOther.mDevice && mNumber == inOther.mNumber;
}

} // namespace VF::platform
