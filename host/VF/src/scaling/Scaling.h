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

} // namespace VF
