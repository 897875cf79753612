#pragma once

#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <memory>

namespace BE {

/// Readable zero bytes behind what a buffer holds, so that short names can be compared in a load or two.
inline constexpr std::size_t kSlackBytes = 32;

/// Memory that files are read into, kept for the next file. Not initialised.
struct ByteBuffer {
    std::unique_ptr<char[]> bytes;
    std::size_t capacity = 0;

    /// At least inSize bytes and kSlackBytes zeros behind them; what was in it is lost when it grows.
    char* Reserve(std::size_t inSize);
};

struct FileBytes {
    int errorNumber = 0;         ///< the system's reason; 0 when all was read
    const char* failedStep = ""; ///< "open", "examine", "read" when it failed
    std::size_t size = 0;        ///< of the file; also set when it is too large
    kiocore::filesupport::FileTime modificationTime = kiocore::filesupport::kNoFileTime;
};

/// Reads a whole regular file: open, fstat, read, close. EFBIG when it is larger than inMaxBytes; never
/// waits for the writer of a pipe.
FileBytes ReadFileBytes(kiocore::UTF16View inPath, std::size_t inMaxBytes, ByteBuffer& ioBuffer);

} // namespace BE
