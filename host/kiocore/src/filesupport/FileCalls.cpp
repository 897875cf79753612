#include <kiocore/filesupport/FileCalls.h>

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

namespace kiocore::filesupport {
namespace {

// Never destroyed: objects that go at exit may still save.
FileCalls& SystemCalls()
{
    static FileCalls* const calls = new FileCalls;
    return *calls;
}

std::atomic<FileCalls*> sReplacement{nullptr};

} // namespace

FileCalls::~FileCalls() = default;
int FileCalls::Open(const char* inPath, int inFlags, mode_t inMode)
{
    return ::open(inPath, inFlags, inMode);
}
int FileCalls::Close(int inFile)
{
    return ::close(inFile);
}
ssize_t FileCalls::Read(int inFile, void* outBytes, std::size_t inSize)
{
    return ::read(inFile, outBytes, inSize);
}
ssize_t FileCalls::Write(int inFile, const void* inBytes, std::size_t inSize)
{
    return ::write(inFile, inBytes, inSize);
}
int FileCalls::Sync(int inFile)
{
    return ::fsync(inFile);
}
int FileCalls::SetTimes(int inFile, const timespec inTimes[2])
{
    return ::futimens(inFile, inTimes);
}
int FileCalls::SetTimesOfPath(const char* inPath, const timespec inTimes[2])
{
    return ::utimensat(AT_FDCWD, inPath, inTimes, 0);
}
int FileCalls::ChangeMode(int inFile, mode_t inMode)
{
    return ::fchmod(inFile, inMode);
}
int FileCalls::Rename(const char* inFrom, const char* inTo)
{
    return ::rename(inFrom, inTo);
}
int FileCalls::Link(const char* inFrom, const char* inTo)
{
    return ::link(inFrom, inTo);
}
int FileCalls::Unlink(const char* inPath)
{
    return ::unlink(inPath);
}
int FileCalls::UnlinkAt(int inFolder, const char* inName, int inFlags)
{
    return ::unlinkat(inFolder, inName, inFlags);
}
int FileCalls::MakeFolder(const char* inPath, mode_t inMode)
{
    return ::mkdir(inPath, inMode);
}

FileCalls& GetFileCalls()
{
    FileCalls* const replacement = sReplacement.load(std::memory_order_acquire);
    return replacement ? *replacement : SystemCalls();
}

int MakeFolders(const std::string& inNativePath)
{
    FileCalls& calls = GetFileCalls();
    struct stat status;
    const auto isFolder = [&status](const char* path) {
        return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
    };
    const auto make = [&](const char* path) {
        if (calls.MakeFolder(path, 0777) == 0) {
            return 0;
        }
        // Somebody else may have been faster; and a folder on the way may be there, but not for us to write.
        const int error = errno;
        const bool there = isFolder(path);
        errno = error;
        return there ? 0 : -1;
    };
    if (make(inNativePath.c_str()) == 0) {
        return 0;
    }
    if (errno != ENOENT || inNativePath.empty()) {
        return -1;
    }
    std::string part;
    part.reserve(inNativePath.size());
    for (std::size_t end = 0; end < inNativePath.size();) {
        end = inNativePath.find_first_not_of('/', end);
        if (end == std::string::npos) {
            break;
        }
        end = std::min(inNativePath.find('/', end), inNativePath.size());
        part.assign(inNativePath, 0, end);
        if (!isFolder(part.c_str()) && make(part.c_str()) != 0) {
            return -1;
        }
    }
    return 0;
}

int WriteAll(int inFile, const void* inBytes, std::size_t inSize)
{
    FileCalls& calls = GetFileCalls();
    const char* bytes = static_cast<const char*>(inBytes);
    while (inSize > 0) {
        const ssize_t written = calls.Write(inFile, bytes, inSize);
        if (written > 0) {
            bytes += written;
            inSize -= static_cast<std::size_t>(written);
        } else if (written == 0) {
            errno = EIO; // trying again could go on for ever
            return -1;
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return 0;
}

ScReplaceFileCalls::ScReplaceFileCalls(FileCalls& inCalls) : mPrevious(sReplacement.exchange(&inCalls)) {}
ScReplaceFileCalls::~ScReplaceFileCalls()
{
    sReplacement.store(mPrevious);
}

} // namespace kiocore::filesupport
