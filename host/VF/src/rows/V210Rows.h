#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

inline constexpr std::size_t kV210GroupPixels = 6;
inline constexpr std::size_t kV210GroupBytes = 16;

/// Unpacks whole groups into 6 Y, 3 Cb and 3 Cr each. May write up to 4 samples more than that.
void UnpackV210Groups(const std::byte* inGroups, std::size_t inCount, std::uint16_t* outY,
                      std::uint16_t* outCb, std::uint16_t* outCr);
/// Packs whole groups. May read up to 4 samples more than that. Samples have to be below 1024.
void PackV210Groups(std::byte* outGroups, std::size_t inCount, const std::uint16_t* inY,
                    const std::uint16_t* inCb, const std::uint16_t* inCr);

} // namespace VF
