#pragma once

#include <VF/VideoFrames.h>

namespace VF {

/// Fills all planes, padding too, with opaque black.
/// @param ioPixels  the first byte of the first plane.
void ClearPixels(kiomediatypes::PixelFormat inFormat, const kiomediatypes::color::ColorSpace& inColorSpace,
                 const FrameLayout& inLayout, std::byte* ioPixels);

} // namespace VF
