#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

/// How two rows differ. Summed up over rows in their order, it does not depend on who compared which.
struct RowDifference {
    std::uint64_t squares = 0; ///< of all differences, in codes
    double floatSquares = 0;   ///< the same of floats
    std::uint32_t pixels = 0;  ///< that differ by more than the tolerance
    std::uint32_t first = 0;   ///< of these; counts only where there are some
    std::uint32_t last = 0;
    float largest = 0; ///< in codes, or of floats
};

/// One row of each picture.
struct RowPair {
    const std::byte* first = nullptr;
    const std::byte* second = nullptr;
    std::uint32_t pixels = 0;
};

/// What becomes of the difference picture's row. Rows of large pictures go past the caches: they would push
/// out what is compared next. Needs rows aligned to 64 bytes, and FinishStreaming() before others read them.
enum class Painting { kNone, kCached, kStreamed };
void FinishStreaming();

// Where pixels are equal or within the tolerance, opaque black is painted; where colour differs, its channels
// that do, lifted; where only alpha does, grey.

/// Four bytes a pixel.
/// @param inTolerance  greatest difference of codes that does not count.
RowDifference CompareRow8(const RowPair& inRows, std::uint32_t inTolerance, bool inAlphaFirst,
                          std::byte* outPainted, Painting inPainting);
/// BGRA of 16 bits.
RowDifference CompareRow16(const RowPair& inRows, std::uint32_t inTolerance, std::byte* outPainted,
                           Painting inPainting);
/// BGRA of floats.
RowDifference CompareRow32f(const RowPair& inRows, float inTolerance, std::byte* outPainted,
                            Painting inPainting);

} // namespace VF
