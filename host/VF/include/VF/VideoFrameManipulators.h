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
    /// colour space. Pixel aspect ratios are not looked at. Beyond its edges a picture goes on as in a
    /// mirror.
    ///
    /// Chroma is sited as the formats say; where the size stays, chroma that must be resampled is
    /// interpolated linearly below high quality.
    ///
    /// Where the size changes, colour counts by its alpha, so nothing that was invisible shows up, and what
    /// is invisible in the result has any colour. Where the size stays, colours are left as they are. Formats
    /// without alpha take the colour and drop the alpha; from one without, the result is opaque.
    ///
    /// Integers are rounded to nearest, without dither, and clamped to their range; areas of one colour come
    /// out exact. The bytes do not depend on how many threads took part.
    ///
    /// Only the used bytes of rows are read and written (see LayoutOf), so frames of any class will do.
    /// Pixels that fill up a last group repeat the last of the row.
    /// @param inQuality  which filter scales, see RenderQuality; kRenderQuality_Any scales as medium.
    /// @return true also when both are one frame. False when either is empty, has no memory, or rows that are
    ///     too few or too short; when inDestination is shared; or when memory could not be had. inDestination
    ///     then holds anything, and trace channel "Frames" tells why.
    static bool CopyFrame(const MF::IVideoFrameRef& inSource, const MF::IVideoFrameRef& inDestination,
                          kiomediatypes::RenderQuality inQuality, const ColorManagementSettings& inSettings);
};

} // namespace VF
