#pragma once

#include "Failure.h"
#include "JsonLine.h"
#include "PictureQuantities.h"

#include <MF/VideoFrame.h>

#include <optional>
#include <string>

namespace trhost {

/// What was asked of a picture that is written to a file.
struct FrameForm {
    std::string output;       ///< in the system's bytes
    bool isAlwaysRaw = false; ///< a raw frame, whatever the name ends in
    std::optional<PictureSize> size;
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    std::optional<kiomediatypes::PixelAspectRatio> pixelAspectRatio;
    kiomediatypes::RenderQuality quality = kiomediatypes::kRenderQuality_High;
};

/// The file that a picture is written to: a PNG, or a raw frame (docs/frame-files.md).
///
/// Threading: one thread at a time.
class FrameOutput {
public:
    /// Looks at what was asked before anything costs time.
    /// @throws Failure (kExit_Usage) for a name or a format that no such file has, and for a folder.
    explicit FrameOutput(const FrameForm& inForm);

    /// The format that was asked for; else what suits the file: bgra8 for PNG, inNative for a raw frame (uyvy
    /// where that has planes).
    kiomediatypes::PixelFormat FormatFor(kiomediatypes::PixelFormat inNative) const;

    /// Gives a picture a form: scaled and converted, or as it is when it has that form.
    /// @throws Failure (kExit_Failed).
    MF::IVideoFrameRef Shaped(const MF::IVideoFrameRef& inFrame, PictureSize inSize,
                              kiomediatypes::PixelFormat inFormat,
                              kiomediatypes::PixelAspectRatio inPixelAspectRatio) const;

    /// Writes the file in one step; one that lies there is replaced.
    /// @throws Failure (kExit_Failed); nothing has changed on disk then.
    void Write(const MF::IVideoFrameRef& inFrame) const;

    const UTF16String& Path() const { return mPath; }

private:
    const FrameForm mForm;
    bool mIsRaw = false;
    UTF16String mPath; // absolute
};

/// "1920 x 1080, bgra8".
UTF16String DescribeFrame(const MF::IVideoFrameRef& inFrame);
/// Adds what a frame is: "width", "height", "format", "pixelAspectRatio", and what its numbers mean as ITU-T
/// H.273 has them: "primaries", "transfer", of YUV "matrix" and "range".
void AddFrame(JsonLine& ioObject, const MF::IVideoFrameRef& inFrame);

} // namespace trhost
