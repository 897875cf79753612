#pragma once

#include <cstdint>
#include <string>

namespace kiocore::platform {

/// Which file has a path, and in which state it is: whoever replaces or changes the file changes this.
struct FileStamp {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::uint64_t size = 0;
    std::uint64_t modified = 0; // FileTime
    std::uint64_t changed = 0;  // of the contents or of what the system keeps beside them

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// @return 0, also when there is no file; or an error number.
int GetFileStamp(const std::string& inPath, FileStamp& outStamp);
/// The whole of a regular file, and the stamp that it had before reading began.
/// @return 0, or an error number: EINVAL when it is no regular file.
int ReadStampedFile(const std::string& inPath, FileStamp& outStamp, std::string& outBytes);

} // namespace kiocore::platform
