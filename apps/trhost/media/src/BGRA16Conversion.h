#pragma once

#include "ColorTags.h"
#include "Orientation.h"

namespace trhost::media {

/// Whether ConvertToBGRA16 reads a pixel format: RGB, YUV and grey of up to 16 bits, of any layout and
/// subsampling, with or without alpha.
bool IsConvertibleToBGRA16(int inFormat);

/// Makes full-range 16-bit BGRA of a picture of any such format: for those that our own formats have no like
/// of. Subsampled chroma is interpolated with the bicubic filter of medium quality, from where it lies.
/// Rounded to nearest; what lies beyond black and white is cut off.
/// @param inRange  of YUV and grey.
void ConvertToBGRA16(const AVFrame& inPicture, kiomediatypes::color::Matrix inMatrix,
                     kiomediatypes::color::Range inRange, Plane outPixels);

} // namespace trhost::media
