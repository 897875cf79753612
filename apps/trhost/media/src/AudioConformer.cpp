#include "AudioConformer.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace trhost::media {
namespace {

// A jump from one frame to the next of this length is a gap or an overlap: less than any lost packet of
// the usual codecs, more than timestamps waver.
constexpr std::int64_t kJumpMs = 15;
// Sound that has drifted this far from its timestamps is out of step with the lips.
constexpr std::int64_t kDriftMs = 40;
// More than this back is no overlap but a clock that was set anew.
constexpr std::int64_t kLongestOverlapMs = 1000;
// Silence reaches at most this far beyond the length that the file declares...
constexpr std::int64_t kBeyondDurationMs = 10'000;
// ...and a gap is at most this long when it declares none.
constexpr std::int64_t kLongestGapMs = 600'000;

constexpr std::int64_t kSilenceFrames = 8192;
constexpr int kMaxChannels = 64; // of the resampler

constexpr AVRational kMicroseconds = {1, AV_TIME_BASE};

std::int64_t Frames(std::int64_t inMs, int inRate)
{
    return inMs * inRate / 1000;
}

/// Any layout that has this many channels. With the same one on both sides the channels pass unmixed,
/// also when nobody knows which speaker each is for.
AVChannelLayout PlainLayout(int inChannels)
{
    AVChannelLayout layout{};
    av_channel_layout_from_mask(&layout,
                                inChannels >= 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << inChannels) - 1);
    return layout;
}

std::uint64_t SpeakerMask(const AVChannelLayout& inLayout)
{
    return inLayout.order == AV_CHANNEL_ORDER_NATIVE ? inLayout.u.mask : 0;
}

} // namespace

AudioConformer::AudioConformer(MediaSource& inSource, int inStreamIndex, OutputFile* inConformed,
                               OutputFile* inPeaks)
    : mSource(inSource), mStream(*inSource.Format().streams[inStreamIndex]), mConformed(inConformed),
      mPeaks(inPeaks), mFrame(Allocated(av_frame_alloc()))
{
    OpenDecoder();
}

void AudioConformer::OpenDecoder()
{
    const AVCodecID id = mStream.codecpar->codec_id;
    const AVCodec* codec = avcodec_find_decoder(id);
    if (!codec) {
        mFailure = std::string("codec \"") + avcodec_get_name(id) + "\" has no decoder";
        return;
    }
    mDecoder.reset(Allocated(avcodec_alloc_context3(codec)));
    mDecoder->pkt_timebase = mStream.time_base; // lets the decoder move timestamps when it trims samples
    // Where a decoder can work ahead on several frames (FLAC, ALAC, WavPack) it may use every processor.
    mDecoder->thread_count = codec->capabilities & AV_CODEC_CAP_FRAME_THREADS ? 0 : 1;
    int result = avcodec_parameters_to_context(mDecoder.get(), mStream.codecpar);
    if (result >= 0) {
        result = avcodec_open2(mDecoder.get(), codec, nullptr);
    }
    if (result < 0) {
        mFailure = std::string("the decoder for \"") + codec->name + "\" refuses the stream (" +
                   ErrorText(result) + ")";
        mDecoder.reset();
    }
}

void AudioConformer::Take(const AVPacket& inPacket, const ICancel& inCancel)
{
    if (!mDecoder) {
        return;
    }
    const int sent = avcodec_send_packet(mDecoder.get(), &inPacket);
    if (sent == AVERROR(ENOMEM)) {
        throw std::bad_alloc();
    }
    if (sent < 0 || inPacket.flags & AV_PKT_FLAG_CORRUPT) {
        ++mCounts.damagedPackets;
        mLossBefore = true;
    }
    TakeDecoded(inCancel);
}

void AudioConformer::TakeDecoded(const ICancel& inCancel)
{
    int failures = 0;
    for (;;) {
        const int received = avcodec_receive_frame(mDecoder.get(), mFrame.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) {
            return;
        }
        if (received == AVERROR(ENOMEM)) {
            throw std::bad_alloc();
        }
        if (received < 0) {
            ++mCounts.damagedPackets;
            mLossBefore = true;
            // The decoder has dropped what it could not use; a second error in a row would be the same one.
            if (++failures > 1) {
                return;
            }
            continue;
        }
        TakeFrame(*mFrame, inCancel);
        av_frame_unref(mFrame.get());
    }
}

void AudioConformer::TakeFrame(const AVFrame& inFrame, const ICancel& inCancel)
{
    if (inFrame.nb_samples <= 0 || inFrame.sample_rate <= 0 || inFrame.ch_layout.nb_channels <= 0) {
        return;
    }
    if (HasOtherFormat(inFrame)) {
        StartSegment(inFrame);
        if (!mFailure.empty()) {
            return;
        }
    }
    const std::int64_t skipped = PlaceFrame(inFrame, inCancel);
    mLossBefore = false;
    if (skipped >= inFrame.nb_samples) {
        return;
    }
    const auto format = static_cast<AVSampleFormat>(inFrame.format);
    const int channels = inFrame.ch_layout.nb_channels;
    const bool planar = av_sample_fmt_is_planar(format);
    const std::int64_t skippedBytes = skipped * av_get_bytes_per_sample(format) * (planar ? 1 : channels);
    std::array<const std::uint8_t*, kMaxChannels> planes{};
    for (int plane = 0; plane < (planar ? channels : 1); ++plane) {
        planes[std::size_t(plane)] = inFrame.extended_data[plane] + skippedBytes;
    }
    Convert(planes.data(), inFrame.nb_samples - skipped);
}

bool AudioConformer::HasOtherFormat(const AVFrame& inFrame) const
{
    return inFrame.format != mFormat || inFrame.sample_rate != mRate ||
           inFrame.ch_layout.nb_channels != mLayout.nb_channels ||
           SpeakerMask(inFrame.ch_layout) != SpeakerMask(mLayout);
}

void AudioConformer::StartSegment(const AVFrame& inFrame)
{
    const int channels = inFrame.ch_layout.nb_channels;
    if (channels > kMaxChannels) {
        mFailure = std::to_string(channels) + " channels; at most " + std::to_string(kMaxChannels) +
                   " can be conformed";
        return;
    }
    EndSegment();
    if (mPlaced && mRate != inFrame.sample_rate) {
        // Positions go on in the new rate.
        mShift = av_rescale(mShift, inFrame.sample_rate, mRate);
        mPosition = av_rescale(FrameCount(), inFrame.sample_rate, kConformedSampleRate);
        mExpected = AV_NOPTS_VALUE;
    }
    mSegmentStart = FrameCount();
    mSegmentFirst = mPosition;
    mFormat = static_cast<AVSampleFormat>(inFrame.format);
    mRate = inFrame.sample_rate;
    av_channel_layout_uninit(&mLayout);
    mLayout = {};
    if (inFrame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE) {
        mLayout = inFrame.ch_layout;
    } else {
        mLayout.order = AV_CHANNEL_ORDER_UNSPEC;
        mLayout.nb_channels = channels;
    }
    if (!mWriter) {
        mWriter = std::make_unique<ConformedAudioWriter>(mConformed, mPeaks, channels, mStream.index, mRate,
                                                         SpeakerMask(mLayout));
    }
    if (mFormat == AV_SAMPLE_FMT_FLT && mRate == kConformedSampleRate && channels == mWriter->Channels()) {
        return; // nothing to convert
    }
    AVChannelLayout from = PlainLayout(channels);
    AVChannelLayout to = PlainLayout(mWriter->Channels());
    if (channels != mWriter->Channels()) { // only in mid-stream: mixed to what the stream began with
        av_channel_layout_default(&from, channels);
        av_channel_layout_default(&to, mWriter->Channels());
    }
    SwrContext* resampler = nullptr;
    int result = swr_alloc_set_opts2(&resampler, &to, AV_SAMPLE_FMT_FLT, kConformedSampleRate, &from, mFormat,
                                     mRate, 0, nullptr);
    mResampler.reset(resampler);
    if (result >= 0) {
        result = swr_init(resampler);
    }
    if (result < 0) {
        mResampler.reset();
        mFailure = std::to_string(channels) + " channels at " + std::to_string(mRate) +
                   " Hz cannot be converted to 48000 Hz (" + ErrorText(result) + ")";
    }
}

std::int64_t AudioConformer::PlaceFrame(const AVFrame& inFrame, const ICancel& inCancel)
{
    const std::int64_t timestamp = inFrame.best_effort_timestamp;
    if (timestamp == AV_NOPTS_VALUE) {
        mPlaced = true;
        return 0;
    }
    const AVRational frameTime = {1, mRate};
    const std::int64_t at = av_rescale_q(timestamp, mStream.time_base, frameTime) -
                            av_rescale_q(mSource.StartMicroseconds(), kMicroseconds, frameTime) + mShift;
    const std::int64_t tick = std::max<std::int64_t>(1, av_rescale_q(1, mStream.time_base, frameTime));
    std::int64_t off = at - mPosition;
    if (!mPlaced) {
        // A container whose ticks are longer than a sample cannot say "0" exactly.
        off = std::abs(off) <= tick && tick > 2 ? 0 : off;
    } else {
        const std::int64_t jump = mExpected == AV_NOPTS_VALUE ? off : at - mExpected;
        const bool isJump = std::abs(jump) >= Frames(kJumpMs, mRate) + tick || mLossBefore;
        const bool isDrift = std::abs(off) >= Frames(kDriftMs, mRate) + tick;
        off = std::abs(off) > 2 * tick && (isJump || isDrift) ? off : 0;
    }
    mExpected = at + inFrame.nb_samples;

    // A duration that was worked out from timestamps would vouch for the very one in question.
    const std::int64_t duration = mSource.Format().duration;
    const std::int64_t furthest =
        duration > 0 && mSource.Format().duration_estimation_method == AVFMT_DURATION_FROM_STREAM
            ? av_rescale_q(duration, kMicroseconds, frameTime) + Frames(kBeyondDurationMs, mRate)
            : mPosition + Frames(kLongestGapMs, mRate);
    if (off > 0 && mPosition + off > furthest) {
        off = -Frames(kLongestOverlapMs, mRate) - 1; // as senseless as a wide jump back
    }
    if (off < -Frames(kLongestOverlapMs, mRate)) {
        ++mCounts.resets;
        mShift += mPosition - at;
        mExpected = mPosition + inFrame.nb_samples;
        off = 0;
    }
    if (off > 0) {
        InsertSilence(off, inCancel);
    }
    const std::int64_t skipped = std::min<std::int64_t>(std::max<std::int64_t>(0, -off), inFrame.nb_samples);
    mCounts.droppedFrames += skipped;
    mPlaced = mPlaced || skipped < inFrame.nb_samples;
    return skipped;
}

void AudioConformer::InsertSilence(std::int64_t inFrames, const ICancel& inCancel)
{
    mCounts.insertedFrames += inFrames;
    std::uint8_t** planes = nullptr;
    int lineSize = 0;
    if (av_samples_alloc_array_and_samples(&planes, &lineSize, mLayout.nb_channels, int(kSilenceFrames),
                                           mFormat, 0) < 0) {
        throw std::bad_alloc();
    }
    struct FreePlanes {
        void operator()(std::uint8_t** inPlanes) const
        {
            av_freep(inPlanes);
            av_free(inPlanes);
        }
    };
    const std::unique_ptr<std::uint8_t*, FreePlanes> owner(planes);
    av_samples_set_silence(planes, 0, int(kSilenceFrames), mLayout.nb_channels, mFormat);
    while (inFrames > 0) {
        if (inCancel.IsCancelled()) {
            mSource.ThrowCancelled();
        }
        const std::int64_t part = std::min(inFrames, kSilenceFrames);
        Convert(planes, part);
        inFrames -= part;
    }
}

void AudioConformer::Convert(const std::uint8_t* const* inPlanes, std::int64_t inFrames)
{
    mPosition += inFrames;
    if (!mResampler) {
        float* room = mWriter->Room(inFrames);
        const auto* samples = reinterpret_cast<const float*>(inPlanes[0]);
        std::copy_n(samples, inFrames * mWriter->Channels(), room);
        mWriter->Commit(inFrames);
        return;
    }
    const int space = swr_get_out_samples(mResampler.get(), int(inFrames));
    auto* room = reinterpret_cast<std::uint8_t*>(mWriter->Room(space));
    const int got = swr_convert(mResampler.get(), &room, space, const_cast<const std::uint8_t**>(inPlanes),
                                int(inFrames));
    if (got < 0) {
        throw std::bad_alloc(); // with formats checked by swr_init nothing else can fail
    }
    mWriter->Commit(got);
}

void AudioConformer::EndSegment()
{
    if (!mResampler) {
        return;
    }
    // The resampler's tail may be some samples longer or shorter than the sound.
    const std::int64_t end =
        mSegmentStart + av_rescale_rnd(mPosition - mSegmentFirst, kConformedSampleRate, mRate, AV_ROUND_UP);
    constexpr int kSpace = 4096;
    for (;;) {
        auto* room = reinterpret_cast<std::uint8_t*>(mWriter->Room(kSpace));
        const int got = swr_convert(mResampler.get(), &room, kSpace, nullptr, 0);
        if (got <= 0) {
            break;
        }
        mWriter->Commit(std::clamp<std::int64_t>(end - FrameCount(), 0, got));
    }
    mWriter->AddSilence(std::max<std::int64_t>(0, end - FrameCount()));
    mResampler.reset();
}

void AudioConformer::Finish(const ICancel& inCancel)
{
    if (mDecoder) {
        avcodec_send_packet(mDecoder.get(), nullptr);
        TakeDecoded(inCancel);
    }
    EndSegment();
    if (FrameCount() > 0) {
        mBucketCount = mWriter->Finish();
    } else if (mFailure.empty()) {
        mFailure = mCounts.damagedPackets > 0
                       ? "none of its " + std::to_string(mCounts.damagedPackets) + " packets could be decoded"
                       : "no sound in it";
    }
}

} // namespace trhost::media
