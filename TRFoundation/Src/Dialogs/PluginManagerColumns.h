#pragma once

#include <cstdint>

namespace TR {

// The columns' ids, under which their places and widths are kept from one time to the next.
inline constexpr std::uint32_t kColumn_Enabled = 1;
inline constexpr std::uint32_t kColumn_Name = 2;
inline constexpr std::uint32_t kColumn_FilePath = 3;
inline constexpr std::uint32_t kColumn_FirstAttribute = 4;
inline constexpr std::uint32_t kColumn_SupportURL = 100;
/// As many as there are ids before the support address.
inline constexpr std::uint32_t kMostAttributes = kColumn_SupportURL - kColumn_FirstAttribute;

inline constexpr float kSmallColumnWidth = 70;
inline constexpr float kLargeColumnWidth = 140;

inline constexpr bool IsAttributeColumn(std::uint32_t inColumnID)
{
    return inColumnID >= kColumn_FirstAttribute && inColumnID < kColumn_FirstAttribute + kMostAttributes;
}

} // namespace TR
