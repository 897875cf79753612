#pragma once

#include "Picture.h"

#include <kiomediatypes/RenderQuality.h>

namespace VF {

/// Conversions between formats of the same size that have rows of their own: one pass over the bytes, which
/// is several times faster than through planes.
///
/// - Between all packed RGB formats. Floats are clamped, and what is no number becomes 0.
/// - From packed RGB to UYVY and v210. Chroma is the even pixel's: half of it, and a quarter of each
/// neighbour,
///   the first and the last pixel standing for what is beyond. Alpha is dropped.
/// - From UYVY, v210 and planar 4:2:0 to packed RGB, opaque. An odd pixel's chroma is the mean of its
///   neighbours'; between rows three quarters are the nearer row's.
/// - UYVY and v210 to each other and themselves, in either range.
///
/// Integers are the nearest to what exact arithmetic gives; single precision adds less than 0.0005 to half a
/// unit at 8 and 10 bits and 0.04 at 16. (Limited 10-bit codes lose two bits with halves going up, elsewhere
/// they become even.) Areas of one colour come out as one. All processors give the same bytes.
/// A picture goes on beyond its last pixel as that pixel is: in the second half of an odd row's last pair,
/// and in what v210 has left of its last group of six.
///
/// Threading: any thread; rows are independent of each other, so bands may be done at once.

/// Whether there are such rows from a source to a destination of the same size. Where chroma is resampled
/// they interpolate linearly, exactly as the general way does below high quality, so there are none for high
/// quality then; nor between matrices. Primaries and transfer functions are not looked at: they stay.
bool HasDirectConversion(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         kiomediatypes::RenderQuality inQuality);
/// Converts rows inFirstRow up to inEndRow. Writes the used bytes of each row only, and reads no others. Rows
/// must be aligned to their components, v210 and 8-bit pixels to 4 bytes; more helps large frames of floats.
/// The pictures must not overlap.
void ConvertRowsDirectly(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         std::uint32_t inFirstRow, std::uint32_t inEndRow);

} // namespace VF
