#pragma once

#include "FFmpegSupport.h"
#include "MediaSource.h"

#include <kiomediatypes/TickTime.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace trhost::media {

/// A decoded picture and when it goes on show, from the start of the file.
struct Picture {
    FramePtr frame;
    kiomediatypes::TickTime start;
    bool isFirst = false; ///< of the stream
};

/// The pictures of one stream in the order in which they are shown. Damaged packets are passed over; what can
/// be decoded of them is shown.
///
/// Threading: one thread at a time. After an exception only Restart brings it to a known place.
class VideoDecoder {
public:
    /// Stands at the start of the file.
    /// @throws as IMediaModule::OpenVideo.
    VideoDecoder(const std::string& inNativePath, int inStreamIndex, const ICancel& inCancel);
    ~VideoDecoder();

    const std::string& Path() const { return mPath; }
    const StreamInfo& Stream() const { return mInfo; }
    const AVStream& GetStream() const { return *mSource->Format().streams[mInfo.index]; }
    /// The pixels' shape as container and codec give it; 0/1 unknown.
    AVRational PixelShape(AVFrame& inFrame) const;

    /// How far a picture's time may lie beyond the one it was made for, because the container's clock ticks
    /// more coarsely than the pictures change: half a tick, 0 where the clock is exact.
    kiomediatypes::TickTime ClockTolerance() const { return mTolerance; }

    /// @return false at the end of the stream.
    /// @throws kio_exception (kError_Cancelled), file_exception.
    bool ReadPicture(Picture& outPicture, const ICancel& inCancel);

    /// Whether going to a time by a key frame saves decoding what lies before it.
    /// @param inPosition  of the picture that was read last.
    bool IsSeekWorthwhile(kiomediatypes::TickTime inPosition, kiomediatypes::TickTime inTime) const;
    /// Continues at a key frame. The first pictures may still lie behind the time, where the container's
    /// index counts in another order than the pictures are shown.
    /// @return false when the container cannot: Restart then.
    bool SeekTo(kiomediatypes::TickTime inTime, const ICancel& inCancel);
    /// Opens the file anew and continues at its first picture.
    /// @throws as the constructor.
    void Restart(const ICancel& inCancel);
    bool StartsAtFirst() const { return mFromStart; }

private:
    void Open(int inStreamIndex, const ICancel& inCancel);
    void OpenDecoder();
    int ChooseStream(int inStreamIndex) const;
    void FindStartAndTolerance();
    bool Feed(const ICancel& inCancel);
    void NoteDamage();
    std::optional<kiomediatypes::TickTime> StartOf(const AVFrame& inFrame);
    kiomediatypes::TickTime FromTimestamp(std::int64_t inTimestamp) const;
    std::int64_t ToTimestamp(kiomediatypes::TickTime inTime) const;

    const std::string mPath;
    StreamInfo mInfo;
    std::unique_ptr<MediaSource> mSource;
    DecoderPtr mDecoder;
    PacketPtr mPacket;

    kiomediatypes::TickTime mFileStart = kiomediatypes::TickTime::Zero();
    kiomediatypes::TickTime mTolerance = kiomediatypes::TickTime::Zero();
    AVRational mRate{};           // of pictures; 0/1 unknown
    bool mCountsPictures = false; // the container has no times: a bare stream

    bool mFromStart = true;     // since the last jump: everything has been read
    std::int64_t mPictures = 0; // since the last jump
    bool mSawKey = false;       // since the last jump
    std::int64_t mFirstKey = 0; // its time stamp, or AV_NOPTS_VALUE
    std::int64_t mLastSent = 0; // decoding time stamp of the last packet, or AV_NOPTS_VALUE
    bool mDraining = false;
    int mFailures = 0; // in a row
    std::optional<kiomediatypes::TickTime> mLastStart;
    kiomediatypes::TickTime mLastDuration = kiomediatypes::TickTime::Zero();
    std::int64_t mDamage = 0;
};

} // namespace trhost::media
