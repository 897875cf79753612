#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiomediatypes/RenderQuality.h>

namespace VF {

/// What happens to colours on the way.
struct ColorManagementSettings {
    /// Convert between the frames' primaries and transfer functions too. By default only matrix and range
    /// are: what a picture looks like then depends on the display, not on this step.
    bool convertPrimariesAndTransfer = false;
};

/// Operations from frame to frame.
///
/// Threading: any thread. Large pictures are worked on by several threads of the CPU-bound executor; the
/// caller works too and waits only for what others have begun, so a call from within that executor is fine.
class KIO_EXPORT VideoFrameManipulators {
public:
    /// Fills inDestination with the picture of inSource, scaled to its size and converted to its format and
    /// colour space. Pixel aspect ratios are not looked at. Chroma is sited as the formats say; where the
    /// size stays, chroma that must be resampled is interpolated linearly below high quality. Colour under
    /// straight alpha counts by its alpha when it is mixed with its neighbours, so nothing that was
    /// invisible shows up; formats without alpha take the colour and drop the alpha. Where an integer format
    /// receives values beyond its range they are clamped. Accuracy: integers are rounded to nearest, without
    /// dither; areas of one colour come out exact.
    /// @param inQuality  which filter scales, see RenderQuality; kRenderQuality_Any scales as medium.
    /// @return false when either is empty or has no memory, inDestination is shared, or memory could not be
    ///     had; inDestination then holds anything. Trace channel "Frames" tells why.
    static bool CopyFrame(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination,
                          kiomediatypes::RenderQuality inQuality, const ColorManagementSettings& inSettings);
};

} // namespace VF
