#include "DocumentIdentity.h"

#include <kiocore/filesupport/NativePath.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace trhost {

namespace {

using kiocore::Guid;

// Changing a seed, or what is hashed, makes every record unknown or stale.
constexpr std::uint64_t kDocumentSeed = 0x7472686f73743031;
constexpr std::uint64_t kStateSeed = 0x7472686f73743032;
constexpr std::uint64_t kSampleSeed = 0x7472686f73743033;
constexpr std::uint64_t kSampleBytes = 64 * 1024;

std::string CanonicalPath(const std::string& inNative)
{
    if (char* resolved = realpath(inNative.c_str(), nullptr)) {
        std::string path(resolved);
        std::free(resolved);
        return path;
    }
    // The file is gone; its folder may still be there, or some folder above that.
    const std::size_t slash = inNative.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "."
                               : slash == 0               ? "/"
                                                          : inNative.substr(0, slash);
    const std::string name = slash == std::string::npos ? inNative : inNative.substr(slash + 1);
    if (folder == inNative || inNative.empty()) {
        return inNative;
    }
    std::string path = CanonicalPath(folder);
    if (!path.ends_with('/')) {
        path += '/';
    }
    return path + name;
}

Guid HashBytes(const void* inBytes, std::size_t inSize, std::uint64_t inSeed)
{
    return Guid::FromHash(std::span(static_cast<const std::byte*>(inBytes), inSize), inSeed);
}

void AppendNumber(std::vector<std::byte>& ioBytes, std::uint64_t inNumber)
{
    for (int shift = 0; shift < 64; shift += 8) { // the same bytes on every machine
        ioBytes.push_back(std::byte(inNumber >> shift));
    }
}

struct ScFile {
    explicit ScFile(int inFile) : file(inFile) {}
    ~ScFile()
    {
        if (file >= 0) {
            close(file);
        }
    }
    ScFile(const ScFile&) = delete;
    ScFile& operator=(const ScFile&) = delete;
    const int file;
};

/// Appends the bytes at an offset; false (errno set) when they cannot be read. A file that is being cut
/// short while we read gives fewer, which is a state of its own.
bool AppendSample(int inFile, std::uint64_t inOffset, std::uint64_t inSize, std::vector<std::byte>& ioBytes)
{
    const std::size_t start = ioBytes.size();
    ioBytes.resize(start + inSize);
    std::size_t done = 0;
    while (done < inSize) {
        const ssize_t got =
            pread(inFile, ioBytes.data() + start + done, inSize - done, off_t(inOffset + done));
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (got == 0) {
            break;
        }
        done += std::size_t(got);
    }
    ioBytes.resize(start + done);
    return true;
}

} // namespace

DocumentIdentity IdentifyDocument(const kiocore::UTF16String& inPath)
{
    DocumentIdentity identity;
    const std::string native = CanonicalPath(kiocore::filesupport::ToNative(inPath));
    identity.path = kiocore::filesupport::FromNative(native);
    identity.documentID = HashBytes(native.data(), native.size(), kDocumentSeed);

    // Not blocking: a named pipe in the place of media must not make us wait for its writer.
    const ScFile opened(open(native.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (opened.file < 0 || fstat(opened.file, &status) != 0) {
        identity.errorNumber = errno;
        return identity;
    }
    if (!S_ISREG(status.st_mode)) {
        identity.errorNumber = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return identity;
    }

    const std::uint64_t size = std::uint64_t(status.st_size);
    std::vector<std::byte> bytes;
    bytes.reserve(3 * kSampleBytes + 32);
    AppendNumber(bytes, size);
    bool read = true;
    if (size <= 3 * kSampleBytes) {
        read = AppendSample(opened.file, 0, size, bytes);
    } else {
        read = AppendSample(opened.file, 0, kSampleBytes, bytes) &&
               AppendSample(opened.file, size / 2 - kSampleBytes / 2, kSampleBytes, bytes) &&
               AppendSample(opened.file, size - kSampleBytes, kSampleBytes, bytes);
    }
    if (!read) {
        identity.errorNumber = errno;
        return identity;
    }
    identity.sizeBytes = size;
    identity.sampledContent = HashBytes(bytes.data(), bytes.size(), kSampleSeed);
    AppendNumber(bytes, std::uint64_t(status.st_mtim.tv_sec));
    AppendNumber(bytes, std::uint64_t(status.st_mtim.tv_nsec));
    identity.contentState = HashBytes(bytes.data(), bytes.size(), kStateSeed);
    identity.isReadable = true;
    return identity;
}

int ResolveDocument(const kiocore::UTF16String& inPath, bool, kiocore::Guid& outDocumentID,
                    kiocore::Guid& outContentState)
{
    const DocumentIdentity identity = IdentifyDocument(inPath);
    if (!identity.isReadable) {
        return -1;
    }
    outDocumentID = identity.documentID;
    outContentState = identity.contentState;
    return 0;
}

} // namespace trhost
