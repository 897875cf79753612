#include "PNGDifferenceEncoder.h"

#include "PNGChunks.h"
#include "PNGEncoder.h"
#include "PNGRows.h"
#include "SparseZlib.h"

#include <isa-l.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace VF {
namespace {

constexpr std::uint32_t kSampledRows = 64;
// Beyond one pixel in so many, repetitions are worth looking for.
constexpr std::uint64_t kSparsePart = 32;
constexpr std::uint64_t kFewPixels = 4096; // not worth a second attempt

/// One channel's bytes.
std::size_t ChannelBytes(const PNGSource& inSource)
{
    return inSource.Is16() ? 2 : 1;
}

/// Pixels of the row that are not black.
std::uint32_t PixelsInUse(const PNGSource& inSource, std::uint32_t inRow,
                          std::vector<std::uint32_t>& outPixels)
{
    return inSource.IsInUse(inRow) ? FindPixels(inSource.Row(inRow), inSource.width, inSource.IsAlphaFirst(),
                                                inSource.Is16(), outPixels.data())
                                   : 0;
}

bool LooksSparse(const PNGSource& inSource)
{
    std::vector<std::uint32_t> pixels(inSource.width);
    const std::uint32_t step = std::max(inSource.height / kSampledRows, 1u);
    std::uint64_t looked = 0;
    std::uint64_t found = 0;
    for (std::uint32_t row = step / 2; row < inSource.height; row += step) {
        looked += inSource.width;
        found += PixelsInUse(inSource, row, pixels);
    }
    return found <= kFewPixels || found * kSparsePart <= looked;
}

enum class Sparse { kDone, kTooMany, kNotOpaque };

/// Adds a pixel's red, green and blue.
/// @return whether it is opaque.
bool AddPixel(const PNGSource& inSource, const std::byte* inPixel, SparseZlib& ioZlib)
{
    if (inSource.Is16()) {
        std::uint16_t channels[4];
        std::memcpy(channels, inPixel, sizeof(channels));
        for (const std::uint16_t channel : {channels[2], channels[1], channels[0]}) {
            ioZlib.Byte(static_cast<std::uint8_t>(channel >> 8));
            ioZlib.Byte(static_cast<std::uint8_t>(channel & 0xFF));
        }
        return channels[3] == 0xFFFF;
    }
    const auto* const channels = reinterpret_cast<const std::uint8_t*>(inPixel);
    const bool isAlphaFirst = inSource.IsAlphaFirst();
    ioZlib.Byte(channels[isAlphaFirst ? 1 : 2]);
    ioZlib.Byte(channels[isAlphaFirst ? 2 : 1]);
    ioZlib.Byte(channels[isAlphaFirst ? 3 : 0]);
    return channels[isAlphaFirst ? 0 : 3] == 0xFF;
}

Sparse AddSparsely(const PNGSource& inSource, SparseZlib& ioZlib)
{
    const std::size_t channelBytes = ChannelBytes(inSource);
    const std::size_t rowBytes = std::size_t{inSource.width} * channelBytes * 3;
    std::uint64_t left =
        std::max(kFewPixels, std::uint64_t{inSource.width} * inSource.height * 2 / kSparsePart);
    std::vector<std::uint32_t> pixels(inSource.width);
    for (std::uint32_t row = 0; row < inSource.height; ++row) {
        ioZlib.Zeros(1); // its filter: none
        const std::uint32_t found = PixelsInUse(inSource, row, pixels);
        if (found > left) {
            return Sparse::kTooMany;
        }
        left -= found;
        std::size_t done = 0; // pixels
        for (std::uint32_t at = 0; at < found; ++at) {
            ioZlib.Zeros((pixels[at] - done) * channelBytes * 3);
            if (!AddPixel(inSource, inSource.Row(row) + pixels[at] * channelBytes * 4, ioZlib)) {
                return Sparse::kNotOpaque;
            }
            done = pixels[at] + 1;
        }
        ioZlib.Zeros(rowBytes - done * channelBytes * 3);
    }
    ioZlib.Finish();
    return Sparse::kDone;
}

Sparse EncodeSparsely(const PNGSource& inSource, GrowingBytes& outBytes)
{
    PNGChunks chunks(outBytes);
    chunks.Begin(inSource);
    chunks.BeginChunk("IDAT");
    SparseZlib zlib(outBytes);
    const Sparse result = AddSparsely(inSource, zlib);
    if (result == Sparse::kDone) {
        chunks.EndChunk();
        chunks.End();
    }
    return result;
}

/// Rows of RGB, each with the best of the filters that are quick: none, left, above.
class FilteredLines {
public:
    explicit FilteredLines(const PNGSource& inSource)
        : mSource(inSource), mBytes(std::size_t{inSource.width} * ChannelBytes(inSource) * 3),
          mLines(mBytes * 4)
    {}

    std::size_t Bytes() const { return mBytes + 1; }
    void Make(std::uint32_t inRow, std::byte* outLine)
    {
        std::byte* const line = Line(inRow % 2);
        std::byte* const above = Line(1 - inRow % 2); // zeros at first
        if (mSource.IsInUse(inRow)) {
            PackRGB(mSource.Row(inRow), mSource.width, mSource.IsAlphaFirst(), mSource.Is16(), line);
        } else {
            std::fill_n(line, mBytes, std::byte{0});
        }
        const std::byte* best = line;
        std::uint64_t least = Magnitude(line, mBytes);
        outLine[0] = std::byte{0};
        const auto consider = [&](const std::byte* inLine, std::byte inFilter) {
            if (const std::uint64_t magnitude = Magnitude(inLine, mBytes); magnitude < least) {
                least = magnitude;
                best = inLine;
                outLine[0] = inFilter;
            }
        };
        if (least != 0) {
            FilterSub(line, mBytes, ChannelBytes(mSource) * 3, Line(2));
            consider(Line(2), std::byte{1});
            FilterUp(line, above, mBytes, Line(3));
            consider(Line(3), std::byte{2});
        }
        std::memcpy(outLine + 1, best, mBytes);
    }

private:
    std::byte* Line(std::size_t inWhich) { return mLines.data() + mBytes * inWhich; }

    const PNGSource& mSource;
    const std::size_t mBytes;
    std::vector<std::byte> mLines;
};

/// Deflates into chunks.
class DeflatedChunks {
public:
    DeflatedChunks(GrowingBytes& ioBytes, PNGChunks& ioChunks)
        : mBytes(ioBytes), mChunks(ioChunks), mStream(std::make_unique<isal_zstream>()),
          mTables(ISAL_DEF_LVL1_DEFAULT)
    {
        isal_deflate_init(mStream.get());
        mStream->level = 1;
        mStream->level_buf = mTables.data();
        mStream->level_buf_size = static_cast<std::uint32_t>(mTables.size());
        mStream->gzip_flag = IGZIP_ZLIB;
    }

    void Add(std::byte* inBytes, std::size_t inSize, bool inIsLast)
    {
        mStream->next_in = reinterpret_cast<std::uint8_t*>(inBytes);
        mStream->avail_in = static_cast<std::uint32_t>(inSize);
        mStream->end_of_stream = inIsLast ? 1 : 0;
        do {
            if (mStream->avail_out == 0) {
                NextChunk();
            }
            isal_deflate(mStream.get()); // fails only for parameters that are not ours
        } while (inIsLast ? mStream->internal_state.state != ZSTATE_END : mStream->avail_in != 0);
        if (inIsLast) {
            EndChunk();
        }
    }

private:
    static constexpr std::size_t kChunkBytes = 256 * 1024;

    void EndChunk()
    {
        mBytes.Advance(kChunkBytes - mStream->avail_out);
        mChunks.EndChunk();
    }
    void NextChunk()
    {
        if (mIsOpen) {
            EndChunk();
        }
        mIsOpen = true;
        mChunks.BeginChunk("IDAT");
        mBytes.Reserve(kChunkBytes);
        mStream->next_out = reinterpret_cast<std::uint8_t*>(mBytes.At(mBytes.Size()));
        mStream->avail_out = kChunkBytes;
    }

    GrowingBytes& mBytes;
    PNGChunks& mChunks;
    const std::unique_ptr<isal_zstream> mStream;
    std::vector<std::uint8_t> mTables;
    bool mIsOpen = false;
};

void EncodeDensely(const PNGSource& inSource, GrowingBytes& outBytes)
{
    PNGChunks chunks(outBytes);
    chunks.Begin(inSource);
    FilteredLines lines(inSource);
    DeflatedChunks deflated(outBytes, chunks);
    constexpr std::size_t kBatchBytes = 128 * 1024;
    const auto batchRows = static_cast<std::uint32_t>(std::max<std::size_t>(kBatchBytes / lines.Bytes(), 1));
    std::vector<std::byte> batch(batchRows * lines.Bytes());
    for (std::uint32_t first = 0; first < inSource.height; first += batchRows) {
        const std::uint32_t end = std::min(first + batchRows, inSource.height);
        for (std::uint32_t row = first; row < end; ++row) {
            lines.Make(row, batch.data() + (row - first) * lines.Bytes());
        }
        deflated.Add(batch.data(), (end - first) * lines.Bytes(), end == inSource.height);
    }
    chunks.End();
}

} // namespace

bool EncodeDifferencePNG(const PNGSource& inSource, kiocore::utility::SharedRecycledMemory& outBytes)
{
    if (LooksSparse(inSource)) {
        GrowingBytes bytes;
        const Sparse result = EncodeSparsely(inSource, bytes);
        if (result != Sparse::kTooMany) {
            outBytes = result == Sparse::kDone ? bytes.Release() : kiocore::utility::SharedRecycledMemory();
            return result == Sparse::kDone;
        }
    }
    if (!IsOpaque(inSource)) {
        return false;
    }
    GrowingBytes bytes;
    EncodeDensely(inSource, bytes);
    outBytes = bytes.Release();
    return true;
}

} // namespace VF
