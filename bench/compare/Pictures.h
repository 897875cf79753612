#pragma once

#include <MF/VideoFrame.h>

#include <cstdint>
#include <string>

namespace bench {

/// What test authors compare: pictures of a camera (gradients, texture, grain in every pixel) and of programs
/// (areas of one colour, lines, letters).
enum class Look { kPhoto, kInterface };

/// Opaque BGRA of 8 bits; the same pixels each time.
/// @throws std::bad_alloc.
MF::IVideoFrameRef MakePicture(Look inLook, std::uint32_t inWidth, std::uint32_t inHeight);
/// A copy in which that part of all pixels, scattered at random, has another colour.
MF::IVideoFrameRef WithChangedPixels(const MF::IVideoFrameRef& inPicture, double inPart);

/// As other programs would write it: libpng's usual level 6 and its choice of filters.
/// @throws std::runtime_error.
void WritePNGFile(const MF::IVideoFrameRef& inPicture, const std::string& inPath);

} // namespace bench
