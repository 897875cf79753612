#include "PixelRows.h"

#include "InterleavedRows.h"
#include "V210Rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace VF {

using namespace kiomediatypes;

PlanarForm PlanarFormOf(PixelFormat inFormat)
{
    switch (inFormat) {
    case kPixelFormat_BGRA_4444_8u:
    case kPixelFormat_ARGB_4444_8u:
        return {};
    case kPixelFormat_BGRA_4444_16u:
        return {SampleType::kWord, 16};
    case kPixelFormat_BGRA_4444_32f:
        return {SampleType::kFloat, 32};
    case kPixelFormat_UYVY_422_8u:
        return {SampleType::kByte, 8, true, 1, 0};
    case kPixelFormat_V210_422_10u:
        return {SampleType::kWord, 10, true, 1, 0};
    case kPixelFormat_YUV_420_8u_Planar:
        return {SampleType::kByte, 8, true, 1, 1};
    case kPixelFormat_Any:
        break;
    }
    return {};
}

namespace {

constexpr int kRed = 0;
constexpr int kGreen = 1;
constexpr int kBlue = 2;
constexpr int kAlpha = 3;
constexpr int kOrderBGRA[] = {kBlue, kGreen, kRed, kAlpha};
constexpr int kOrderARGB[] = {kAlpha, kRed, kGreen, kBlue};

template <typename T>
constexpr T kOpaque = static_cast<T>(-1);
template <>
constexpr std::uint32_t kOpaque<std::uint32_t> = std::bit_cast<std::uint32_t>(1.0f);

template <typename T>
bool UnpackFour(const std::byte* inRow, std::uint32_t inLeft, std::uint32_t inRight,
                const RowPlanes& outPlanes, const int (&inOrder)[4])
{
    T* rows[4] = {};
    for (int sample = 0; sample < 4; ++sample) {
        if (T* const row = outPlanes.As<T>(inOrder[sample])) {
            rows[sample] = row + inLeft;
        }
    }
    return SplitFour<T>(reinterpret_cast<const T*>(inRow) + std::size_t{inLeft} * 4, inRight - inLeft, rows,
                        inOrder[0] == kAlpha ? 0 : 3, kOpaque<T>);
}

template <typename T>
void PackFour(std::byte* outRow, std::uint32_t inLeft, std::uint32_t inRight, const RowPlanes& inPlanes,
              const int (&inOrder)[4])
{
    const T* rows[4] = {};
    for (int sample = 0; sample < 4; ++sample) {
        if (const T* const row = inPlanes.As<T>(inOrder[sample])) {
            rows[sample] = row + inLeft;
        }
    }
    JoinFour<T>(reinterpret_cast<T*>(outRow) + std::size_t{inLeft} * 4, inRight - inLeft, rows, kOpaque<T>);
}

/// One column more than there are, if it is asked for.
template <typename T>
void RepeatLast(T* ioRow, std::uint32_t inWidth, std::uint32_t inRight)
{
    if (ioRow && inRight > inWidth) {
        ioRow[inWidth] = ioRow[inWidth - 1];
    }
}
void RepeatLast(SampleType inType, const RowPlanes& ioPlanes, std::uint32_t inWidth, std::uint32_t inRight)
{
    for (int plane = 0; plane < 4; ++plane) {
        if (inType == SampleType::kByte) {
            RepeatLast(ioPlanes.As<std::uint8_t>(plane), inWidth, inRight);
        } else if (inType == SampleType::kWord) {
            RepeatLast(ioPlanes.As<std::uint16_t>(plane), inWidth, inRight);
        } else {
            RepeatLast(ioPlanes.As<std::uint32_t>(plane), inWidth, inRight);
        }
    }
}

void UnpackUYVY(const SourcePicture& inPicture, const std::byte* inRow, std::uint32_t inLeft,
                std::uint32_t inRight, const RowPlanes& outPlanes)
{
    const std::uint32_t first = inLeft / 2;
    const std::uint32_t end = (std::min(inRight, inPicture.width) + 1) / 2;
    std::uint8_t* const y = outPlanes.As<std::uint8_t>(0);
    SplitUYVY(reinterpret_cast<const std::uint8_t*>(inRow) + std::size_t{first} * 4, end - first,
              y + first * 2, outPlanes.As<std::uint8_t>(1) + first, outPlanes.As<std::uint8_t>(2) + first);
    RepeatLast(y, inPicture.width, end * 2); // the second pixel of an odd last pair means nothing
}

void PackUYVY(const DestinationPicture& inPicture, std::byte* outRow, std::uint32_t inLeft,
              std::uint32_t inRight, const RowPlanes& inPlanes)
{
    const std::uint32_t first = inLeft / 2;
    const std::uint32_t whole = std::min(inRight, inPicture.width) / 2; // end of the pairs with two pixels
    const std::uint8_t* const y = inPlanes.As<std::uint8_t>(0);
    const std::uint8_t* const cb = inPlanes.As<std::uint8_t>(1);
    const std::uint8_t* const cr = inPlanes.As<std::uint8_t>(2);
    auto* const pairs = reinterpret_cast<std::uint8_t*>(outRow);
    JoinUYVY(pairs + std::size_t{first} * 4, whole - first, y + first * 2, cb + first, cr + first);
    if (inRight >= inPicture.width && inPicture.width % 2) {
        const std::uint8_t last[4] = {cb[whole], y[whole * 2], cr[whole], y[whole * 2]};
        std::memcpy(pairs + std::size_t{whole} * 4, last, sizeof(last));
    }
}

void UnpackV210(const SourcePicture& inPicture, const std::byte* inRow, std::uint32_t inLeft,
                std::uint32_t inRight, const RowPlanes& outPlanes)
{
    const std::size_t first = inLeft / kV210GroupPixels;
    const std::size_t end = (std::min(inRight, inPicture.width) + kV210GroupPixels - 1) / kV210GroupPixels;
    std::uint16_t* const y = outPlanes.As<std::uint16_t>(0);
    UnpackV210Groups(inRow + first * kV210GroupBytes, end - first, y + first * 6,
                     outPlanes.As<std::uint16_t>(1) + first * 3, outPlanes.As<std::uint16_t>(2) + first * 3);
    RepeatLast(y, inPicture.width, inRight);
}

/// Packs the part of one group that lies between two columns, keeping the rest.
void PackV210Part(const DestinationPicture& inPicture, std::byte* ioGroup, std::size_t inFirstColumn,
                  std::size_t inLeft, std::size_t inRight, const RowPlanes& inPlanes)
{
    std::uint16_t y[16], cb[8], cr[8]; // room for what UnpackV210Groups writes too much
    UnpackV210Groups(ioGroup, 1, y, cb, cr);
    const std::size_t last = inPicture.width - 1;
    const std::size_t end = inRight > last ? inFirstColumn + kV210GroupPixels : inRight;
    for (std::size_t column = std::max(inLeft, inFirstColumn);
         column < std::min(end, inFirstColumn + kV210GroupPixels); ++column) {
        const std::size_t from = std::min(column, last);
        const std::size_t to = column - inFirstColumn;
        y[to] = inPlanes.As<std::uint16_t>(0)[from];
        cb[to / 2] = inPlanes.As<std::uint16_t>(1)[from / 2];
        cr[to / 2] = inPlanes.As<std::uint16_t>(2)[from / 2];
    }
    PackV210Groups(ioGroup, 1, y, cb, cr);
}

void PackV210(const DestinationPicture& inPicture, std::byte* outRow, std::uint32_t inLeft,
              std::uint32_t inRight, const RowPlanes& inPlanes)
{
    const std::size_t right = std::min(inRight, inPicture.width);
    const std::size_t firstWhole = (inLeft + kV210GroupPixels - 1) / kV210GroupPixels;
    const std::size_t endWhole = right / kV210GroupPixels;
    if (inLeft % kV210GroupPixels || endWhole < firstWhole) {
        const std::size_t group = inLeft / kV210GroupPixels;
        PackV210Part(inPicture, outRow + group * kV210GroupBytes, group * kV210GroupPixels, inLeft, right,
                     inPlanes);
    }
    if (endWhole > firstWhole) {
        PackV210Groups(outRow + firstWhole * kV210GroupBytes, endWhole - firstWhole,
                       inPlanes.As<std::uint16_t>(0) + firstWhole * 6,
                       inPlanes.As<std::uint16_t>(1) + firstWhole * 3,
                       inPlanes.As<std::uint16_t>(2) + firstWhole * 3);
    }
    if (right % kV210GroupPixels && endWhole >= firstWhole) {
        PackV210Part(inPicture, outRow + endWhole * kV210GroupBytes, endWhole * kV210GroupPixels, inLeft,
                     right, inPlanes);
    }
}

} // namespace

bool UnpackRow(const SourcePicture& inPicture, std::uint32_t inRow, std::uint32_t inLeft,
               std::uint32_t inRight, const RowPlanes& outPlanes)
{
    const std::uint32_t row = std::min(inRow, inPicture.height - 1);
    const std::byte* const pixels = inPicture.Row(row);
    const std::uint32_t right = std::min(inRight, inPicture.width);
    const std::uint32_t left = std::min(inLeft, right - 1); // so that the last column can be repeated
    bool opaque = true;
    switch (inPicture.format) {
    case kPixelFormat_BGRA_4444_8u:
        opaque = UnpackFour<std::uint8_t>(pixels, left, right, outPlanes, kOrderBGRA);
        break;
    case kPixelFormat_ARGB_4444_8u:
        opaque = UnpackFour<std::uint8_t>(pixels, left, right, outPlanes, kOrderARGB);
        break;
    case kPixelFormat_BGRA_4444_16u:
        opaque = UnpackFour<std::uint16_t>(pixels, left, right, outPlanes, kOrderBGRA);
        break;
    case kPixelFormat_BGRA_4444_32f:
        opaque = UnpackFour<std::uint32_t>(pixels, left, right, outPlanes, kOrderBGRA);
        break;
    case kPixelFormat_UYVY_422_8u:
        UnpackUYVY(inPicture, pixels, left, inRight, outPlanes);
        return true;
    case kPixelFormat_V210_422_10u:
        UnpackV210(inPicture, pixels, left, inRight, outPlanes);
        return true;
    case kPixelFormat_YUV_420_8u_Planar:
        std::memcpy(outPlanes.planes[0] + left, pixels + left, right - left);
        RepeatLast(outPlanes.As<std::uint8_t>(0), inPicture.width, inRight);
        for (int plane = 1; plane < 3 && inRow % 2 == 0; ++plane) {
            std::memcpy(outPlanes.planes[plane] + left / 2, inPicture.Row(inRow / 2, plane) + left / 2,
                        (right + 1) / 2 - left / 2);
        }
        return true;
    case kPixelFormat_Any:
        return true;
    }
    RepeatLast(PlanarFormOf(inPicture.format).type, outPlanes, inPicture.width, inRight);
    return opaque;
}

void PackRow(const DestinationPicture& inPicture, std::uint32_t inRow, std::uint32_t inLeft,
             std::uint32_t inRight, const RowPlanes& inPlanes)
{
    const std::uint32_t right = std::min(inRight, inPicture.width);
    if (inRow >= inPicture.height || inLeft >= right) {
        return;
    }
    std::byte* const pixels = inPicture.Row(inRow);
    switch (inPicture.format) {
    case kPixelFormat_BGRA_4444_8u:
        PackFour<std::uint8_t>(pixels, inLeft, right, inPlanes, kOrderBGRA);
        break;
    case kPixelFormat_ARGB_4444_8u:
        PackFour<std::uint8_t>(pixels, inLeft, right, inPlanes, kOrderARGB);
        break;
    case kPixelFormat_BGRA_4444_16u:
        PackFour<std::uint16_t>(pixels, inLeft, right, inPlanes, kOrderBGRA);
        break;
    case kPixelFormat_BGRA_4444_32f:
        PackFour<std::uint32_t>(pixels, inLeft, right, inPlanes, kOrderBGRA);
        break;
    case kPixelFormat_UYVY_422_8u:
        PackUYVY(inPicture, pixels, inLeft, right, inPlanes);
        break;
    case kPixelFormat_V210_422_10u:
        PackV210(inPicture, pixels, inLeft, right, inPlanes);
        break;
    case kPixelFormat_YUV_420_8u_Planar:
        std::memcpy(pixels + inLeft, inPlanes.planes[0] + inLeft, right - inLeft);
        for (int plane = 1; plane < 3 && inRow % 2 == 0; ++plane) {
            std::memcpy(inPicture.Row(inRow / 2, plane) + inLeft / 2, inPlanes.planes[plane] + inLeft / 2,
                        (right + 1) / 2 - inLeft / 2);
        }
        break;
    case kPixelFormat_Any:
        break;
    }
}

} // namespace VF
