#pragma once

#include "PNGHeader.h"

#include <kiocore/utility/MemoryRecycler.h>
#include <kiomediatypes/PixelAspectRatio.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace VF {

/// Decodes a whole PNG into memory.
/// @param inSource   no byte behind the end of inHeader's data is used. Where its header has changed since
/// inHeader was read, the picture is refused.
/// @param outPixels  rows of inHeader's width and frame format, inRowBytes apart. Hold anything after a
/// failure.
/// @return empty, or why it failed.
std::string DecodePNG(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                      std::size_t inRowBytes);

/// Pixels to be encoded: BGRA or ARGB of 8 bits, or BGRA of 16.
struct PNGSource {
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const std::byte* pixels = nullptr;
    std::size_t rowBytes = 0;
    bool isOpaque = false;
    std::uint32_t pixelsPerUnitX = 0; ///< 0 in both: square
    std::uint32_t pixelsPerUnitY = 0;
};

/// @param inLevel    0 to 9.
/// @param outBytes   set when the result is empty.
/// @return empty, or why it failed.
std::string EncodePNG(const PNGSource& inSource, int inLevel,
                      kiocore::utility::SharedRecycledMemory& outBytes);

} // namespace VF
