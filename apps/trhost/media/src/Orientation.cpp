#include "Orientation.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace trhost::media {
namespace {

template <int PixelBytes>
void CopyTurned(const ConstPlane& inFrom, const Orientation& inOrientation, Plane outPixels)
{
    const int width = inOrientation.isTransposed ? inFrom.height : inFrom.width;
    const int height = inOrientation.isTransposed ? inFrom.width : inFrom.height;
    // From one pixel of the result to the next, in the source.
    const std::ptrdiff_t alongRow = inOrientation.isTransposed ? inFrom.rowBytes : PixelBytes;
    const std::ptrdiff_t alongColumn = inOrientation.isTransposed ? PixelBytes : inFrom.rowBytes;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* from =
            inFrom.pixels + (inOrientation.isMirroredY ? height - 1 - y : y) * alongColumn;
        std::ptrdiff_t step = alongRow;
        if (inOrientation.isMirroredX) {
            from += (width - 1) * alongRow;
            step = -alongRow;
        }
        std::uint8_t* to = outPixels.pixels + y * outPixels.rowBytes;
        for (int x = 0; x < width; ++x) {
            std::memcpy(to, from, PixelBytes);
            to += PixelBytes;
            from += step;
        }
    }
}

/// Where mirrored samples, two luma samples apart, start.
int Mirrored(int inPosition, int inLumaSamples)
{
    return (inLumaSamples % 2 == 0 ? 2 : 0) - inPosition;
}

/// Between which samples a moved one lies, and how near to the second, in quarters.
struct Taps {
    int first;
    int second;
    int weight;
};
Taps TapsFor(int inAt, int inQuarters, int inCount)
{
    const int position = 4 * inAt + inQuarters;
    const int below = position >= 0 ? position / 4 : -((3 - position) / 4);
    return {std::clamp(below, 0, inCount - 1), std::clamp(below + 1, 0, inCount - 1), position - 4 * below};
}

} // namespace

Orientation OrientationOf(const AVStream& inStream, bool& outIsExact)
{
    outIsExact = true;
    std::size_t size = 0;
    const std::uint8_t* const data = av_stream_get_side_data(&inStream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < 9 * sizeof(std::int32_t)) {
        return {};
    }
    // x' = a x + c y, y' = b x + d y
    std::int32_t matrix[9];
    std::memcpy(matrix, data, sizeof matrix);
    const std::int64_t a = matrix[0];
    const std::int64_t b = matrix[1];
    const std::int64_t c = matrix[3];
    const std::int64_t d = matrix[4];
    const std::int64_t straight = std::min(std::abs(a), std::abs(d));
    const std::int64_t across = std::min(std::abs(b), std::abs(c));
    // Writers round; a degree's turn shows as 1/57.
    if (straight > 0 && std::max(std::abs(b), std::abs(c)) <= straight / 64) {
        return {false, a < 0, d < 0};
    }
    if (across > 0 && std::max(std::abs(a), std::abs(d)) <= across / 64) {
        return {true, c < 0, b < 0};
    }
    outIsExact = false;
    return {};
}

void CopyUpright(const ConstPlane& inFrom, int inPixelBytes, const Orientation& inOrientation,
                 Plane outPixels)
{
    if (!inOrientation) {
        const auto bytes = std::size_t(inFrom.width) * std::size_t(inPixelBytes);
        for (int y = 0; y < inFrom.height; ++y) {
            std::memcpy(outPixels.pixels + y * outPixels.rowBytes, inFrom.pixels + y * inFrom.rowBytes,
                        bytes);
        }
        return;
    }
    switch (inPixelBytes) {
    case 1:
        return CopyTurned<1>(inFrom, inOrientation, outPixels);
    case 4:
        return CopyTurned<4>(inFrom, inOrientation, outPixels);
    case 8:
        return CopyTurned<8>(inFrom, inOrientation, outPixels);
    case 16:
        return CopyTurned<16>(inFrom, inOrientation, outPixels);
    default:
        std::abort(); // none of our formats
    }
}

ChromaPlane MakeChromaPlane(int inWidth, int inHeight)
{
    ChromaPlane plane;
    plane.width = inWidth;
    plane.height = inHeight;
    plane.samples.resize(std::size_t(inWidth) * std::size_t(inHeight));
    return plane;
}

ChromaPosition Upright(ChromaPosition inPosition, int inWidth, int inHeight, const Orientation& inOrientation)
{
    if (inOrientation.isTransposed) {
        std::swap(inPosition.x, inPosition.y);
        std::swap(inWidth, inHeight);
    }
    return {inOrientation.isMirroredX ? Mirrored(inPosition.x, inWidth) : inPosition.x,
            inOrientation.isMirroredY ? Mirrored(inPosition.y, inHeight) : inPosition.y};
}

void MoveChroma(const ConstPlane& inFrom, ChromaPosition inPosition, bool inIsHalvedBothWays,
                Plane outSamples)
{
    // A sample stands for two luma samples, which are four halves: distances are quarters of a sample.
    const int quartersX = 0 - inPosition.x;
    const int quartersY = inIsHalvedBothWays ? 1 - inPosition.y : 0;
    if (quartersX == 0 && quartersY == 0) {
        return CopyUpright(inFrom, 1, {}, outSamples);
    }
    std::vector<Taps> columns;
    columns.reserve(std::size_t(inFrom.width));
    for (int x = 0; x < inFrom.width; ++x) {
        columns.push_back(TapsFor(x, quartersX, inFrom.width));
    }
    for (int y = 0; y < inFrom.height; ++y) {
        const Taps rows = TapsFor(y, quartersY, inFrom.height);
        const std::uint8_t* const first = inFrom.pixels + rows.first * inFrom.rowBytes;
        const std::uint8_t* const second = inFrom.pixels + rows.second * inFrom.rowBytes;
        std::uint8_t* const to = outSamples.pixels + y * outSamples.rowBytes;
        for (int x = 0; x < inFrom.width; ++x) {
            const Taps& column = columns[std::size_t(x)];
            const int left = (4 - rows.weight) * first[column.first] + rows.weight * second[column.first];
            const int right = (4 - rows.weight) * first[column.second] + rows.weight * second[column.second];
            to[x] = std::uint8_t(((4 - column.weight) * left + column.weight * right + 8) >> 4);
        }
    }
}

} // namespace trhost::media
