#include "StampedFile.h"

#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/FileTime.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kiocore::platform {
namespace {

FileStamp StampFrom(const struct stat& inStatus)
{
    return {true,
            inStatus.st_dev,
            inStatus.st_ino,
            static_cast<std::uint64_t>(inStatus.st_size),
            filesupport::ToFileTime(inStatus.st_mtim),
            filesupport::ToFileTime(inStatus.st_ctim)};
}

int ReadAll(int inFile, FileStamp& outStamp, std::string& outBytes)
{
    struct stat status;
    if (::fstat(inFile, &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0'); // one more sees the end
    std::size_t size = 0;
    for (;;) {
        const ssize_t got = ::read(inFile, bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno != EINTR) {
            return errno;
        }
        if (got == 0) {
            break;
        }
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
        if (size == bytes.size()) {
            bytes.resize(2 * size);
        }
    }
    bytes.resize(size);
    outStamp = StampFrom(status);
    outBytes = std::move(bytes);
    return 0;
}

} // namespace

int GetFileStamp(const std::string& inPath, FileStamp& outStamp)
{
    struct stat status;
    if (::stat(inPath.c_str(), &status) != 0) {
        outStamp = {};
        return errno == ENOENT ? 0 : errno;
    }
    outStamp = StampFrom(status);
    return 0;
}

int ReadStampedFile(const std::string& inPath, FileStamp& outStamp, std::string& outBytes)
{
    int file;
    do {
        // Not blocking: opening a pipe would wait for somebody to write to it.
        file = filesupport::GetFileCalls().Open(inPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0);
    } while (file < 0 && errno == EINTR);
    if (file < 0) {
        return errno;
    }
    const int error = ReadAll(file, outStamp, outBytes);
    filesupport::GetFileCalls().Close(file);
    return error;
}

} // namespace kiocore::platform
