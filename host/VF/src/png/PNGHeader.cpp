#include "PNGHeader.h"

#include "frames/FrameMemory.h"

#include <VF/VideoFrames.h>

#include <algorithm>
#include <cstring>

namespace VF {

using namespace kiomediatypes;

namespace {

constexpr unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kChunkFrameBytes = 12; // length and type in front, check sum behind
constexpr std::size_t kStartBytes = sizeof(kSignature) + kChunkFrameBytes + 13; // with the header chunk
constexpr std::size_t kStepBytes = 1024; // many small chunks lie in it; few bytes are read in vain

// A length and distance pair of "deflate" takes two bits or more and stands for 258 bytes or fewer.
constexpr std::uint64_t kMostExpansion = 258 * 8 / 2;

std::uint32_t ReadBigEndian(const std::byte* inBytes)
{
    return std::to_integer<std::uint32_t>(inBytes[0]) << 24 |
           std::to_integer<std::uint32_t>(inBytes[1]) << 16 |
           std::to_integer<std::uint32_t>(inBytes[2]) << 8 | std::to_integer<std::uint32_t>(inBytes[3]);
}

struct Chunk {
    std::uint64_t start = 0; // of its length field
    std::uint32_t length = 0;
    std::byte type[4] = {};

    bool Is(const char* inType) const { return std::memcmp(type, inType, 4) == 0; }
    bool IsCritical() const { return (type[0] & std::byte{0x20}) == std::byte{0}; }
    bool HasValidType() const
    {
        return std::all_of(type, type + 4, [](std::byte inByte) {
            const auto letter = std::to_integer<unsigned char>(inByte);
            return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
        });
    }
    std::string Name() const
    {
        if (!HasValidType()) {
            return "a chunk of type " + std::to_string(ReadBigEndian(type)) + " at byte " +
                   std::to_string(start);
        }
        return "chunk \"" + std::string(reinterpret_cast<const char*>(type), 4) + "\" at byte " +
               std::to_string(start);
    }
};

int ChannelsOf(int inColorType)
{
    switch (inColorType) {
    case 0:
    case 3:
        return 1;
    case 2:
        return 3;
    case 4:
        return 2;
    case 6:
        return 4;
    default:
        return 0;
    }
}

bool IsKnownForm(int inColorType, int inBitDepth)
{
    switch (inColorType) {
    case 0:
        return inBitDepth == 1 || inBitDepth == 2 || inBitDepth == 4 || inBitDepth == 8 || inBitDepth == 16;
    case 3:
        return inBitDepth == 1 || inBitDepth == 2 || inBitDepth == 4 || inBitDepth == 8;
    case 2:
    case 4:
    case 6:
        return inBitDepth == 8 || inBitDepth == 16;
    default:
        return false;
    }
}

std::string RefuseSize(const PNGHeader& inHeader)
{
    const std::string size = "its size of " + std::to_string(inHeader.width) + " x " +
                             std::to_string(inHeader.height) + " pixels ";
    const auto isOutside = [](std::uint32_t inPixels) {
        return inPixels == 0 || inPixels > kMostPixelsPerSide;
    };
    if (isOutside(inHeader.width) || isOutside(inHeader.height)) {
        return size + "is outside of 1 to " + std::to_string(kMostPixelsPerSide) + " each way";
    }
    const FrameLayout layout = LayoutOf(inHeader.FrameFormat(), inHeader.width, inHeader.height, false);
    if (layout.sizeBytes > MachineMemoryBytes()) {
        return size + "takes " + std::to_string(layout.sizeBytes) + " bytes, this machine has " +
               std::to_string(MachineMemoryBytes());
    }
    return {};
}

std::string ReadImageHeader(const std::byte* inData, PNGHeader& outHeader)
{
    const auto byteAt = [&](int inOffset) { return std::to_integer<int>(inData[inOffset]); };
    outHeader.width = ReadBigEndian(inData);
    outHeader.height = ReadBigEndian(inData + 4);
    outHeader.bitDepth = byteAt(8);
    outHeader.colorType = byteAt(9);
    outHeader.isInterlaced = byteAt(12) == 1;
    if (!IsKnownForm(outHeader.colorType, outHeader.bitDepth)) {
        return "there is no colour type " + std::to_string(outHeader.colorType) + " with a depth of " +
               std::to_string(outHeader.bitDepth);
    }
    if (byteAt(10) != 0 || byteAt(11) != 0 || byteAt(12) > 1) {
        return "its methods of compression, filtering and interlacing are " + std::to_string(byteAt(10)) +
               ", " + std::to_string(byteAt(11)) + " and " + std::to_string(byteAt(12)) +
               "; known are 0, 0 and 0 or 1";
    }
    return RefuseSize(outHeader);
}

std::string BreaksOff(std::uint64_t inSize, const char* inWhere)
{
    return "it breaks off after " + std::to_string(inSize) + " bytes, " + inWhere;
}

/// The start of a chunk whose bytes are all there; else outReason says what is wrong with it.
Chunk ReadChunk(SteppingReader& inReader, std::uint64_t inSize, std::uint64_t inStart, std::string& outReason)
{
    Chunk chunk;
    chunk.start = inStart;
    const std::uint64_t left = inSize - inStart;
    std::byte start[8];
    if (left < kChunkFrameBytes || !inReader.ReadAt(inStart, start, sizeof(start))) {
        outReason = BreaksOff(inSize, "without an \"IEND\" chunk");
        return chunk;
    }
    chunk.length = ReadBigEndian(start);
    std::memcpy(chunk.type, start + 4, sizeof(chunk.type));
    if (!chunk.HasValidType()) {
        outReason = chunk.Name() + " is none: expected four letters";
    } else if (chunk.length > kMostChunkBytes || chunk.length > left - kChunkFrameBytes) {
        outReason = chunk.Name() + " claims " + std::to_string(chunk.length) + " bytes, there are " +
                    std::to_string(left - kChunkFrameBytes);
    }
    return chunk;
}

/// What is too short for a header chunk, or starts otherwise, need not be read any further.
std::string RefuseStart(SteppingReader& inReader, std::uint64_t inSize)
{
    std::byte start[kStartBytes];
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(inSize, sizeof(start)));
    if (!inReader.ReadAt(0, start, size)) {
        return BreaksOff(0, "it has become shorter");
    }
    if (std::memcmp(start, kSignature, std::min(size, sizeof(kSignature))) != 0) {
        return "it does not start as a PNG does";
    }
    return size < sizeof(start) ? BreaksOff(size, "within its header") : std::string();
}

/// Goes from chunk to chunk.
std::string WalkChunks(SteppingReader& inReader, std::uint64_t inSize, PNGHeader& outHeader)
{
    std::string reason;
    bool dataIsOver = false;
    for (std::uint64_t at = sizeof(kSignature); outHeader.endOfData == 0;) {
        const Chunk chunk = ReadChunk(inReader, inSize, at, reason);
        if (!reason.empty()) {
            return reason;
        }
        const bool isFirst = at == sizeof(kSignature);
        at += kChunkFrameBytes + chunk.length;
        if (isFirst != chunk.Is("IHDR") || (isFirst && chunk.length != 13)) {
            return chunk.Name() + " of " + std::to_string(chunk.length) +
                   " bytes: expected one \"IHDR\" of 13 bytes, as the first";
        }
        if (isFirst) {
            std::byte data[13];
            if (!inReader.ReadAt(chunk.start + 8, data, sizeof(data))) {
                return BreaksOff(inSize, "within its header");
            }
            reason = ReadImageHeader(data, outHeader);
            if (!reason.empty()) {
                return reason;
            }
        } else if (chunk.Is("IDAT")) {
            if (dataIsOver) {
                return chunk.Name() + " is apart from the others of its kind";
            }
            outHeader.compressedBytes += chunk.length;
        } else {
            dataIsOver = outHeader.compressedBytes > 0;
            if (chunk.Is("IEND")) {
                outHeader.endOfData = at;
            } else if (chunk.IsCritical() && !chunk.Is("PLTE")) {
                return chunk.Name() + " is of an unknown kind that must not be passed over";
            }
        }
    }
    return {};
}

} // namespace

PixelFormat PNGHeader::FrameFormat() const
{
    return bitDepth == 16 ? kPixelFormat_BGRA_4444_16u : kPixelFormat_BGRA_4444_8u;
}

std::uint64_t PNGHeader::FilteredBytes() const
{
    const std::uint64_t bitsPerPixel = static_cast<std::uint64_t>(ChannelsOf(colorType)) * bitDepth;
    const auto pass = [&](std::uint64_t inColumns, std::uint64_t inRows) {
        return inColumns == 0 ? 0 : inRows * (1 + (inColumns * bitsPerPixel + 7) / 8);
    };
    if (!isInterlaced) {
        return pass(width, height);
    }
    static constexpr struct {
        std::uint32_t firstColumn, columnStep, firstRow, rowStep;
    } kPasses[] = {{0, 8, 0, 8}, {4, 8, 0, 8}, {0, 4, 4, 8}, {2, 4, 0, 4},
                   {0, 2, 2, 4}, {1, 2, 0, 2}, {0, 1, 1, 2}};
    const auto count = [](std::uint32_t inLength, std::uint32_t inFirst, std::uint32_t inStep) {
        return inLength <= inFirst ? 0 : (inLength - inFirst + inStep - 1) / inStep;
    };
    std::uint64_t sum = 0;
    for (const auto& each : kPasses) {
        sum +=
            pass(count(width, each.firstColumn, each.columnStep), count(height, each.firstRow, each.rowStep));
    }
    return sum;
}

std::string ReadPNGHeader(IByteSource& inSource, PNGHeader& outHeader)
{
    std::byte buffer[kStepBytes];
    SteppingReader reader(inSource, buffer, sizeof(buffer));
    PNGHeader header;
    std::string reason = RefuseStart(reader, inSource.Size());
    if (reason.empty()) {
        reason = WalkChunks(reader, inSource.Size(), header);
    }
    if (!reason.empty()) {
        const std::string failure = inSource.Failure();
        return failure.empty() ? reason : failure;
    }
    const std::uint64_t expected = header.FilteredBytes();
    if (header.compressedBytes * kMostExpansion < expected) {
        return "its " + std::to_string(header.width) + " x " + std::to_string(header.height) +
               " pixels take " + std::to_string(expected) + " bytes, which its " +
               std::to_string(header.compressedBytes) + " compressed bytes cannot hold";
    }
    outHeader = header;
    return {};
}

} // namespace VF
