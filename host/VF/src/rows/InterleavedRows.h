#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

/// Takes pixels of four samples apart; a null row is not wanted. Floats go through as their bits.
/// @param inOpaque  what the samples of the fourth row, unless wanted, are compared with.
/// @return false when one of these was different.
template <typename T>
bool SplitFour(const T* inPixels, std::size_t inCount, T* const (&outRows)[4], int inAlphaRow, T inOpaque);
/// Puts them together; a null row is inOpaque throughout.
template <typename T>
void JoinFour(T* outPixels, std::size_t inCount, const T* const (&inRows)[4], T inOpaque);

/// Pairs of pixels as Cb, Y, Cr, Y.
void SplitUYVY(const std::uint8_t* inPairs, std::size_t inCount, std::uint8_t* outY, std::uint8_t* outCb,
               std::uint8_t* outCr);
void JoinUYVY(std::uint8_t* outPairs, std::size_t inCount, const std::uint8_t* inY, const std::uint8_t* inCb,
              const std::uint8_t* inCr);

} // namespace VF
