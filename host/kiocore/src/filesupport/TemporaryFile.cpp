#include <kiocore/filesupport/TemporaryFile.h>

#include <kiocore/filesupport/FileCalls.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace kiocore::filesupport {
namespace {

constexpr std::size_t kLongestName = 255; // of every file system in use, in bytes
constexpr int kMostTries = 1000;

} // namespace

std::string TemporaryNameBeside(std::string_view inNativePath)
{
    static std::atomic<unsigned long> sNumber{0};
    std::string suffix(kTemporaryFileMark);
    suffix += std::to_string(::getpid());
    suffix += '-';
    suffix += std::to_string(sNumber.fetch_add(1, std::memory_order_relaxed));

    const std::size_t separator = inNativePath.rfind('/');
    const std::size_t nameStart = separator == std::string_view::npos ? 0 : separator + 1;
    std::size_t nameSize = inNativePath.size() - nameStart;
    if (nameSize + suffix.size() > kLongestName && nameSize <= kLongestName) {
        nameSize = kLongestName - suffix.size();
        // Not inside a character: some file systems refuse names that are no UTF-8.
        while (nameSize > 0 &&
               (static_cast<unsigned char>(inNativePath[nameStart + nameSize]) & 0xC0) == 0x80) {
            --nameSize;
        }
    }
    std::string name;
    name.reserve(nameStart + nameSize + suffix.size());
    name.append(inNativePath, 0, nameStart + nameSize).append(suffix);
    return name;
}

TemporaryFile::~TemporaryFile()
{
    const int error = errno; // of the step that failed
    Close();
    if (!mPath.empty()) {
        GetFileCalls().Unlink(mPath.c_str());
    }
    errno = error;
}

int TemporaryFile::Create(std::string_view inTarget, mode_t inMode)
{
    if (inTarget.empty()) {
        errno = ENOENT; // beside no name there is no folder, and the working folder is not ours
        return -1;
    }
    for (int tries = 0; tries < kMostTries; ++tries) {
        std::string path = TemporaryNameBeside(inTarget);
        mFile = GetFileCalls().Open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, inMode);
        if (mFile >= 0) {
            mPath = std::move(path);
            return 0;
        }
        // A name may have been left over by a process that had our number before us.
        if (errno != EEXIST && errno != EINTR) {
            return -1;
        }
    }
    return -1;
}

int TemporaryFile::Close()
{
    if (mFile < 0) {
        return 0;
    }
    const int result = GetFileCalls().Close(mFile);
    mFile = -1;
    return result != 0 && errno == EINTR ? 0 : result; // closed nevertheless, and nothing was lost
}

int TemporaryFile::RenameTo(const char* inTarget)
{
    if (GetFileCalls().Rename(mPath.c_str(), inTarget) != 0) {
        return -1;
    }
    mPath.clear();
    return 0;
}

} // namespace kiocore::filesupport
