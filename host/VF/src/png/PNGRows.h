#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

/// Which pixels of a row are not opaque black.
/// @param inTwoBytes  16 bits a channel instead of 8.
/// @param outPixels   has room for inPixels.
/// @return how many.
std::uint32_t FindPixels(const std::byte* inRow, std::uint32_t inPixels, bool inAlphaFirst, bool inTwoBytes,
                         std::uint32_t* outPixels);

/// Red, green, blue of each pixel, as PNG has them.
void PackRGB(const std::byte* inRow, std::uint32_t inPixels, bool inAlphaFirst, bool inTwoBytes,
             std::byte* outRow);

/// The row filtered by what lies left, or above. Rows of inBytes.
void FilterSub(const std::byte* inRow, std::size_t inBytes, std::size_t inPixelBytes, std::byte* outRow);
void FilterUp(const std::byte* inRow, const std::byte* inAbove, std::size_t inBytes, std::byte* outRow);
/// How far the bytes are from 0, in either direction, all together: little of it compresses well.
std::uint64_t Magnitude(const std::byte* inRow, std::size_t inBytes);

} // namespace VF
