#pragma once

#include "DifferenceRows.h"

namespace VF {

// Steps of comparing planar samples: bytes, or words of up to 10 bits. T: std::uint8_t or std::uint16_t.

/// Absolute differences of two rows, sample by sample.
/// @return the sum of their squares.
template <typename T>
std::uint64_t DifferencesOf(const T* inFirst, const T* inSecond, std::size_t inCount, T* outDifferences);

/// ioLuma[x] = the largest of luma's difference and those of the two kinds of chroma at x / 2.
template <typename T>
void LargestOfPixels(T* ioLuma, const T* inCb, const T* inCr, std::size_t inPixels);

/// Counts those above inTolerance, finds their ends and the largest of all.
template <typename T>
void SumUpPixels(const T* inLargest, std::uint32_t inPixels, std::uint32_t inTolerance,
                 RowDifference& ioResult);

} // namespace VF
