#pragma once

#include <ZOL/FolderSearch.h>

#include <cstring>
#include <string>
#include <string_view>

namespace ZOL {

/// Zero-terminated names one after the other, in blocks, so that growing copies nothing.
class NameStore {
public:
    static constexpr std::size_t kBlockBytes = 64 * 1024;
    static constexpr std::uint64_t kMostBytes = std::uint64_t(1) << 32;

    /// @throws std::length_error when there is no place left (4 GiB).
    std::uint32_t Add(std::string_view inName);
    const char* Get(std::uint32_t inOffset) const
    {
        return mBlocks[inOffset / kBlockBytes].get() + inOffset % kBlockBytes;
    }

private:
    std::vector<std::unique_ptr<char[]>> mBlocks;
    std::size_t mUsed = kBlockBytes; // of the last block
};

struct FileListContents {
    struct Entry {
        std::uint32_t folder; // index into folders
        std::uint32_t name;   // offset in names
    };
    UTF16String root; // with a trailing separator
    std::string rootNative;
    std::vector<std::string> folders; // native, below the root, "" or with a trailing separator
    NameStore names;
    std::vector<Entry> files;
};

} // namespace ZOL
