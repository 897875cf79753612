#pragma once

#include "PixelRows.h"

namespace VF {

/// Colour below this alpha is invisible in every integer format, and is given up (becomes 0): what the
/// division would bring back is the filters' rounding.
inline constexpr float kLeastAlpha = 0.5f / 65535.0f;

/// outRow = inRow / inDivisor.
void ToFloats(SampleType inType, const std::byte* inRow, std::size_t inCount, float inDivisor, float* outRow);
/// Rounded to nearest and clamped, 1 being the full value of the type; floats go through as they are.
void FromFloats(const float* inRow, std::size_t inCount, SampleType inType, std::byte* outRow);
/// Colour times alpha.
void Premultiply(float* ioColor, const float* inAlpha, std::size_t inCount);
/// Colour over alpha.
void Unpremultiply(float* ioColor, const float* inAlpha, std::size_t inCount);
/// ioSum += inWeight * inRow.
void Accumulate(float* ioSum, SampleType inType, const std::byte* inRow, float inWeight, std::size_t inCount);

} // namespace VF
