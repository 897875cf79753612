#pragma once

#include "ColorTags.h"
#include "Orientation.h"

#include <MF/VideoFrame.h>
#include <VF/VideoFrames.h>

#include <string>

namespace trhost::media {

/// Makes our frames of decoded pictures, upright and with chroma where our formats have it.
///
/// Threading: one thread at a time.
class PictureConverter {
public:
    /// @param inName  of what is decoded, for messages.
    PictureConverter(std::string inName, const AVStream& inStream);

    /// @param inPixelShape  of the stored picture; 0/1 unknown.
    /// @throws kio_exception (kMediaError_NothingDecoded) for a picture that no frame can hold.
    MF::IVideoFrameRef Convert(const AVFrame& inPicture, AVRational inPixelShape);

private:
    /// A frame with memory, and where its planes lie.
    struct Target {
        MF::IVideoFrameRef frame;
        Plane planes[VF::FrameLayout::kMostPlanes];
    };

    kiomediatypes::PixelFormat FormatFor(const AVFrame& inPicture) const;
    Target Create(const AVFrame& inPicture, AVRational inPixelShape, kiomediatypes::PixelFormat inFormat,
                  bool inIsUpright) const;
    void CopyPlanar420(const AVFrame& inPicture, const Target& inTarget) const;
    void CopyChroma420(const AVFrame& inPicture, const ConstPlane& inChroma, Plane outSamples) const;
    void Copy422(const AVFrame& inPicture, Plane outPixels) const;
    void NoteForm(const AVFrame& inPicture);

    const std::string mName;
    Orientation mOrientation;
    // What something was said about last.
    struct Form {
        int format = -1;
        int width = 0;
        int height = 0;
        int matrix = -1;
        int range = -1;
        int chroma = -1;
        friend bool operator==(const Form&, const Form&) = default;
    } mForm;
    kiomediatypes::color::ColorSpace mColorSpace;
};

} // namespace trhost::media
