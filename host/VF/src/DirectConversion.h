#pragma once

#include "Picture.h"

#include <kiomediatypes/RenderQuality.h>

namespace VF {

/// Conversions between formats of the same size that have rows of their own: one pass over the bytes, which
/// is several times faster than through planes.
///
/// Threading: any thread; rows are independent of each other, so bands may be done at once.

/// Whether there are such rows from a source to a destination of the same size. Where chroma is resampled
/// they interpolate linearly, exactly as the general way does below high quality.
bool HasDirectConversion(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         kiomediatypes::RenderQuality inQuality);
/// Converts rows inFirstRow up to inEndRow. Writes the used bytes of each row only, and reads no others.
void ConvertRowsDirectly(const SourcePicture& inSource, const DestinationPicture& inDestination,
                         std::uint32_t inFirstRow, std::uint32_t inEndRow);

} // namespace VF
