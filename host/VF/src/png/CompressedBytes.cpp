#include "CompressedBytes.h"

#include <isa-l/crc.h>

#include <cstring>
#include <new>

namespace VF {
namespace {

constexpr std::uint32_t TypeOf(const char (&inName)[5])
{
    std::uint32_t type = 0;
    for (int letter = 0; letter < 4; ++letter) {
        type = type << 8 | static_cast<unsigned char>(inName[letter]);
    }
    return type;
}
constexpr std::uint32_t kIHDR = TypeOf("IHDR");
constexpr std::uint32_t kIDAT = TypeOf("IDAT");
constexpr std::uint32_t kIEND = TypeOf("IEND");
constexpr std::uint32_t ktRNS = TypeOf("tRNS");
constexpr std::uint32_t kAncillary = 0x20000000; // the first letter is a small one
constexpr std::size_t kHeaderBytes = 13;

std::uint32_t ReadBigEndian(const std::uint8_t* inBytes)
{
    return std::uint32_t{inBytes[0]} << 24 | std::uint32_t{inBytes[1]} << 16 |
           std::uint32_t{inBytes[2]} << 8 | inBytes[3];
}

bool HasLettersOnly(const std::uint8_t* inType)
{
    return std::all_of(inType, inType + 4, [](std::uint8_t inLetter) {
        return (inLetter >= 'A' && inLetter <= 'Z') || (inLetter >= 'a' && inLetter <= 'z');
    });
}

} // namespace

CompressedBytes::CompressedBytes(IByteSource& inSource, const PNGHeader& inHeader, std::size_t inMostKept,
                                 std::size_t inPadding)
    : mSource(inSource), mHeader(inHeader),
      mBuffer(new (std::nothrow) std::uint8_t[inMostKept + kBlock + inPadding]), mEnd(mBuffer.get())
{}

bool CompressedBytes::Fill(const std::uint8_t* inUsed)
{
    const auto kept = static_cast<std::size_t>(mEnd - inUsed);
    std::memmove(mBuffer.get(), inUsed, kept);
    mEnd = mBuffer.get() + kept;
    const std::uint8_t* const before = mEnd;
    while (mEnd == before && !mIsOver) {
        if (!ReadBlock()) {
            return false;
        }
    }
    return true;
}

bool CompressedBytes::Finish(const std::uint8_t* inUsed)
{
    while (!mIsAtEnd && mEnd == inUsed) {
        if (!ReadBlock()) {
            return false;
        }
    }
    return mEnd == inUsed;
}

bool CompressedBytes::ReadBlock()
{
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, mHeader.endOfData - mOffset));
    // Right behind what is there: compressed bytes are mostly where they belong then.
    const std::size_t got = size == 0 ? 0 : mSource.ReadAt(mOffset, mEnd, size);
    if (got == 0) {
        return false;
    }
    mOffset += got;
    return Accept(mEnd, got);
}

bool CompressedBytes::Accept(const std::uint8_t* inBytes, std::size_t inSize)
{
    while (inSize > 0 && !mIsAtEnd) {
        std::size_t used = 0;
        switch (mPart) {
        case Part::kStart:
            used = AcceptField(inBytes, inSize, 8);
            if (mFieldSize == 8 && !StartChunk()) {
                return false;
            }
            break;
        case Part::kContents:
            used = AcceptContents(inBytes, inSize);
            break;
        case Part::kSum:
            used = AcceptField(inBytes, inSize, 4);
            if (mFieldSize == 4 && !EndChunk()) {
                return false;
            }
            break;
        }
        inBytes += used;
        inSize -= used;
    }
    return true;
}

std::size_t CompressedBytes::AcceptField(const std::uint8_t* inBytes, std::size_t inSize,
                                         std::size_t inFieldSize)
{
    const std::size_t count = std::min(inSize, inFieldSize - mFieldSize);
    std::memcpy(mField + mFieldSize, inBytes, count);
    mFieldSize += count;
    return count;
}

std::size_t CompressedBytes::AcceptContents(const std::uint8_t* inBytes, std::size_t inSize)
{
    const std::size_t count = std::min<std::size_t>(inSize, mLeft);
    mSum = crc32_gzip_refl(mSum, inBytes, count);
    if (mType == kIDAT) {
        if (mEnd != inBytes) {
            std::memmove(mEnd, inBytes, count); // over the starts and sums of chunks
        }
        mEnd += count;
    } else if (mType == kIHDR) {
        AcceptField(inBytes, count, kHeaderBytes);
    }
    mLeft -= static_cast<std::uint32_t>(count);
    if (mLeft == 0) {
        if (mType == kIHDR && !IsWantedHeader()) {
            mHasHeader = false;
        }
        mPart = Part::kSum;
        mFieldSize = 0;
    }
    return count;
}

bool CompressedBytes::StartChunk()
{
    mLeft = ReadBigEndian(mField);
    mType = ReadBigEndian(mField + 4);
    mSum = crc32_gzip_refl(0, mField + 4, 4);
    mFieldSize = 0;
    mPart = mLeft > 0 ? Part::kContents : Part::kSum;
    if (!HasLettersOnly(mField + 4) || mLeft > kMostChunkBytes || mHasHeader == (mType == kIHDR)) {
        return false;
    }
    if (mType == kIHDR) {
        mHasHeader = true;
        return mLeft == kHeaderBytes;
    }
    if (mType == kIDAT) {
        mHasData = true;
        return !mIsOver;
    }
    mIsOver = mHasData;
    if (mType == kIEND) {
        return mHasData && mLeft == 0;
    }
    return (mType & kAncillary) && mType != ktRNS;
}

bool CompressedBytes::EndChunk()
{
    mIsAtEnd = mType == kIEND;
    mPart = Part::kStart;
    mFieldSize = 0;
    return mHasHeader && ReadBigEndian(mField) == mSum;
}

/// The file may have changed since its chunks were looked at.
bool CompressedBytes::IsWantedHeader() const
{
    return ReadBigEndian(mField) == mHeader.width && ReadBigEndian(mField + 4) == mHeader.height &&
           mField[8] == mHeader.bitDepth && mField[9] == mHeader.colorType && mField[10] == 0 &&
           mField[11] == 0 && mField[12] == 0;
}

} // namespace VF
