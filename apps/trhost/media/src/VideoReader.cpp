#include "VideoReader.h"

#include "../../support/KeptText.h"
#include "PictureConverter.h"
#include "VideoDecoder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <optional>

namespace trhost::media {
namespace {

using kiomediatypes::TickTime;

/// How far before the wanted time the first, second ... try to find a picture goes.
constexpr double kStepsBack[] = {0, 1, 5, 20, 80};

class VideoReader final : public IVideoReader {
public:
    VideoReader(const std::string& inNativePath, int inStreamIndex, const ICancel& inCancel)
        : mDecoder(inNativePath, inStreamIndex, inCancel),
          mConverter(ShownPath(inNativePath) + ": stream " + std::to_string(mDecoder.Stream().index),
                     mDecoder.GetStream())
    {}

    const StreamInfo& Stream() const override { return mDecoder.Stream(); }
    MF::IVideoFrameRef FrameAt(TickTime inTime, const ICancel& inCancel) override;

private:
    const Picture* Holds(TickTime inTime) const;
    const Picture& Find(TickTime inTime, const ICancel& inCancel);
    bool CanGoForward(TickTime inTime) const;
    void GoForward(TickTime inTime, const ICancel& inCancel);
    void Jump(TickTime inTime, const ICancel& inCancel);
    void Forget();

    VideoDecoder mDecoder;
    PictureConverter mConverter;
    // Two pictures that follow each other. The second alone is there after a jump.
    std::optional<Picture> mShown;
    std::optional<Picture> mNext;
    bool mEnded = false;
    bool mLost = false; // something was thrown: where the decoder stands is unknown
};

void VideoReader::Forget()
{
    mShown.reset();
    mNext.reset();
    mEnded = false;
}

/// The picture on show if it is one of ours; null when it must be looked for.
const Picture* VideoReader::Holds(TickTime inTime) const
{
    if (mShown && (mShown->start <= inTime || mShown->isFirst)) {
        return mNext ? inTime < mNext->start ? &*mShown : nullptr : mEnded ? &*mShown : nullptr;
    }
    // Before the first picture there is no other.
    return !mShown && mNext && mNext->isFirst && inTime < mNext->start ? &*mNext : nullptr;
}

bool VideoReader::CanGoForward(TickTime inTime) const
{
    if (mLost) {
        return false;
    }
    if (mShown || mNext) {
        const TickTime first = mShown ? mShown->start : mNext->start;
        const TickTime last = mNext ? mNext->start : mShown->start;
        return first <= inTime && (mEnded || !mDecoder.IsSeekWorthwhile(last, inTime));
    }
    return mDecoder.StartsAtFirst() && !mDecoder.IsSeekWorthwhile(TickTime::Zero(), inTime);
}

/// Reads on until the picture after the one on show has come.
void VideoReader::GoForward(TickTime inTime, const ICancel& inCancel)
{
    while (!mEnded && (!mNext || mNext->start <= inTime)) {
        if (mNext) {
            mShown = std::move(mNext);
            mNext.reset();
        }
        Picture picture;
        if (!mDecoder.ReadPicture(picture, inCancel)) {
            mEnded = true;
        } else if (mShown && picture.start < mShown->start) {
            kiocore::debug::Trace(3, "Media",
                                  ShownPath(mDecoder.Path()) + ": a picture at " + picture.start.AsUTF8() +
                                      " comes after the one at " + mShown->start.AsUTF8() +
                                      "; it is passed over");
        } else {
            mNext = std::move(picture);
        }
    }
}

void VideoReader::Jump(TickTime inTime, const ICancel& inCancel)
{
    for (const double back : kStepsBack) {
        Forget();
        const TickTime from = inTime - TickTime::FromSeconds(back);
        if (mLost || from < TickTime::Zero() || !mDecoder.SeekTo(from, inCancel)) {
            break;
        }
        Picture picture;
        if (mDecoder.ReadPicture(picture, inCancel) && picture.start <= inTime) {
            mNext = std::move(picture);
            GoForward(inTime, inCancel);
            return;
        }
    }
    mDecoder.Restart(inCancel);
    mLost = false;
    GoForward(inTime, inCancel);
}

const Picture& VideoReader::Find(TickTime inTime, const ICancel& inCancel)
{
    if (!Holds(inTime)) {
        if (CanGoForward(inTime)) {
            GoForward(inTime, inCancel);
        } else {
            Jump(inTime, inCancel);
        }
    }
    const Picture* const found = Holds(inTime);
    if (!found) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Media/NoPictureDecoded=@0: stream @1: no "
                                              "picture in it that could be decoded#{@0: a file}",
                                              {ShownPath(mDecoder.Path()), std::to_string(Stream().index)}),
                                     kMediaError_NothingDecoded);
    }
    return *found;
}

MF::IVideoFrameRef VideoReader::FrameAt(TickTime inTime, const ICancel& inCancel)
{
    if (inCancel.IsCancelled()) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Media/Cancelled=@0: cancelled#{@0: a file}",
                                              {ShownPath(mDecoder.Path())}),
                                     kiocore::kError_Cancelled);
    }
    const Picture* picture = nullptr;
    try {
        picture = &Find(inTime + mDecoder.ClockTolerance(), inCancel);
    } catch (...) {
        Forget();
        mLost = true;
        throw;
    }
    return mConverter.Convert(*picture->frame, mDecoder.PixelShape(*picture->frame));
}

} // namespace

std::unique_ptr<IVideoReader> OpenVideoReader(const std::string& inNativePath, int inStreamIndex,
                                              const ICancel& inCancel)
{
    return std::make_unique<VideoReader>(inNativePath, inStreamIndex, inCancel);
}

} // namespace trhost::media
