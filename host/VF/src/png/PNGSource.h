#pragma once

#include <kiomediatypes/PixelFormat.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace VF {

/// Pixels to be encoded: BGRA or ARGB of 8 bits, or BGRA of 16. Borrowed.
struct PNGSource {
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const std::byte* pixels = nullptr;
    std::size_t rowBytes = 0;
    std::span<const std::uint64_t> rowsInUse; ///< see PNGOptions
    std::span<const std::pair<std::string, std::string>> texts;
    bool isOpaque = false;
    std::uint32_t pixelsPerUnitX = 0; ///< 0 in both: square
    std::uint32_t pixelsPerUnitY = 0;

    bool Is16() const { return format == kiomediatypes::kPixelFormat_BGRA_4444_16u; }
    bool IsAlphaFirst() const { return format == kiomediatypes::kPixelFormat_ARGB_4444_8u; }
    /// Rows that nobody named are opaque black, whatever their memory holds.
    bool IsInUse(std::uint32_t inRow) const
    {
        return inRow / 64 >= rowsInUse.size() || (rowsInUse[inRow / 64] >> inRow % 64 & 1) != 0;
    }
    const std::byte* Row(std::uint32_t inRow) const { return pixels + inRow * rowBytes; }
};

} // namespace VF
