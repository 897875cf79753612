#include "VideoDecoder.h"

#include "../../support/KeptText.h"
#include "MediaFile.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>

namespace trhost::media {
namespace {

using kiomediatypes::Rate;
using kiomediatypes::Rounding;
using kiomediatypes::TickTime;

// What no camera and no cinema has; a picture of this size takes 2 GiB as 16-bit BGRA.
constexpr std::int64_t kMostPixels = std::int64_t(1) << 28;
// A decoder that goes on failing while it is emptied has nothing more to give.
constexpr int kMostFailures = 100;
// Emptying a decoder and finding a key frame costs about as much as some pictures.
constexpr double kLeastSecondsSaved = 0.5;
// How far apart key frames may lie in a container that has no index to tell.
constexpr double kUsualKeyFrameSeconds = 10;
constexpr AVRational kMicroseconds = {1, AV_TIME_BASE};

bool IsKnown(AVRational inNumber)
{
    return inNumber.num > 0 && inNumber.den > 0;
}

} // namespace

VideoDecoder::VideoDecoder(const std::string& inNativePath, int inStreamIndex, const ICancel& inCancel)
    : mPath(inNativePath), mPacket(Allocated(av_packet_alloc()))
{
    Open(inStreamIndex, inCancel);
}

VideoDecoder::~VideoDecoder() = default;

void VideoDecoder::Open(int inStreamIndex, const ICancel& inCancel)
{
    mDecoder.reset();
    mSource = std::make_unique<MediaSource>(mPath, inCancel);
    const int index = ChooseStream(inStreamIndex);
    AVFormatContext& format = mSource->Format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        format.streams[i]->discard = int(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    mInfo = DescribeStream(*format.streams[index], *mSource);
    FindStartAndTolerance();
    OpenDecoder();
    mFromStart = true;
    mPictures = 0;
    mSawKey = true;
    mFirstKey = AV_NOPTS_VALUE;
    mLastSent = AV_NOPTS_VALUE;
    mDraining = false;
    mFailures = 0;
    mLastStart.reset();
}

int VideoDecoder::ChooseStream(int inStreamIndex) const
{
    const AVFormatContext& format = mSource->Format();
    for (int i = 0; i < int(format.nb_streams); ++i) {
        const AVStream& stream = *format.streams[i];
        const bool isVideo = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                             !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
        if (isVideo && (inStreamIndex < 0 || inStreamIndex == i)) {
            return i;
        }
    }
    throw kiocore::kio_exception(
        inStreamIndex < 0
            ? KeptText("$$$/Halcyon/TrHost/Media/NoVideo=@0: no video stream in it (\"@1\"); expected at "
                       "least one#{@0: a file, @1: its format}",
                       {ShownPath(mPath), format.iformat->name})
            : KeptText("$$$/Halcyon/TrHost/Media/NoVideoStream=@0: stream @1 is no video stream of its @2 "
                       "streams#{@0: a file}",
                       {ShownPath(mPath), std::to_string(inStreamIndex), std::to_string(format.nb_streams)}),
        kMediaError_NotMedia);
}

void VideoDecoder::FindStartAndTolerance()
{
    const AVFormatContext& format = mSource->Format();
    const AVStream& own = GetStream();
    mCountsPictures = format.iformat->flags & AVFMT_NOTIMESTAMPS;
    mRate = own.avg_frame_rate;
    if (!IsKnown(mRate)) {
        mRate = own.r_frame_rate;
    }
    // The file's start is kept in microseconds, rounded. Pictures that start at whole frames would come to
    // lie next to them; so the time stamp that it was made from is looked for, first in the stream itself.
    const std::int64_t start = mSource->StartMicroseconds();
    mFileStart = TickTime::FromTimeBase(start, 1, AV_TIME_BASE);
    const auto isStart = [start](const AVStream& inStream) {
        return inStream.start_time != AV_NOPTS_VALUE &&
               av_rescale_q(inStream.start_time, inStream.time_base, kMicroseconds) == start;
    };
    for (unsigned i = 0; start != 0 && i < format.nb_streams; ++i) {
        const AVStream& stream = isStart(own) ? own : *format.streams[i];
        if (isStart(stream)) {
            mFileStart =
                TickTime::FromTimeBase(stream.start_time, stream.time_base.num, stream.time_base.den);
            break;
        }
    }
    // Where a picture lasts a whole number of the clock's ticks, times are exact.
    const bool isExact =
        IsKnown(mRate) &&
        std::int64_t(mRate.den) * own.time_base.den % (std::int64_t(mRate.num) * own.time_base.num) == 0;
    const TickTime tick = TickTime::FromTimeBase(1, own.time_base.num, own.time_base.den);
    const TickTime picture =
        IsKnown(mRate) ? TickTime::FromTimeBase(1, mRate.den, mRate.num) : TickTime::FromSeconds(0.002);
    mTolerance = isExact || mCountsPictures
                     ? TickTime::Zero()
                     : TickTime::FromTicks(std::min(tick.Ticks() / 2, picture.Ticks() / 4));
}

void VideoDecoder::OpenDecoder()
{
    const AVStream& stream = GetStream();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Media/StreamHasNoDecoder=@0: stream @1: "
                                              "codec \"@2\" has no decoder#{@0: a file}",
                                              {ShownPath(mPath), std::to_string(stream.index),
                                               avcodec_get_name(stream.codecpar->codec_id)}),
                                     kMediaError_NotMedia);
    }
    mDecoder.reset(Allocated(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(mDecoder.get(), stream.codecpar);
    mDecoder->pkt_timebase = stream.time_base;
    mDecoder->thread_count = 0; // as many as there are processors
    mDecoder->max_pixels = kMostPixels;
    // Pictures are copied row by row, so they may be cut out of the decoder's at any pixel.
    mDecoder->flags |= AV_CODEC_FLAG_UNALIGNED;
    if (result >= 0) {
        result = avcodec_open2(mDecoder.get(), codec, nullptr);
    }
    if (result == AVERROR(ENOMEM)) {
        throw std::bad_alloc();
    }
    if (result < 0) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/DecoderRefusesStream=@0: the decoder for \"@1\" refuses "
                     "stream @2 (@3)#{@0: a file, @3: the reason}",
                     {ShownPath(mPath), codec->name, std::to_string(stream.index), ErrorText(result)}),
            kMediaError_NotMedia);
    }
}

AVRational VideoDecoder::PixelShape(AVFrame& inFrame) const
{
    return av_guess_sample_aspect_ratio(&mSource->Format(), mSource->Format().streams[mInfo.index], &inFrame);
}

TickTime VideoDecoder::FromTimestamp(std::int64_t inTimestamp) const
{
    const AVRational base = GetStream().time_base;
    return TickTime::FromTimeBase(inTimestamp, base.num, base.den) - mFileStart;
}

std::int64_t VideoDecoder::ToTimestamp(TickTime inTime) const
{
    const AVRational base = GetStream().time_base;
    return (inTime + mFileStart)
        .ToCount(Rate{std::uint32_t(base.den), std::uint32_t(base.num)}, Rounding::kDown);
}

bool VideoDecoder::ReadPicture(Picture& outPicture, const ICancel& inCancel)
{
    FramePtr frame(Allocated(av_frame_alloc()));
    for (;;) {
        const int received = avcodec_receive_frame(mDecoder.get(), frame.get());
        if (received == AVERROR(ENOMEM)) {
            throw std::bad_alloc();
        }
        if (received == AVERROR_EOF) {
            return false;
        }
        if (received < 0) {
            if (received != AVERROR(EAGAIN)) {
                NoteDamage();
            }
            // After a second failure in a row the decoder wants other bytes than those that it has.
            if (received == AVERROR(EAGAIN) || ++mFailures > 1) {
                if (!Feed(inCancel) && mFailures > kMostFailures) {
                    return false;
                }
            }
            continue;
        }
        mFailures = 0;
        if (inCancel.IsCancelled()) {
            mSource->ThrowCancelled();
        }
        // Pictures shown before the key frame refer to others that were not read. Most decoders drop them,
        // but not all know that there was a jump.
        const std::int64_t timestamp = frame->best_effort_timestamp;
        const bool leads = !mFromStart && mFirstKey != AV_NOPTS_VALUE && timestamp != AV_NOPTS_VALUE &&
                           timestamp < mFirstKey;
        const std::optional<TickTime> start = leads ? std::nullopt : StartOf(*frame);
        if (start) {
            outPicture.start = *start;
            outPicture.isFirst = mFromStart && mPictures == 1;
            outPicture.frame = std::move(frame);
            return true;
        }
        av_frame_unref(frame.get());
    }
}

/// @return false when there was nothing more to feed.
bool VideoDecoder::Feed(const ICancel& inCancel)
{
    if (mDraining) {
        ++mFailures;
        return false;
    }
    while (mSource->ReadPacket(*mPacket, inCancel, mDamage)) {
        if (inCancel.IsCancelled()) {
            av_packet_unref(mPacket.get());
            mSource->ThrowCancelled();
        }
        const bool isKey = mPacket->flags & AV_PKT_FLAG_KEY;
        if (mPacket->stream_index != mInfo.index || (!mSawKey && !isKey)) {
            av_packet_unref(mPacket.get());
            continue;
        }
        if (!mSawKey) {
            mSawKey = true;
            mFirstKey = mPacket->pts != AV_NOPTS_VALUE ? mPacket->pts : mPacket->dts;
        }
        mLastSent = mPacket->dts != AV_NOPTS_VALUE ? mPacket->dts : mPacket->pts;
        const int sent = avcodec_send_packet(mDecoder.get(), mPacket.get());
        av_packet_unref(mPacket.get());
        if (sent == AVERROR(ENOMEM)) {
            throw std::bad_alloc();
        }
        if (sent < 0 && sent != AVERROR(EAGAIN)) {
            NoteDamage();
        }
        return true;
    }
    mDraining = true;
    avcodec_send_packet(mDecoder.get(), nullptr);
    return true;
}

void VideoDecoder::NoteDamage()
{
    ++mDamage;
    if (kiocore::debug::TraceEnabled("Media", 3)) {
        kiocore::debug::Trace(3, "Media",
                              ShownPath(mPath) + ": stream " + std::to_string(mInfo.index) + ": " +
                                  std::to_string(mDamage) + " damaged packets so far" +
                                  (mLastStart ? ", the last after " + mLastStart->AsUTF8() : ""));
    }
}

std::optional<TickTime> VideoDecoder::StartOf(const AVFrame& inFrame)
{
    const std::int64_t number = mPictures++;
    const AVRational rate = IsKnown(mRate) ? mRate : AVRational{25, 1};
    const Rate pictures{std::uint32_t(rate.num), std::uint32_t(rate.den)};
    std::optional<TickTime> start;
    if (mCountsPictures) {
        start = TickTime::FromCount(number, pictures);
    } else if (inFrame.best_effort_timestamp != AV_NOPTS_VALUE) {
        start = FromTimestamp(inFrame.best_effort_timestamp);
    } else if (mLastStart) {
        start = *mLastStart + mLastDuration;
    } else if (mFromStart) {
        start = TickTime::Zero();
    } else {
        return std::nullopt; // after a jump nobody can tell
    }
    const AVRational base = GetStream().time_base;
    mLastDuration = inFrame.pkt_duration > 0
                        ? TickTime::FromTimeBase(inFrame.pkt_duration, base.num, base.den)
                        : TickTime::FromCount(1, pictures);
    mLastStart = start;
    return start;
}

bool VideoDecoder::IsSeekWorthwhile(TickTime inPosition, TickTime inTime) const
{
    if (mCountsPictures) {
        return false; // what cannot be found by time must be counted
    }
    AVStream* const stream = mSource->Format().streams[mInfo.index];
    const std::int64_t wanted = ToTimestamp(inTime);
    const int at = av_index_search_timestamp(stream, wanted, AVSEEK_FLAG_BACKWARD);
    const AVIndexEntry* const key = at >= 0 ? avformat_index_get_entry(stream, at) : nullptr;
    const double secondsAhead = inTime.Seconds() - inPosition.Seconds();
    if (!key || FromTimestamp(key->timestamp).Seconds() + kUsualKeyFrameSeconds < inTime.Seconds()) {
        return secondsAhead > kUsualKeyFrameSeconds;
    }
    const TickTime sent = mLastSent != AV_NOPTS_VALUE ? FromTimestamp(mLastSent) : inPosition;
    return FromTimestamp(key->timestamp).Seconds() - sent.Seconds() > kLeastSecondsSaved;
}

bool VideoDecoder::SeekTo(TickTime inTime, const ICancel& inCancel)
{
    if (mCountsPictures) {
        return false;
    }
    const AVStream& stream = GetStream();
    std::int64_t timestamp = ToTimestamp(inTime);
    // Beyond the end a container may find nothing at all.
    if (stream.duration > 0) {
        const std::int64_t first = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
        timestamp = std::min(timestamp, first + stream.duration);
    } else if (mSource->Format().duration > 0) {
        timestamp =
            std::min(timestamp, av_rescale_q(mSource->Format().duration, kMicroseconds, stream.time_base) +
                                    ToTimestamp(TickTime::Zero()));
    }
    if (!mSource->Seek(mInfo.index, timestamp, inCancel)) {
        return false;
    }
    avcodec_flush_buffers(mDecoder.get());
    mFromStart = false;
    mPictures = 0;
    mSawKey = false;
    mFirstKey = AV_NOPTS_VALUE;
    mLastSent = AV_NOPTS_VALUE;
    mDraining = false;
    mFailures = 0;
    mLastStart.reset();
    return true;
}

void VideoDecoder::Restart(const ICancel& inCancel)
{
    Open(mInfo.index, inCancel);
}

} // namespace trhost::media
