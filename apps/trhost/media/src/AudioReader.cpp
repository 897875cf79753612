#include "AudioReader.h"

#include "../../support/KeptText.h"
#include "AudioDecoder.h"
#include "AudioPlacement.h"
#include "MediaFile.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace trhost::media {
namespace {

// A jump forward of up to this is decoded through; a wider one is worth looking for in the file.
constexpr std::int64_t kNearSeconds = 2;
// Decoded and thrown away before the wanted place: decoders need some packets to get into step.
constexpr std::int64_t kPrerollMs = 500;
constexpr int kMaxChannels = 64;

int FindStream(const MediaSource& inSource, int inStreamIndex)
{
    const AVFormatContext& format = inSource.Format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const bool wanted = inStreamIndex < 0 || inStreamIndex == int(i);
        if (wanted && format.streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            return int(i);
        }
    }
    throw kiocore::kio_exception(inStreamIndex < 0
                                     ? KeptText("$$$/Halcyon/TrHost/Media/NoSound=@0: no sound in it; "
                                                "expected an audio stream#{@0: a file}",
                                                {ShownPath(inSource.Path())})
                                     : KeptText("$$$/Halcyon/TrHost/Media/NoAudioStream=@0: stream @1 is no "
                                                "audio stream of it#{@0: a file}",
                                                {ShownPath(inSource.Path()), std::to_string(inStreamIndex)}),
                                 kMediaError_NotMedia);
}

/// Whether the container says of every packet which sample it starts with, so that decoding from a place in
/// the middle gives the same samples as decoding from the start.
bool HasExactTimes(const MediaSource& inSource, const AVStream& inStream)
{
    static constexpr std::string_view kExact[] = {"wav", "w64", "aiff", "caf", "mov", "flac"};
    const std::string_view name = inSource.Format().iformat->name;
    return inStream.codecpar->sample_rate > 0 &&
           av_cmp_q(inStream.time_base, {1, inStream.codecpar->sample_rate}) == 0 &&
           std::find(std::begin(kExact), std::end(kExact), name.substr(0, name.find(','))) !=
               std::end(kExact);
}

class AudioReader : public IAudioReader {
public:
    AudioReader(const std::string& inNativePath, int inStreamIndex, const ICancel& inCancel)
        : mPath(inNativePath), mSource(std::make_unique<MediaSource>(inNativePath, inCancel)),
          mIndex(FindStream(*mSource, inStreamIndex)), mPacket(Allocated(av_packet_alloc()))
    {
        mInfo = DescribeStream(MediaStream(), *mSource);
        StartDecoding();
        if (!mDecoder->Failure().empty()) {
            throw kiocore::kio_exception(
                KeptText(
                    "$$$/Halcyon/TrHost/Media/OfStream=@0: stream @1: @2#{@0: a file, @2: what is wrong}",
                    {ShownPath(mPath), std::to_string(mIndex), mDecoder->Failure()}),
                kMediaError_NotMedia);
        }
        // What comes out may have another rate and other channels than the container says.
        mFixed = false;
        DecodeMore(inCancel);
        mFixed = true;
        if (mInfo.channels <= 0 || mInfo.channels > kMaxChannels || mInfo.sampleRate <= 0) {
            throw kiocore::kio_exception(
                KeptText("$$$/Halcyon/TrHost/Media/AudioForm=@0: stream @1: @2 channels at @3 Hz; expected 1 "
                         "to 64 channels at a known rate#{@0: a file}",
                         {ShownPath(mPath), std::to_string(mIndex), std::to_string(mInfo.channels),
                          std::to_string(mInfo.sampleRate)}),
                kMediaError_NotMedia);
        }
    }

    const StreamInfo& Stream() const override { return mInfo; }

    void SeekTo(std::int64_t inSampleFrame, const ICancel& inCancel) override
    {
        const std::int64_t target = std::max<std::int64_t>(0, inSampleFrame);
        const bool isNear =
            target >= mReadPosition && target - mReadPosition <= kNearSeconds * mInfo.sampleRate;
        if (!isNear && !JumpTo(target, inCancel) && target < mReadPosition) {
            Restart(inCancel);
        }
        while (mReadPosition < target && HaveSome(inCancel)) {
            Discard(std::min(target - mReadPosition, Available()));
        }
    }

    int Read(float* outSamples, int inMostFrames, const ICancel& inCancel) override
    {
        const auto channels = std::size_t(mInfo.channels);
        int read = 0;
        while (read < inMostFrames && HaveSome(inCancel)) {
            const auto count = int(std::min<std::int64_t>(inMostFrames - read, Available()));
            float* const out = outSamples + std::size_t(read) * channels;
            if (mSilence > 0) {
                std::fill_n(out, std::size_t(count) * channels, 0.0f);
            } else {
                std::copy_n(mDecoded.data() + mTaken * channels, std::size_t(count) * channels, out);
            }
            Discard(count);
            read += count;
        }
        return read;
    }

private:
    AVStream& MediaStream() const { return *mSource->Format().streams[mIndex]; }

    void StartDecoding()
    {
        for (unsigned i = 0; i < mSource->Format().nb_streams; ++i) {
            mSource->Format().streams[i]->discard = int(i) == mIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
        mPlacement.emplace(*mSource, MediaStream());
        mDecoder.emplace(MediaStream());
        ForgetDecoded();
        mReadPosition = 0;
        mEnded = false;
        mRejoining = false;
    }

    /// From the start, the file opened anew: not every container can be rewound.
    void Restart(const ICancel& inCancel)
    {
        auto source = std::make_unique<MediaSource>(mPath, inCancel);
        if (FindStream(*source, mIndex) != mIndex) {
            return; // cannot be: it throws
        }
        mDecoder.reset();
        mPlacement.reset();
        mSource = std::move(source);
        StartDecoding();
    }

    /// Goes to the packets before a place, or to the start. @return false when neither is of use.
    bool JumpTo(std::int64_t inTarget, const ICancel& inCancel)
    {
        const AVRational frameTime = {1, mInfo.sampleRate};
        const std::int64_t from = inTarget - kPrerollMs * mInfo.sampleRate / 1000;
        if (from <= 0 || !HasExactTimes(*mSource, MediaStream()) || mPlacement->Count().resets > 0) {
            return false;
        }
        const std::int64_t start = mSource->StartMicroseconds();
        const std::int64_t timestamp =
            av_rescale_q(from, frameTime, MediaStream().time_base) +
            av_rescale_q(start, AVRational{1, AV_TIME_BASE}, MediaStream().time_base);
        if (!mSource->Seek(mIndex, timestamp, inCancel)) {
            Restart(inCancel); // wherever it stands now
            return true;
        }
        mDecoder->Flush();
        ForgetDecoded();
        mEnded = false;
        mRejoining = true;
        // Until the first frame tells, this is where we are: behind nothing that is wanted.
        mReadPosition = std::min(mReadPosition, inTarget);
        HaveSome(inCancel);
        if (mRejoining || mReadPosition > inTarget) {
            Restart(inCancel); // the end, or a container that landed behind the place
        }
        return true;
    }

    void ForgetDecoded()
    {
        mDecoded.clear();
        mTaken = 0;
        mSilence = 0;
        mResampler.reset();
        mFormat = AV_SAMPLE_FMT_NONE;
    }

    std::int64_t Available() const
    {
        return mSilence > 0 ? mSilence
                            : std::int64_t(mDecoded.size()) / mInfo.channels - std::int64_t(mTaken);
    }

    bool HaveSome(const ICancel& inCancel)
    {
        while (Available() == 0 && !mEnded) {
            DecodeMore(inCancel);
        }
        return Available() > 0;
    }

    void Discard(std::int64_t inFrames)
    {
        mReadPosition += inFrames;
        if (mSilence > 0) {
            mSilence -= inFrames;
        } else {
            mTaken += std::size_t(inFrames);
        }
    }

    /// Decodes at least one frame, or notes the end. To be called when nothing is available: a frame's
    /// silence comes before its samples.
    void DecodeMore(const ICancel& inCancel)
    {
        mDecoded.clear();
        mTaken = 0;
        for (;;) {
            if (const AVFrame* frame = mDecoder->Receive()) {
                if (TakeFrame(*frame)) {
                    return;
                }
                continue;
            }
            if (mDraining) {
                mDraining = false;
                mEnded = true;
                DrainResampler();
                return;
            }
            std::int64_t damage = 0;
            if (!mSource->ReadPacket(*mPacket, inCancel, damage)) {
                mDecoder->Send(nullptr);
                mDraining = true;
            } else {
                if (mPacket->stream_index == mIndex) {
                    mDecoder->Send(mPacket.get());
                }
                av_packet_unref(mPacket.get());
            }
            if (damage > 0) {
                mPlacement->NoteLoss();
            }
        }
    }

    /// @return whether anything of it is to be heard.
    bool TakeFrame(const AVFrame& inFrame)
    {
        const int channels = inFrame.ch_layout.nb_channels;
        if (inFrame.nb_samples <= 0 || inFrame.sample_rate <= 0 || channels <= 0 || channels > kMaxChannels) {
            return false;
        }
        if (!mFixed) {
            mInfo.sampleRate = inFrame.sample_rate;
            mInfo.channels = channels;
            mFixed = true;
        }
        // Positions are in the rate that we deliver, also where the stream changes its own midway.
        mPlacement->StartRate(mInfo.sampleRate, 0);
        if (mRejoining) {
            if (inFrame.best_effort_timestamp == AV_NOPTS_VALUE) {
                return false;
            }
            mPlacement->Rejoin(inFrame.best_effort_timestamp);
            mReadPosition = mPlacement->Position();
            mRejoining = false;
            mDecoder->TakeLoss();
        } else if (mDecoder->TakeLoss()) {
            mPlacement->NoteLoss();
        }
        Convert(inFrame);
        const auto [silence, skipped] = mPlacement->Next(inFrame.best_effort_timestamp, DecodedFrames());
        mSilence = silence;
        mTaken = std::size_t(skipped);
        return Available() > 0;
    }

    int DecodedFrames() const { return int(mDecoded.size()) / mInfo.channels; }

    void Convert(const AVFrame& inFrame)
    {
        const auto format = static_cast<AVSampleFormat>(inFrame.format);
        const int channels = inFrame.ch_layout.nb_channels;
        if (format == AV_SAMPLE_FMT_FLT && channels == mInfo.channels &&
            inFrame.sample_rate == mInfo.sampleRate) {
            const auto* samples = reinterpret_cast<const float*>(inFrame.extended_data[0]);
            mDecoded.assign(samples, samples + std::size_t(inFrame.nb_samples) * std::size_t(channels));
            return;
        }
        if (format != mFormat || channels != mFromChannels || inFrame.sample_rate != mFromRate) {
            StartResampler(inFrame);
        }
        const int space = swr_get_out_samples(mResampler.get(), inFrame.nb_samples);
        mDecoded.resize(std::size_t(std::max(0, space)) * std::size_t(mInfo.channels));
        auto* room = reinterpret_cast<std::uint8_t*>(mDecoded.data());
        const int got =
            swr_convert(mResampler.get(), &room, space,
                        const_cast<const std::uint8_t**>(inFrame.extended_data), inFrame.nb_samples);
        if (got < 0) {
            throw std::bad_alloc(); // with formats checked by swr_init nothing else can fail
        }
        mDecoded.resize(std::size_t(got) * std::size_t(mInfo.channels));
    }

    /// Only converts samples to float, unless the stream changes its rate or channels midway.
    void StartResampler(const AVFrame& inFrame)
    {
        mFormat = static_cast<AVSampleFormat>(inFrame.format);
        mFromChannels = inFrame.ch_layout.nb_channels;
        mFromRate = inFrame.sample_rate;
        AVChannelLayout from = PlainLayout(mFromChannels);
        AVChannelLayout to = PlainLayout(mInfo.channels);
        if (mFromChannels != mInfo.channels) { // only in mid-stream: mixed to what the stream began with
            av_channel_layout_default(&from, mFromChannels);
            av_channel_layout_default(&to, mInfo.channels);
        }
        SwrContext* resampler = nullptr;
        int result = swr_alloc_set_opts2(&resampler, &to, AV_SAMPLE_FMT_FLT, mInfo.sampleRate, &from, mFormat,
                                         mFromRate, 0, nullptr);
        mResampler.reset(resampler);
        if (result >= 0) {
            result = swr_init(resampler);
        }
        if (result < 0) {
            throw kiocore::kio_exception(
                KeptText(
                    "$$$/Halcyon/TrHost/Media/AudioNotConverted=@0: @1 channels at @2 Hz cannot be converted "
                    "to @3 at @4 Hz (@5)#{@0: a file, @3: a number of channels, @5: the reason}",
                    {ShownPath(mPath), std::to_string(mFromChannels), std::to_string(mFromRate),
                     std::to_string(mInfo.channels), std::to_string(mInfo.sampleRate), ErrorText(result)}),
                kMediaError_NotMedia);
        }
    }

    void DrainResampler()
    {
        if (!mResampler || mFromRate == mInfo.sampleRate) {
            return;
        }
        constexpr int kSpace = 4096;
        std::vector<float> part(std::size_t(kSpace) * std::size_t(mInfo.channels));
        auto* room = reinterpret_cast<std::uint8_t*>(part.data());
        while (const int got = std::max(0, swr_convert(mResampler.get(), &room, kSpace, nullptr, 0))) {
            mDecoded.insert(mDecoded.end(), part.begin(),
                            part.begin() + std::ptrdiff_t(got) * mInfo.channels);
        }
    }

    const std::string mPath;
    std::unique_ptr<MediaSource> mSource;
    const int mIndex;
    PacketPtr mPacket;
    StreamInfo mInfo;
    std::optional<AudioPlacement> mPlacement;
    std::optional<AudioDecoder> mDecoder;
    bool mFixed = true;      // rate and channels stay as they are
    bool mRejoining = false; // the next frame tells where we are
    bool mDraining = false;
    bool mEnded = false;

    std::int64_t mReadPosition = 0; // of the next frame that Read gives
    std::int64_t mSilence = 0;      // frames to give before what is decoded
    std::vector<float> mDecoded;    // interleaved
    std::size_t mTaken = 0;         // frames of it

    ResamplerPtr mResampler;
    AVSampleFormat mFormat = AV_SAMPLE_FMT_NONE; // what it converts
    int mFromChannels = 0;
    int mFromRate = 0;
};

} // namespace

std::unique_ptr<IAudioReader> OpenAudioReader(const std::string& inNativePath, int inStreamIndex,
                                              const ICancel& inCancel)
{
    return std::make_unique<AudioReader>(inNativePath, inStreamIndex, inCancel);
}

} // namespace trhost::media
