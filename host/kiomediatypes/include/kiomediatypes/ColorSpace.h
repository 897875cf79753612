#pragma once

#include <cstdint>

namespace kiomediatypes::color {

// Values are the code points of ITU-T H.273, which media files and libraries use too.

enum class Primaries : std::uint8_t { kBT709 = 1, kBT601_625 = 5, kBT601_525 = 6, kBT2020 = 9, kP3D65 = 12 };
enum class Transfer : std::uint8_t {
    kBT709 = 1,
    kLinear = 8,
    kSRGB = 13,
    kBT2020_10 = 14,
    kPQ = 16,
    kHLG = 18
};
enum class Matrix : std::uint8_t { kBT709 = 1, kFCC = 4, kBT601_625 = 5, kBT601_525 = 6, kBT2020_NCL = 9 };
enum class Range : std::uint8_t {
    kLimited, ///< Y 16 to 235, chroma 16 to 240 of 255, likewise at other depths
    kFull,
};

/// What the numbers of a picture mean. Of RGB formats only primaries and transfer count: they have no
/// matrix, and their range is full.
///
/// Threading: a plain value.
struct ColorSpace {
    Primaries primaries = Primaries::kBT709;
    Transfer transfer = Transfer::kBT709;
    Matrix matrix = Matrix::kBT709;
    Range range = Range::kLimited;

    friend constexpr bool operator==(const ColorSpace&, const ColorSpace&) = default;
};

/// BT.709, limited range.
constexpr ColorSpace GetDefaultColorSpace()
{
    return {};
}
inline constexpr ColorSpace kColorSpace_BT601_525{Primaries::kBT601_525, Transfer::kBT709, Matrix::kBT601_525,
                                                  Range::kLimited};
inline constexpr ColorSpace kColorSpace_BT601_625{Primaries::kBT601_625, Transfer::kBT709, Matrix::kBT601_625,
                                                  Range::kLimited};
inline constexpr ColorSpace kColorSpace_BT2020{Primaries::kBT2020, Transfer::kBT2020_10, Matrix::kBT2020_NCL,
                                               Range::kLimited};

} // namespace kiomediatypes::color
