#include <VF/VideoFrames.h>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr std::uint64_t kRowAlignment = 64; // widest vector register, and a cache line

constexpr std::uint64_t RoundUp(std::uint64_t inValue, std::uint64_t inStep)
{
    return (inValue + inStep - 1) / inStep * inStep;
}

/// Bytes of a row of a packed format, or of the first plane; 0 for a format that frames do not have.
std::uint64_t UsedRowBytes(PixelFormat inFormat, std::uint64_t inWidth)
{
    switch (inFormat) {
    case kPixelFormat_BGRA_4444_8u:
    case kPixelFormat_ARGB_4444_8u:
        return inWidth * 4;
    case kPixelFormat_BGRA_4444_16u:
        return inWidth * 8;
    case kPixelFormat_BGRA_4444_32f:
        return inWidth * 16;
    case kPixelFormat_UYVY_422_8u:
        return (inWidth + 1) / 2 * 4;
    case kPixelFormat_V210_422_10u:
        return (inWidth + 5) / 6 * 16;
    case kPixelFormat_YUV_420_8u_Planar:
        return inWidth;
    case kPixelFormat_Any:
        break;
    }
    return 0;
}

} // namespace

FrameLayout LayoutOf(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight, bool inUnpaddedRows)
{
    FrameLayout layout;
    const std::uint64_t used = UsedRowBytes(inFormat, inWidth);
    if (used == 0 || inWidth > kMostPixelsPerSide || inHeight == 0 || inHeight > kMostPixelsPerSide) {
        return layout;
    }
    const auto add = [&](std::uint64_t inUsedBytes, std::uint32_t inRows) {
        // v210's own rule, groups of 48 pixels in 128 bytes.
        const std::uint64_t alignment =
            inFormat == kPixelFormat_V210_422_10u ? 2 * kRowAlignment : kRowAlignment;
        FrameLayout::Plane& plane = layout.planes[layout.planeCount++];
        plane.offset = layout.sizeBytes;
        plane.rowBytes = inUnpaddedRows ? inUsedBytes : RoundUp(inUsedBytes, alignment);
        plane.usedBytes = inUsedBytes;
        plane.rows = inRows;
        layout.sizeBytes += plane.rowBytes * inRows;
    };
    add(used, inHeight);
    if (inFormat & kPixelFormatFlag_Planar) {
        add((used + 1) / 2, (inHeight + 1) / 2);
        add((used + 1) / 2, (inHeight + 1) / 2);
    }
    return layout;
}

} // namespace VF
