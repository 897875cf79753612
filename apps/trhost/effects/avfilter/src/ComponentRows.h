#pragma once

#include <cstddef>
#include <cstdint>

namespace trhost::effects::avfilter {

/// Where the samples of one component lie: every stepBytes within a row, from row to row rowBytes.
struct Samples {
    std::uint8_t* first = nullptr; ///< top left
    std::ptrdiff_t rowBytes = 0;   ///< below 0 in pictures that are stored upside down
    int stepBytes = 0;
    int width = 0;
    int height = 0;
};

/// Copies components from one arrangement of pixels to another; the values stay as they are. Components of
/// one picture are best copied together: pixels then pass through the processor once.
/// @param inCount        components, up to four, all of one size and step on each side.
/// @param inSampleBytes  1, 2 or 4.
void CopySamples(const Samples* inFrom, const Samples* inTo, int inCount, int inSampleBytes);
/// Gives all samples one value.
void FillSamples(const Samples& inTo, int inSampleBytes, const void* inValue);

/// Three planes of 10-bit codes, each in 16 bits.
struct Planes422 {
    std::uint16_t* y = nullptr;
    std::uint16_t* cb = nullptr;
    std::uint16_t* cr = nullptr;
};
/// A row of 'v210' into planes and back. The last group of six is filled up with its last pixel.
void UnpackV210Row(const std::uint8_t* inRow, int inWidth, const Planes422& outPlanes);
void PackV210Row(const Planes422& inPlanes, int inWidth, std::uint8_t* outRow);

} // namespace trhost::effects::avfilter
