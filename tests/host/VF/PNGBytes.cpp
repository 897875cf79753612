#include "PNGBytes.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace support {
namespace {

using Row = std::vector<unsigned char>;

Row PackRow(const StoredPicture& inPicture, const std::vector<std::uint32_t>& inColumns, std::uint32_t inY)
{
    std::string bits;
    for (const std::uint32_t x : inColumns) {
        for (int channel = 0; channel < inPicture.Channels(); ++channel) {
            const std::uint32_t sample = inPicture.sample(x, inY, channel);
            for (int bit = inPicture.depth - 1; bit >= 0; --bit) {
                bits += sample >> bit & 1 ? '1' : '0';
            }
        }
    }
    Row row((bits.size() + 7) / 8);
    for (std::size_t at = 0; at < bits.size(); ++at) {
        row[at / 8] = static_cast<unsigned char>(row[at / 8] | (bits[at] - '0') << (7 - at % 8));
    }
    return row;
}

int Predict(int inFilter, int inLeft, int inUp, int inUpLeft)
{
    switch (inFilter) {
    case 1:
        return inLeft;
    case 2:
        return inUp;
    case 3:
        return (inLeft + inUp) / 2;
    case 4: {
        const int estimate = inLeft + inUp - inUpLeft;
        const int toLeft = std::abs(estimate - inLeft);
        const int toUp = std::abs(estimate - inUp);
        const int toUpLeft = std::abs(estimate - inUpLeft);
        return toLeft <= toUp && toLeft <= toUpLeft ? inLeft : toUp <= toUpLeft ? inUp : inUpLeft;
    }
    default:
        return 0;
    }
}

void AppendFiltered(std::string& ioBytes, int inFilter, const Row& inRow, const Row& inAbove,
                    std::size_t inStep)
{
    ioBytes += static_cast<char>(inFilter);
    for (std::size_t at = 0; at < inRow.size(); ++at) {
        const int left = at < inStep ? 0 : inRow[at - inStep];
        const int up = inAbove.empty() ? 0 : inAbove[at];
        const int upLeft = at < inStep || inAbove.empty() ? 0 : inAbove[at - inStep];
        ioBytes += static_cast<char>(inRow[at] - Predict(inFilter, left, up, upLeft));
    }
}

} // namespace

int StoredPicture::Channels() const
{
    static constexpr int kChannels[] = {1, 0, 3, 1, 2, 0, 4};
    return kChannels[colorType];
}

std::string BigEndian(std::uint64_t inValue, int inBytes)
{
    std::string bytes;
    for (int shift = 8 * inBytes - 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(inValue >> shift);
    }
    return bytes;
}

std::string Chunk(std::string_view inType, std::string_view inData)
{
    const std::string body = std::string(inType) + std::string(inData);
    const uLong sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return BigEndian(inData.size(), 4) + body + BigEndian(sum, 4);
}

std::string HeaderChunk(std::uint32_t inWidth, std::uint32_t inHeight, int inDepth, int inColorType,
                        int inInterlace)
{
    return Chunk("IHDR", BigEndian(inWidth, 4) + BigEndian(inHeight, 4) + BigEndian(inDepth, 1) +
                             BigEndian(inColorType, 1) + BigEndian(0, 2) + BigEndian(inInterlace, 1));
}

std::string Compressed(std::string_view inBytes)
{
    uLongf size = compressBound(inBytes.size());
    std::string bytes(size, '\0');
    compress(reinterpret_cast<Bytef*>(bytes.data()), &size, reinterpret_cast<const Bytef*>(inBytes.data()),
             inBytes.size());
    bytes.resize(size);
    return bytes;
}

std::string FilteredRows(const StoredPicture& inPicture)
{
    // Which pass a pixel belongs to, as the eight by eight pattern is drawn in the format's description.
    static constexpr const char* kPassOf[] = {"16462646", "77777777", "56565656", "77777777",
                                              "36463646", "77777777", "56565656", "77777777"};
    const std::size_t step = std::max(1, inPicture.Channels() * inPicture.depth / 8);
    std::string bytes;
    int filter = 0;
    for (char pass = '1'; pass <= (inPicture.isInterlaced ? '7' : '1'); ++pass) {
        Row above;
        for (std::uint32_t y = 0; y < inPicture.height; ++y) {
            std::vector<std::uint32_t> columns;
            for (std::uint32_t x = 0; x < inPicture.width; ++x) {
                if (!inPicture.isInterlaced || kPassOf[y % 8][x % 8] == pass) {
                    columns.push_back(x);
                }
            }
            if (columns.empty()) {
                continue;
            }
            Row row = PackRow(inPicture, columns, y);
            AppendFiltered(bytes, filter, row, above, step);
            filter = (filter + 1) % 5;
            above = std::move(row);
        }
    }
    return bytes;
}

std::string PNGFile(const StoredPicture& inPicture, std::string_view inChunksBeforeData)
{
    return std::string(kPNGSignature) +
           HeaderChunk(inPicture.width, inPicture.height, inPicture.depth, inPicture.colorType,
                       inPicture.isInterlaced) +
           std::string(inChunksBeforeData) + Chunk("IDAT", Compressed(FilteredRows(inPicture))) +
           Chunk("IEND");
}

kiocore::utility::SharedRecycledMemory ToMemory(std::string_view inBytes)
{
    kiocore::utility::SharedRecycledMemory memory =
        kiocore::utility::MakeSharedRecycledMemory(inBytes.size());
    if (memory) {
        std::memcpy(memory.bytes.get(), inBytes.data(), inBytes.size());
    }
    return memory;
}

} // namespace support
