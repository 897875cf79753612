#pragma once

#include <MF/VideoFrame.h>
#include <kiomediatypes/PixelFormat.h>
#include <kiomediatypes/TickTime.h>
#include <media/MediaModule.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace trhost {

/// Pictures that effects are run on: one PNG, again and again, or those of a clip, one after the other.
///
/// Threading: one thread at a time.
class PictureSource {
public:
    /// @param inPath  native.
    /// @throws Failure (kExit_Negative) for a file that is neither, what the media module throws.
    explicit PictureSource(const std::string& inPath);

    double FramesPerSecond() const { return mFramesPerSecond; }
    /// The picture of a number from 0 on; the last one of a clip from its end on. Never empty.
    MF::IVideoFrameRef Picture(int inNumber);

private:
    MF::IVideoFrameRef mStill; // empty for a clip
    std::unique_ptr<media::IVideoReader> mClip;
    double mFramesPerSecond = 25;
};

/// The picture in another form; itself when it has that form already.
/// @throws Failure (kExit_Failed).
MF::IVideoFrameRef ConvertPicture(const MF::IVideoFrameRef& inPicture, kiomediatypes::PixelFormat inFormat,
                                  std::uint32_t inWidth, std::uint32_t inHeight);

/// Of the formats that an effect takes, the one that keeps most of a picture; Any when it says none.
kiomediatypes::PixelFormat BestFormatFor(const MF::IVideoFrameRef& inPicture,
                                         const std::vector<kiomediatypes::PixelFormat>& inFormats);

/// "out-007.png" of "out-%03d.png" and 7; the name itself when it has no place for a number.
std::string NumberedName(const std::string& inPattern, int inNumber);
bool HasNumber(const std::string& inPattern);

} // namespace trhost
