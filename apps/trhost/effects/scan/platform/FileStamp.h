#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace trhost::effects {

/// By what a file is taken to be the one that was seen before.
struct FileStamp {
    std::uint64_t sizeBytes = 0;
    std::uint64_t modified = 0; ///< kiocore::filesupport::FileTime
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// Of the file that the native path leads to, links followed. Empty when there is none, or no regular file.
std::optional<FileStamp> StampOf(const std::string& inFile);

} // namespace trhost::effects
