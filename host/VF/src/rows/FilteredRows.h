#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

/// How the samples of a filtered row of PNG become pixels of a frame.
struct FilteredForm {
    std::uint8_t sourceBytes = 0; ///< of a pixel, 1 to 8
    std::uint8_t pixelBytes = 0;  ///< 4 or 8
    /// Which byte of a source pixel each byte of a pixel is; 0x80: none, it is set (opaque).
    std::uint8_t order[8] = {};
};
/// 8 or 16 bits of grey, RGB, or either with alpha, to BGRA. sourceBytes is 0 for all else.
FilteredForm FilteredFormOf(int inColorType, int inBitDepth);

/// Bytes that may be read behind a source row.
inline constexpr std::size_t kFilteredSlackBytes = 16;

/// Undoes the filter of a row; it works on each byte of a pixel alone, so that pixels may be put into their
/// order on the way.
/// @param inFilter   0 none, 1 left, 2 up, 3 average, 4 Paeth.
/// @param inAbove    the row of pixels above; all bytes 0 for the first.
/// @param outPixels  as many as inWidth; what the last 16 bytes hold beyond them is overwritten.
void UnfilterRow(const FilteredForm& inForm, int inFilter, const std::uint8_t* inSource,
                 const std::byte* inAbove, std::byte* outPixels, std::uint32_t inWidth);

} // namespace VF
