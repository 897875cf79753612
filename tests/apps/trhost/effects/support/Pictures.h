#pragma once

#include <MF/VideoFrame.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace effectstests {

/// A pixel as a word: 0xAARRGGBB.
using Word = std::uint32_t;

MF::IVideoFrameRef MakePicture(std::uint32_t inWidth, std::uint32_t inHeight,
                               const std::function<Word(std::uint32_t inX, std::uint32_t inY)>& inPixel);
/// All pixels, row by row.
std::vector<Word> WordsOf(const MF::IVideoFrameRef& inFrame);

/// Ramps and checks, with an alpha that changes from row to row.
Word TestPixel(std::uint32_t inX, std::uint32_t inY);

} // namespace effectstests
