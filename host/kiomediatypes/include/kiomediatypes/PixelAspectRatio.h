#pragma once

#include <cstdint>

namespace kiomediatypes {

/// Width of a pixel to its height, as it was written: 2:2 and 1:1 are different values.
///
/// Threading: a plain value.
struct PixelAspectRatio {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;

    friend constexpr bool operator==(PixelAspectRatio, PixelAspectRatio) = default;
};
static_assert(sizeof(PixelAspectRatio) == 8);

inline constexpr PixelAspectRatio kPixelAspectRatio_Square{1, 1};
inline constexpr PixelAspectRatio kPixelAspectRatio_Any{0, 0};

} // namespace kiomediatypes
