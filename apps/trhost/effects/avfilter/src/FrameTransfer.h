#pragma once

#include "Carriers.h"

#include <MF/VideoFrame.h>

namespace trhost::effects::avfilter {

/// Pictures from us to libavfilter and back. Copied both ways: filters write into what they are given, and
/// lay out rows as they like.
///
/// Where the carrier has no alpha, each picture takes its alpha along as a private note that filters pass on
/// with its other properties. The result of the same size gets the alpha of the picture that it was made
/// from; one of another size, or of a filter that makes pictures anew, is opaque. So alpha stays with what a
/// filter does to colours; where a filter moves pixels without changing the size, it does not move along.

/// @param inFrame  of a size that the carrier holds, with memory.
/// @param inTime   in units of the graph's time base.
/// @throws std::bad_alloc.
FramePtr ToAVFrame(const MF::IVideoFrameRef& inFrame, const Carrier& inCarrier, std::int64_t inTime);

/// @param inPicture  in the carrier's format.
/// @param inLike     whose colour space and pixel shape hold where the picture does not say; may be empty,
///     for the default ones.
/// @return empty when no frame of that size can be had.
MF::IVideoFrameRef FromAVFrame(const AVFrame& inPicture, const Carrier& inCarrier,
                               kiomediatypes::PixelFormat inFormat, const MF::IVideoFrameRef& inLike);

/// Weakens the alpha of a picture with 8 bits a channel.
/// @param inPart  0 to 1.
void ScaleAlpha(AVFrame& ioPicture, double inPart);

} // namespace trhost::effects::avfilter
