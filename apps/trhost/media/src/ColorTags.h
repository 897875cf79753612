#pragma once

#include "FFmpegSupport.h"

#include <kiomediatypes/ColorSpace.h>

#include <string>

namespace trhost::media {

/// What a decoded picture's numbers mean, as its file says. What the file leaves open follows what it does
/// say, else the custom of the time: BT.601 up to 576 rows, BT.709 above.
/// @param outNote  what had to be replaced by something near; untouched when nothing was.
kiomediatypes::color::ColorSpace ColorSpaceOf(const AVFrame& inFrame, std::string& outNote);

/// Where the samples of subsampled chroma lie, from the first luma sample of their group, in halves of the
/// way to the next luma sample: left is {0, 1}, the centre {1, 1}.
struct ChromaPosition {
    int x = 0;
    int y = 1;
};
/// What the file leaves open is at the left, as everything since MPEG-2 has it.
ChromaPosition ChromaPositionOf(const AVFrame& inFrame);

} // namespace trhost::media
