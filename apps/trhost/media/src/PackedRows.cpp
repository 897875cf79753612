#include "PackedRows.h"

#include <algorithm>
#include <cstring>

namespace trhost::media {
namespace {

/// At which byte of a packed pixel the channels lie; alpha -1 where there is none.
struct RGBLayout {
    int format;
    int bytes;
    int blue;
    int green;
    int red;
    int alpha;
};
constexpr RGBLayout kRGBLayouts[] = {
    {AV_PIX_FMT_BGRA, 4, 0, 1, 2, 3},   {AV_PIX_FMT_RGBA, 4, 2, 1, 0, 3},  {AV_PIX_FMT_ARGB, 4, 3, 2, 1, 0},
    {AV_PIX_FMT_ABGR, 4, 1, 2, 3, 0},   {AV_PIX_FMT_BGR0, 4, 0, 1, 2, -1}, {AV_PIX_FMT_RGB0, 4, 2, 1, 0, -1},
    {AV_PIX_FMT_0RGB, 4, 3, 2, 1, -1},  {AV_PIX_FMT_0BGR, 4, 1, 2, 3, -1}, {AV_PIX_FMT_RGB24, 3, 2, 1, 0, -1},
    {AV_PIX_FMT_BGR24, 3, 0, 1, 2, -1},
};

const RGBLayout* LayoutFor(int inFormat)
{
    for (const RGBLayout& layout : kRGBLayouts) {
        if (layout.format == inFormat) {
            return &layout;
        }
    }
    return nullptr;
}

const std::uint8_t* RowOf(const AVFrame& inPicture, int inPlane, int inRow)
{
    return inPicture.data[inPlane] + std::ptrdiff_t(inRow) * inPicture.linesize[inPlane];
}

} // namespace

void PackUYVYRow(const std::uint8_t* inY, const std::uint8_t* inCb, const std::uint8_t* inCr, int inWidth,
                 std::uint8_t* outRow)
{
    const int pairs = inWidth / 2;
    for (int i = 0; i < pairs; ++i) {
        outRow[4 * i] = inCb[i];
        outRow[4 * i + 1] = inY[2 * i];
        outRow[4 * i + 2] = inCr[i];
        outRow[4 * i + 3] = inY[2 * i + 1];
    }
    if (inWidth % 2 != 0) {
        const std::uint8_t last[4] = {inCb[pairs], inY[inWidth - 1], inCr[pairs], inY[inWidth - 1]};
        std::memcpy(outRow + 4 * pairs, last, 4);
    }
}

void SwapYUYVRow(const std::uint8_t* inRow, int inWidth, std::uint8_t* outRow)
{
    const int bytes = (inWidth + 1) / 2 * 4;
    for (int i = 0; i < bytes; i += 2) {
        outRow[i] = inRow[i + 1];
        outRow[i + 1] = inRow[i];
    }
    if (inWidth % 2 != 0) {
        outRow[bytes - 1] = outRow[bytes - 3];
    }
}

void PackV210Row(const std::uint16_t* inY, const std::uint16_t* inCb, const std::uint16_t* inCr, int inWidth,
                 std::uint8_t* outRow)
{
    const auto pack = [&outRow](const std::uint16_t* inLuma, const std::uint16_t* inBlue,
                                const std::uint16_t* inRed) {
        const auto word = [](std::uint32_t inA, std::uint32_t inB, std::uint32_t inC) {
            return (inA & 1023) | (inB & 1023) << 10 | (inC & 1023) << 20;
        };
        const std::uint32_t words[4] = {
            word(inBlue[0], inLuma[0], inRed[0]), word(inLuma[1], inBlue[1], inLuma[2]),
            word(inRed[1], inLuma[3], inBlue[2]), word(inLuma[4], inRed[2], inLuma[5])};
        for (const std::uint32_t value : words) {
            for (int shift = 0; shift < 32; shift += 8) {
                *outRow++ = std::uint8_t(value >> shift);
            }
        }
    };
    int x = 0;
    for (; x + 6 <= inWidth; x += 6) {
        pack(inY + x, inCb + x / 2, inCr + x / 2);
    }
    if (x < inWidth) {
        std::uint16_t luma[6];
        std::uint16_t blue[3];
        std::uint16_t red[3];
        for (int i = 0; i < 6; ++i) {
            luma[i] = inY[std::min(x + i, inWidth - 1)];
            blue[i / 2] = inCb[std::min(x + i, inWidth - 1) / 2];
            red[i / 2] = inCr[std::min(x + i, inWidth - 1) / 2];
        }
        pack(luma, blue, red);
    }
}

bool IsRGB8(int inFormat)
{
    return LayoutFor(inFormat) || inFormat == AV_PIX_FMT_GBRP || inFormat == AV_PIX_FMT_GBRAP ||
           inFormat == AV_PIX_FMT_PAL8;
}

void PackBGRARow(const AVFrame& inPicture, int inRow, std::uint8_t* outRow)
{
    const std::uint8_t* const row = RowOf(inPicture, 0, inRow);
    if (inPicture.format == AV_PIX_FMT_PAL8) {
        // The palette's entries are words of alpha, red, green, blue in machine byte order.
        for (int x = 0; x < inPicture.width; ++x) {
            std::uint32_t color = 0;
            std::memcpy(&color, inPicture.data[1] + 4 * row[x], 4);
            for (int i = 0; i < 4; ++i) {
                outRow[4 * x + i] = std::uint8_t(color >> (8 * i));
            }
        }
        return;
    }
    const RGBLayout* const layout = LayoutFor(inPicture.format);
    if (!layout) {
        const std::uint8_t* const blue = RowOf(inPicture, 1, inRow);
        const std::uint8_t* const red = RowOf(inPicture, 2, inRow);
        const std::uint8_t* const alpha =
            inPicture.format == AV_PIX_FMT_GBRAP ? RowOf(inPicture, 3, inRow) : nullptr;
        for (int x = 0; x < inPicture.width; ++x) {
            outRow[4 * x] = blue[x];
            outRow[4 * x + 1] = row[x];
            outRow[4 * x + 2] = red[x];
            outRow[4 * x + 3] = alpha ? alpha[x] : 255;
        }
        return;
    }
    const RGBLayout at = *layout;
    for (int x = 0; x < inPicture.width; ++x) {
        const std::uint8_t* const pixel = row + x * at.bytes;
        outRow[4 * x] = pixel[at.blue];
        outRow[4 * x + 1] = pixel[at.green];
        outRow[4 * x + 2] = pixel[at.red];
        outRow[4 * x + 3] = at.alpha >= 0 ? pixel[at.alpha] : 255;
    }
}

void PackFloatRow(const AVFrame& inPicture, int inRow, float* outRow)
{
    const auto* const green = reinterpret_cast<const float*>(RowOf(inPicture, 0, inRow));
    const auto* const blue = reinterpret_cast<const float*>(RowOf(inPicture, 1, inRow));
    const auto* const red = reinterpret_cast<const float*>(RowOf(inPicture, 2, inRow));
    const auto* const alpha = inPicture.format == AV_PIX_FMT_GBRAPF32
                                  ? reinterpret_cast<const float*>(RowOf(inPicture, 3, inRow))
                                  : nullptr;
    for (int x = 0; x < inPicture.width; ++x) {
        outRow[4 * x] = blue[x];
        outRow[4 * x + 1] = green[x];
        outRow[4 * x + 2] = red[x];
        outRow[4 * x + 3] = alpha ? alpha[x] : 1.0F;
    }
}

} // namespace trhost::media
