#pragma once

#include "../support/PictureQuantities.h"

#include <media/MediaModule.h>

#include <string>

namespace trhost {

/// When a picture of a stream is on show, as --at names it.
/// @throws Failure (kExit_Negative) for a frame of a stream whose rate is not known.
kiomediatypes::TickTime TimeIn(const media::StreamInfo& inStream, const MediaTime& inAt,
                               const std::string& inMedia);

} // namespace trhost
