#include "FileBytes.h"

#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace BE {
namespace {

struct ScFile {
    int file;
    ~ScFile() { ::close(file); }
};

} // namespace

char* ByteBuffer::Reserve(std::size_t inSize)
{
    if (capacity < inSize + kSlackBytes) {
        const std::size_t larger = std::max<std::size_t>(inSize + kSlackBytes, 16384);
        bytes.reset(); // first, so that both are never there at once
        capacity = 0;
        bytes.reset(new char[larger]);
        capacity = larger;
    }
    std::memset(bytes.get() + inSize, 0, kSlackBytes);
    return bytes.get();
}

FileBytes ReadFileBytes(kiocore::UTF16View inPath, std::size_t inMaxBytes, ByteBuffer& ioBuffer)
{
    FileBytes result;
    const auto fail = [&](const char* inStep, int inError) {
        result.failedStep = inStep;
        result.errorNumber = inError;
        return result;
    };
    const kiocore::filesupport::NativePath path(inPath);
    const int file = ::open(path.CString(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        return fail("open", errno);
    }
    const ScFile closer{file};
    struct stat status;
    if (::fstat(file, &status) != 0) {
        return fail("examine", errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return fail("examine", S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    result.size = static_cast<std::size_t>(status.st_size);
    if (result.size > inMaxBytes) {
        return fail("read", EFBIG);
    }
    char* const bytes = ioBuffer.Reserve(result.size);
    for (std::size_t got = 0; got < result.size;) {
        const ssize_t more = ::read(file, bytes + got, result.size - got);
        if (more > 0) {
            got += static_cast<std::size_t>(more);
        } else if (more == 0) {
            result.size = got; // it shrank meanwhile; the parser judges what is left
            std::memset(bytes + got, 0, kSlackBytes);
        } else if (errno != EINTR) {
            return fail("read", errno);
        }
    }
    result.modificationTime = kiocore::filesupport::ToFileTime(status.st_mtim);
    return result;
}

} // namespace BE
