#pragma once

#include "Picture.h"

#include <VF/VideoFrameManipulators.h>

#include <string>

namespace VF {

/// The general way from any picture to any other: rows are taken apart into planes, scaled and converted by
/// a filter graph, and put together again. In bands, on several threads.
/// @param outError  why it failed.
bool ScalePicture(const SourcePicture& inSource, const DestinationPicture& inDestination,
                  kiomediatypes::RenderQuality inQuality, const ColorManagementSettings& inSettings,
                  std::string& outError);

/// How many rows a band has that is worth a thread, given the bytes or samples that a row costs.
std::uint32_t BandRows(std::uint32_t inRows, std::uint64_t inPixelsPerRow, std::uint32_t inUnit,
                       unsigned inMostBands);

} // namespace VF
