#pragma once

#include "Picture.h"

namespace VF {

// What ConvertRowsDirectly chooses from. Each looks at the pictures' formats and does the rows with the best
// instructions of this processor; results do not depend on which those are.

/// Between packed RGB formats.
void ConvertRGBToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow);
/// From packed RGB to UYVY and v210.
void ConvertRGBToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow);
/// From UYVY, v210 and planar 4:2:0 to packed RGB.
void ConvertYUVToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow);
/// Between UYVY and v210, and each to itself in another range.
void ConvertYUVToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow);

} // namespace VF
