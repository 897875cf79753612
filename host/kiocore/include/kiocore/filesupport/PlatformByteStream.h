#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>

namespace kiocore::filesupport {

/// Reads a file block by block. Closed when destroyed.
///
/// Threading: one thread at a time.
class KIO_EXPORT IPlatformByteStream {
public:
    /// @throws file_exception.
    explicit IPlatformByteStream(const utility::UTF16String& inPath);
    ~IPlatformByteStream();
    IPlatformByteStream(const IPlatformByteStream&) = delete;
    IPlatformByteStream& operator=(const IPlatformByteStream&) = delete;

    /// Of the whole file, now.
    std::uint64_t Size() const;
    /// Where the next call reads, from the start of the file; beyond its end there is nothing to read.
    /// @throws file_exception.
    void SetPosition(std::uint64_t inPosition);
    /// Reads on from where the last call ended, retrying what the system cut short.
    /// @return how many bytes came; fewer than asked for only at the end of the file.
    /// @throws file_exception.
    std::size_t ReadBlock(void* outBytes, std::size_t inSize);

private:
    int mHandle;
    utility::UTF16String mPath;
};

/// Makes a new file and writes to it block by block. Closed when destroyed.
///
/// Threading: one thread at a time. Every member may be called in a signal handler: nothing allocates, locks,
/// throws or traces.
class KIO_EXPORT OPlatformByteStream {
public:
    /// Makes the file, readable for its owner only. One that exists already stays as it is, also when
    /// somebody makes it at this very moment; the stream is not open then.
    /// @param inNativePath  zero-terminated; used during this call only.
    explicit OPlatformByteStream(const char* inNativePath) noexcept;
    ~OPlatformByteStream();
    OPlatformByteStream(const OPlatformByteStream&) = delete;
    OPlatformByteStream& operator=(const OPlatformByteStream&) = delete;

    bool IsOpen() const noexcept { return mHandle >= 0; }
    /// The system's error number of the first failure; 0 none.
    int Errno() const noexcept { return mErrno; }
    /// @return false when not all of it could be written.
    bool WriteBlock(const void* inBytes, std::size_t inSize) noexcept;

private:
    int mHandle;
    int mErrno = 0;
};

} // namespace kiocore::filesupport
