#pragma once

#include "png/ByteSource.h"

#include <kiocore/utility/UTF16String.h>

#include <string>

namespace VF::platform {

/// A regular file, read where it is wanted. Never waits for the writer of a pipe.
class PNGFile final : public IByteSource {
public:
    PNGFile() = default;
    ~PNGFile() override;
    PNGFile(const PNGFile&) = delete;
    PNGFile& operator=(const PNGFile&) = delete;

    /// @return empty, or why it could not be opened.
    std::string Open(kiocore::UTF16View inPath);
    std::uint64_t Size() const override { return mSize; }
    std::size_t ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize) override;
    std::string Failure() const override { return mFailure; }
    /// Whether both are the same file, under whatever names.
    bool IsSameAs(const PNGFile& inOther) const;

private:
    int mFile = -1;
    std::uint64_t mSize = 0;
    std::uint64_t mDevice = 0;
    std::uint64_t mNumber = 0;
    std::string mFailure;
};

} // namespace VF::platform
