#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace VF {

/// Where the bytes of a picture come from: a file, or memory.
///
/// Threading: one thread at a time.
class IByteSource {
public:
    virtual ~IByteSource() = default;
    /// What it held when it was opened; a file may shrink meanwhile.
    virtual std::uint64_t Size() const = 0;
    /// @return how many bytes; fewer than asked for at the end, or where they cannot be read.
    virtual std::size_t ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize) = 0;
    /// Why bytes could not be read; empty when none failed.
    virtual std::string Failure() const { return {}; }
};

class MemoryBytes final : public IByteSource {
public:
    MemoryBytes(const std::byte* inBytes, std::size_t inSize) : mBytes(inBytes), mSize(inSize) {}

    std::uint64_t Size() const override { return mSize; }
    std::size_t ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize) override
    {
        if (inOffset >= mSize) {
            return 0;
        }
        const std::size_t size = std::min(inSize, mSize - static_cast<std::size_t>(inOffset));
        std::memcpy(outBytes, mBytes + inOffset, size);
        return size;
    }

private:
    const std::byte* mBytes;
    std::size_t mSize;
};

/// Bytes that are wanted one after the other, in blocks or in steps.
class SteppingReader {
public:
    /// @param inBlock  bytes that are read at once; for steps, no more than are likely to be wanted.
    SteppingReader(IByteSource& inSource, std::byte* inBuffer, std::size_t inBlock)
        : mSource(inSource), mBuffer(inBuffer), mBlock(inBlock)
    {}

    /// @return false when not all of them are there.
    bool ReadAt(std::uint64_t inOffset, void* outBytes, std::size_t inSize)
    {
        auto* out = static_cast<std::byte*>(outBytes);
        while (inSize > 0) {
            if (inOffset < mStart || inOffset >= mStart + mSize) {
                mStart = inOffset;
                mSize = mSource.ReadAt(inOffset, mBuffer, mBlock);
                if (mSize == 0) {
                    return false;
                }
            }
            const auto skipped = static_cast<std::size_t>(inOffset - mStart);
            const std::size_t count = std::min(inSize, mSize - skipped);
            std::memcpy(out, mBuffer + skipped, count);
            out += count;
            inOffset += count;
            inSize -= count;
        }
        return true;
    }

private:
    IByteSource& mSource;
    std::byte* const mBuffer;
    const std::size_t mBlock;
    std::uint64_t mStart = 0;
    std::size_t mSize = 0;
};

} // namespace VF
