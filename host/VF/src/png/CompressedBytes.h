#pragma once

#include "ByteSource.h"
#include "PNGHeader.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VF {

/// The contents of the "IDAT" chunks of a PNG, one behind the other, read in blocks. The check sum of every
/// chunk is verified, of those that are passed over as well.
///
/// It is meant for pictures without anything unusual and says no to all others: to palettes and transparent
/// colours, and to whatever libpng takes only in part.
///
/// Threading: one thread at a time.
class CompressedBytes {
public:
    static constexpr std::size_t kBlock = 128 * 1024;
    /// @param inPadding  bytes that may be read behind End().
    /// @param inMostKept  most that are left unused when Fill() is called.
    CompressedBytes(IByteSource& inSource, const PNGHeader& inHeader, std::size_t inMostKept,
                    std::size_t inPadding);

    bool HasMemory() const { return mBuffer != nullptr; }
    /// Moves what was not used to the front of the buffer and appends what comes next.
    /// @param inUsed  up to where the bytes were used.
    /// @return false when the file is not as expected.
    bool Fill(const std::uint8_t* inUsed);
    const std::uint8_t* Begin() const { return mBuffer.get(); }
    const std::uint8_t* End() const { return mEnd; }
    /// Nothing follows End().
    bool IsAll() const { return mIsOver; }
    /// Reads up to the end of the file. Compressed bytes that are left over are not as expected.
    bool Finish(const std::uint8_t* inUsed);

private:
    enum class Part { kStart, kContents, kSum };

    bool ReadBlock();
    bool Accept(const std::uint8_t* inBytes, std::size_t inSize);
    std::size_t AcceptField(const std::uint8_t* inBytes, std::size_t inSize, std::size_t inFieldSize);
    std::size_t AcceptContents(const std::uint8_t* inBytes, std::size_t inSize);
    bool StartChunk();
    bool EndChunk();
    bool IsWantedHeader() const;

    IByteSource& mSource;
    const PNGHeader& mHeader;
    std::unique_ptr<std::uint8_t[]> mBuffer;
    std::uint8_t* mEnd = nullptr;
    std::uint64_t mOffset = 8; // of what was not read yet
    Part mPart = Part::kStart;
    std::uint8_t mField[16]; // what is there of a chunk's length and type, its sum, or the header's contents
    std::size_t mFieldSize = 0;
    std::uint32_t mType = 0;
    std::uint32_t mLeft = 0; // of the chunk's contents
    std::uint32_t mSum = 0;
    bool mHasHeader = false;
    bool mHasData = false;
    bool mIsOver = false; // no compressed bytes follow
    bool mIsAtEnd = false;
};

} // namespace VF
