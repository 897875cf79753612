#include "AudioConformer.h"

#include "../../support/KeptText.h"

#include <algorithm>
#include <array>

namespace trhost::media {
namespace {

constexpr std::int64_t kSilenceFrames = 8192;
constexpr int kMaxChannels = 64; // of the resampler

std::uint64_t SpeakerMask(const AVChannelLayout& inLayout)
{
    return inLayout.order == AV_CHANNEL_ORDER_NATIVE ? inLayout.u.mask : 0;
}

} // namespace

AudioConformer::AudioConformer(MediaSource& inSource, int inStreamIndex, OutputFile* inConformed,
                               OutputFile* inPeaks)
    : mSource(inSource), mStream(*inSource.Format().streams[inStreamIndex]), mConformed(inConformed),
      mPeaks(inPeaks), mDecoder(mStream), mFailure(mDecoder.Failure()), mPlacement(mSource, mStream)
{}

void AudioConformer::Take(const AVPacket& inPacket, const ICancel& inCancel)
{
    mDecoder.Send(&inPacket);
    TakeDecoded(inCancel);
}

void AudioConformer::TakeDecoded(const ICancel& inCancel)
{
    while (const AVFrame* frame = mDecoder.Receive()) {
        if (mDecoder.TakeLoss()) {
            mPlacement.NoteLoss();
        }
        TakeFrame(*frame, inCancel);
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
    const auto [silence, skipped] = mPlacement.Next(inFrame.best_effort_timestamp, inFrame.nb_samples);
    InsertSilence(silence, inCancel);
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
        mFailure =
            KeptText("$$$/Halcyon/TrHost/Media/TooManyChannels=@0 channels; at most @1 can be conformed",
                     {std::to_string(channels), std::to_string(kMaxChannels)});
        return;
    }
    EndSegment();
    mPlacement.StartRate(inFrame.sample_rate,
                         av_rescale(FrameCount(), inFrame.sample_rate, kConformedSampleRate));
    mSegmentStart = FrameCount();
    mSegmentFrames = 0;
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
        mFailure = KeptText("$$$/Halcyon/TrHost/Media/NotConformed=@0 channels at @1 Hz cannot be converted "
                            "to @2 Hz (@3)#{@3: the reason}",
                            {std::to_string(channels), std::to_string(mRate), "48000", ErrorText(result)});
    }
}

void AudioConformer::InsertSilence(std::int64_t inFrames, const ICancel& inCancel)
{
    if (inFrames == 0) {
        return;
    }
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
    mSegmentFrames += inFrames;
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
        mSegmentStart + av_rescale_rnd(mSegmentFrames, kConformedSampleRate, mRate, AV_ROUND_UP);
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
    mDecoder.Send(nullptr);
    TakeDecoded(inCancel);
    EndSegment();
    if (FrameCount() > 0) {
        mBucketCount = mWriter->Finish();
    } else if (mFailure.empty()) {
        mFailure =
            mDecoder.DamagedPackets() > 0
                ? KeptText("$$$/Halcyon/TrHost/Media/NoPacketDecoded=none of its @0 packets could be decoded",
                           {std::to_string(mDecoder.DamagedPackets())})
                : "$$$/Halcyon/TrHost/Media/NoSoundInIt=no sound in it";
    }
}

} // namespace trhost::media
