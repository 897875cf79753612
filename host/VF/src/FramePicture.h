#pragma once

#include "Picture.h"

#include <MF/VideoFrame.h>

#include <string>

namespace VF {

/// What a frame of any class holds, once it was made sure that all planes, rows and bytes are there.
/// @param outReason  what is wrong with the frame, to follow its name.
bool GetPicture(const MF::IVideoFrameRef& inFrame, SourcePicture& outPicture, std::string& outReason);
/// The same for writing; a shared frame is refused.
bool GetPicture(const MF::IVideoFrameRef& inFrame, DestinationPicture& outPicture, std::string& outReason);

} // namespace VF
