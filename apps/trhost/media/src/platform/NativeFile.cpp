#include "NativeFile.h"

#include "../../../support/KeptText.h"
#include "../../MediaModule.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace trhost::media {
namespace {

std::string TemporaryPath(const std::string& inFinalPath)
{
    static std::atomic<unsigned> sNumber{0};
    const std::string ending = std::string(kiocore::filesupport::kTemporaryFileMark) +
                               std::to_string(getpid()) + "-" + std::to_string(++sNumber);
    const std::size_t nameStart = inFinalPath.rfind('/') + 1; // npos + 1 is 0
    // A name that only just fits must be cut to make place for the ending, between characters.
    std::size_t nameLength = std::min(inFinalPath.size() - nameStart, std::size_t(NAME_MAX) - ending.size());
    while (nameLength > 0 && nameStart + nameLength < inFinalPath.size() &&
           (inFinalPath[nameStart + nameLength] & 0xC0) == 0x80) {
        --nameLength;
    }
    return inFinalPath.substr(0, nameStart + nameLength) + ending;
}

} // namespace

std::string ShownPath(const std::string& inNativePath)
{
    std::string shown;
    for (const char c : inNativePath) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            shown += escaped;
        } else {
            shown += c;
        }
    }
    return shown;
}

InputFile::InputFile(const std::string& inNativePath)
{
    // Without O_NONBLOCK a pipe that nobody writes to would hold us here for ever.
    mDescriptor = open(inNativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (mDescriptor < 0 || fstat(mDescriptor, &status) != 0) {
        const int error = errno;
        if (mDescriptor >= 0) {
            close(mDescriptor);
        }
        throw kiocore::file_exception("open", ShownPath(inNativePath), error);
    }
    if (!S_ISREG(status.st_mode) || status.st_size == 0) {
        close(mDescriptor);
        throw kiocore::kio_exception(
            KeptText(
                S_ISDIR(status.st_mode)
                    ? "$$$/Halcyon/TrHost/Media/IsFolder=@0: is a folder; expected a media file#{@0: a file}"
                : S_ISREG(status.st_mode)
                    ? "$$$/Halcyon/TrHost/Media/IsEmpty=@0: is empty; expected a media file#{@0: a file}"
                    : "$$$/Halcyon/TrHost/Media/IsNotRegular=@0: is not a regular file; expected a media "
                      "file#{@0: a file}",
                {ShownPath(inNativePath)}),
            kMediaError_NotMedia);
    }
    mSize = status.st_size;
    posix_fadvise(mDescriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

InputFile::~InputFile()
{
    close(mDescriptor);
}

int InputFile::Read(std::uint8_t* outBytes, int inSize) noexcept
{
    ssize_t got;
    do {
        got = pread(mDescriptor, outBytes, static_cast<std::size_t>(inSize), mPosition);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        return -errno;
    }
    mPosition += got;
    return static_cast<int>(got);
}

OutputFile::OutputFile(const std::string& inFinalPath) : mFinalPath(inFinalPath)
{
    std::string path;
    do { // a process of our number may have been killed while it wrote
        path = TemporaryPath(mFinalPath);
        mDescriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (mDescriptor < 0 && errno == EEXIST);
    if (mDescriptor < 0) {
        throw kiocore::file_exception("create", ShownPath(path), errno);
    }
    mCurrentPath = std::move(path);
}

OutputFile::~OutputFile()
{
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
    if (!mCurrentPath.empty()) {
        unlink(mCurrentPath.c_str());
    }
}

void OutputFile::Write(const void* inBytes, std::size_t inSize)
{
    WriteAt(mSize, inBytes, inSize);
}

void OutputFile::WriteAt(std::int64_t inPosition, const void* inBytes, std::size_t inSize)
{
    const char* bytes = static_cast<const char*>(inBytes);
    while (inSize > 0) {
        const ssize_t written = pwrite(mDescriptor, bytes, inSize, inPosition);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw kiocore::file_exception("write", ShownPath(mFinalPath), errno);
        }
        bytes += written;
        inPosition += written;
        inSize -= static_cast<std::size_t>(written);
    }
    mSize = std::max(mSize, inPosition);
}

void OutputFile::Close()
{
    const int descriptor = mDescriptor;
    mDescriptor = -1;
    if (close(descriptor) != 0 && errno != EINTR) {
        throw kiocore::file_exception("close", ShownPath(mFinalPath), errno);
    }
}

void OutputFile::Publish()
{
    if (rename(mCurrentPath.c_str(), mFinalPath.c_str()) != 0) {
        throw kiocore::file_exception("rename", ShownPath(mFinalPath), errno);
    }
    mCurrentPath = mFinalPath;
}

} // namespace trhost::media
