#include "ClearPixels.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace VF {
namespace {

using namespace kiomediatypes;

using Pattern = std::array<std::uint32_t, 4>; // repeats every 16 bytes in all formats

constexpr std::uint32_t Word(std::uint32_t inA, std::uint32_t inB, std::uint32_t inC, std::uint32_t inD)
{
    return inA | inB << 8 | inC << 16 | inD << 24;
}
constexpr std::uint32_t Codes(std::uint32_t inA, std::uint32_t inB, std::uint32_t inC)
{
    return inA | inB << 10 | inC << 20;
}

Pattern BlackOf(PixelFormat inFormat, bool inFullRange, int inPlane)
{
    const std::uint32_t y = inFullRange ? 0 : 16;
    switch (inFormat) {
    case kPixelFormat_BGRA_4444_8u: {
        const std::uint32_t word = Word(0, 0, 0, 255);
        return {word, word, word, word};
    }
    case kPixelFormat_ARGB_4444_8u: {
        const std::uint32_t word = Word(255, 0, 0, 0);
        return {word, word, word, word};
    }
    case kPixelFormat_BGRA_4444_16u:
        return {0, 0xFFFF0000, 0, 0xFFFF0000};
    case kPixelFormat_BGRA_4444_32f:
        return {0, 0, 0, 0x3F800000};
    case kPixelFormat_UYVY_422_8u: {
        const std::uint32_t word = Word(128, y, 128, y);
        return {word, word, word, word};
    }
    case kPixelFormat_V210_422_10u: {
        const std::uint32_t cyc = Codes(512, y * 4, 512);
        const std::uint32_t ycy = Codes(y * 4, 512, y * 4);
        return {cyc, ycy, cyc, ycy};
    }
    case kPixelFormat_YUV_420_8u_Planar: {
        const std::uint32_t value = inPlane == 0 ? y : 128;
        const std::uint32_t word = Word(value, value, value, value);
        return {word, word, word, word};
    }
    case kPixelFormat_Any:
        break;
    }
    return {};
}

} // namespace

void ClearPixels(PixelFormat inFormat, const color::ColorSpace& inColorSpace, const FrameLayout& inLayout,
                 std::byte* ioPixels)
{
    for (int index = 0; index < inLayout.planeCount; ++index) {
        const FrameLayout::Plane& plane = inLayout.planes[index];
        const Pattern black = BlackOf(inFormat, inColorSpace.range == color::Range::kFull, index);
        std::byte* const first = ioPixels + plane.offset;
        for (std::uint64_t done = 0; done < plane.rowBytes; done += sizeof(black)) {
            std::memcpy(first + done, black.data(),
                        std::min<std::uint64_t>(sizeof(black), plane.rowBytes - done));
        }
        for (std::uint32_t row = 1; row < plane.rows; ++row) {
            std::memcpy(first + row * plane.rowBytes, first, plane.rowBytes);
        }
    }
}

} // namespace VF
