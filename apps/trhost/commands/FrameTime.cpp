#include "FrameTime.h"

#include "../support/Failure.h"

#include <kiocore/filesupport/NativePath.h>

namespace trhost {

kiomediatypes::TickTime TimeIn(const media::StreamInfo& inStream, const MediaTime& inAt,
                               const std::string& inMedia)
{
    if (!inAt.frame) {
        return inAt.time;
    }
    if (inStream.framesPerSecond <= 0) {
        throw Failure(
            kExit_Negative,
            Text("$$$/Halcyon/TrHost/NoFrameRate=--at @0f: the frame rate of @1 is not known; give a "
                 "time, such as 1.5s",
                 {kiocore::utility::ToUTF16(std::to_string(*inAt.frame)),
                  kiocore::filesupport::FromNative(inMedia)}));
    }
    // Its middle: at its start a container's coarse clock may still show the one before.
    return kiomediatypes::TickTime::FromSeconds((double(*inAt.frame) + 0.5) / inStream.framesPerSecond);
}

} // namespace trhost
