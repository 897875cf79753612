#include "PNGFile.h"

#include "frames/FrameMemory.h"
#include "png/PNGHeader.h"

#include <kiocore/filesupport/NativePath.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace VF::platform {
namespace {

struct ScFile {
    int file;
    ~ScFile() { ::close(file); }
};

std::string Reason(const char* inStep)
{
    return std::string("cannot ") + inStep + " it: " + std::generic_category().message(errno);
}

/// Reads until the buffer is full or the file ends.
/// @return how many bytes, or -1 with errno.
ssize_t ReadUpTo(int inFile, std::byte* outBytes, std::size_t inSize)
{
    std::size_t got = 0;
    while (got < inSize) {
        const ssize_t more = ::read(inFile, outBytes + got, inSize - got);
        if (more == 0) {
            break;
        }
        if (more > 0) {
            got += static_cast<std::size_t>(more);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<ssize_t>(got);
}

} // namespace

std::string ReadPNGFile(kiocore::UTF16View inPath, kiocore::utility::SharedRecycledMemory& outBytes)
{
    const kiocore::filesupport::NativePath path(inPath);
    const int file = ::open(path.CString(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        return Reason("open");
    }
    const ScFile closer{file};
    struct stat status;
    if (::fstat(file, &status) != 0) {
        return Reason("examine");
    }
    if (!S_ISREG(status.st_mode)) {
        return "it is no file";
    }
    std::byte start[kPNGStartBytes];
    const ssize_t startSize = ReadUpTo(file, start, sizeof(start));
    if (startSize < 0) {
        return Reason("read");
    }
    if (std::string reason = RefusePNGStart(start, static_cast<std::size_t>(startSize)); !reason.empty()) {
        return reason;
    }
    const std::uint64_t size =
        std::max(static_cast<std::uint64_t>(status.st_size), std::uint64_t{sizeof(start)});
    if (size > MachineMemoryBytes()) {
        return "its " + std::to_string(size) + " bytes are more than this machine's memory";
    }
    kiocore::utility::SharedRecycledMemory memory = kiocore::utility::MakeSharedRecycledMemory(size);
    if (!memory) {
        return "there is no memory for its " + std::to_string(size) + " bytes";
    }
    std::memcpy(memory.bytes.get(), start, sizeof(start));
    const ssize_t more = ReadUpTo(file, memory.bytes.get() + sizeof(start), size - sizeof(start));
    if (more < 0) {
        return Reason("read");
    }
    memory.size = sizeof(start) + static_cast<std::size_t>(more); // less when it shrank meanwhile
    outBytes = std::move(memory);
    return {};
}

} // namespace VF::platform
