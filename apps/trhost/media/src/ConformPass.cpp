#include "ConformPass.h"

#include "../../support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cstdio>

namespace trhost::media {
namespace {

constexpr double kProgressStep = 1.0 / 200;
// Headers round; only a real loss is worth a line.
constexpr double kMissingSeconds = 2.0;

std::string Seconds(double inSeconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", inSeconds);
    return text;
}

} // namespace

std::string ConformPass::Stream::Failure() const
{
    return audio                               ? audio->Failure()
           : video && video->EntryCount() == 0 ? "$$$/Halcyon/TrHost/Media/NoFrames=no frames in it"
                                               : "";
}

ConformPass::ConformPass(MediaSource& inSource, const std::vector<Output>& inOutputs, const ICancel& inCancel)
    : mSource(inSource), mOutputs(inOutputs), mCancel(inCancel), mStreams(inSource.Format().nb_streams)
{
    struct Wanted {
        OutputFile* conformed = nullptr;
        OutputFile* peaks = nullptr;
        OutputFile* index = nullptr;
    };
    std::vector<Wanted> wanted(mStreams.size());
    for (const Output& output : mOutputs) {
        mFiles.push_back(std::make_unique<OutputFile>(output.path));
        Wanted& stream = wanted[std::size_t(output.streamIndex)];
        switch (output.kind) {
        case OutputKind::kConformedAudio:
            stream.conformed = mFiles.back().get();
            break;
        case OutputKind::kPeaks:
            stream.peaks = mFiles.back().get();
            break;
        case OutputKind::kVideoIndex:
            stream.index = mFiles.back().get();
            break;
        }
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const int index = static_cast<int>(i);
        if (wanted[i].conformed || wanted[i].peaks) {
            mStreams[i].audio =
                std::make_unique<AudioConformer>(mSource, index, wanted[i].conformed, wanted[i].peaks);
        } else if (wanted[i].index) {
            mStreams[i].video = std::make_unique<VideoIndexer>(mSource, index, *wanted[i].index);
        }
        const bool used = mStreams[i].audio || mStreams[i].video;
        mSource.Format().streams[i]->discard = used ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

ConformPass::~ConformPass() = default;

ConformResult ConformPass::Run(IProgress* inProgress)
{
    ConformResult result;
    ReadAll(inProgress);
    Finish(result);
    Report(result);
    Publish(result);
    return result;
}

void ConformPass::ReadAll(IProgress* inProgress)
{
    const PacketPtr packet(Allocated(av_packet_alloc()));
    double reported = -1;
    while (mSource.ReadPacket(*packet, mCancel, mContainerDamage)) {
        if (mCancel.IsCancelled()) {
            mSource.ThrowCancelled();
        }
        // Some containers add streams as they go; nobody asked for those.
        if (const auto index = static_cast<std::size_t>(packet->stream_index); index < mStreams.size()) {
            NoteEnd(*packet);
            if (mStreams[index].audio) {
                mStreams[index].audio->Take(*packet, mCancel);
            } else if (mStreams[index].video) {
                mStreams[index].video->Take(*packet);
            }
        }
        const double progress = mSource.Progress(*packet);
        av_packet_unref(packet.get());
        if (inProgress && progress >= reported + kProgressStep) {
            reported = progress;
            inProgress->Progressed(progress);
        }
    }
    if (inProgress) {
        inProgress->Progressed(1);
    }
}

void ConformPass::NoteEnd(const AVPacket& inPacket)
{
    if (inPacket.pts != AV_NOPTS_VALUE) {
        const AVRational timeBase = mSource.Format().streams[inPacket.stream_index]->time_base;
        mEndMicroseconds = std::max(
            mEndMicroseconds, av_rescale_q(inPacket.pts + inPacket.duration, timeBase, {1, AV_TIME_BASE}));
    }
}

void ConformPass::Finish(ConformResult& outResult)
{
    for (Stream& stream : mStreams) {
        if (stream.audio) {
            stream.audio->Finish(mCancel);
        } else if (stream.video) {
            stream.video->Finish();
        }
    }
    std::string reasons;
    bool anyMade = false;
    for (std::size_t i = 0; i < mOutputs.size(); ++i) {
        const Stream& stream = mStreams[std::size_t(mOutputs[i].streamIndex)];
        OutputResult output;
        output.reason = stream.Failure();
        output.made = output.reason.empty();
        if (output.made) {
            anyMade = true;
            output.bytes = mFiles[i]->Size();
            output.count = mOutputs[i].kind == OutputKind::kConformedAudio ? stream.audio->FrameCount()
                           : mOutputs[i].kind == OutputKind::kPeaks        ? stream.audio->BucketCount()
                                                                           : stream.video->EntryCount();
        } else if (const std::string reason =
                       KeptText("$$$/Halcyon/TrHost/Media/StreamReason=stream @0: @1#{@1: what is wrong}",
                                {std::to_string(mOutputs[i].streamIndex), output.reason});
                   reasons.find(reason) == std::string::npos) {
            reasons =
                reasons.empty()
                    ? reason
                    : KeptText("$$$/Halcyon/TrHost/Media/TwoReasons=@0; @1#{reasons why something failed}",
                               {reasons, reason});
        }
        outResult.outputs.push_back(std::move(output));
    }
    if (!anyMade) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/NothingDecoded=@0: nothing could be decoded (@1); expected "
                     "sound or pictures#{@0: a file, @1: the reasons}",
                     {ShownPath(mSource.Path()), reasons}),
            kMediaError_NothingDecoded);
    }
}

void ConformPass::Report(ConformResult& ioResult) const
{
    const std::string file = ShownPath(mSource.Path());
    if (mContainerDamage > 0) {
        ioResult.damagedPackets += mContainerDamage;
        ioResult.warnings.push_back(KeptText("$$$/Halcyon/TrHost/Media/DamagedPlaces=@0: @1 damaged places "
                                             "in the file were passed over#{@0: a file}",
                                             {file, std::to_string(mContainerDamage)}));
    }
    for (std::size_t i = 0; i < mStreams.size(); ++i) {
        const Stream& stream = mStreams[i];
        const std::string number = std::to_string(i);
        const std::int64_t damaged = stream.audio   ? stream.audio->Count().damagedPackets
                                     : stream.video ? stream.video->DamagedPackets()
                                                    : 0;
        ioResult.damagedPackets += damaged;
        if (const std::string failure = stream.Failure(); !failure.empty()) {
            ioResult.warnings.push_back(KeptText(
                "$$$/Halcyon/TrHost/Media/OfStream=@0: stream @1: @2#{@0: a file, @2: what is wrong}",
                {file, number, failure}));
            continue;
        }
        if (damaged > 0) {
            ioResult.warnings.push_back(KeptText(
                "$$$/Halcyon/TrHost/Media/DamagedPackets=@0: stream @1: @2 damaged packets#{@0: a file}",
                {file, number, std::to_string(damaged)}));
        }
        if (stream.audio) {
            const AudioConformer::Counts& counts = stream.audio->Count();
            ioResult.insertedFrames += counts.insertedFrames;
            ioResult.droppedFrames += counts.droppedFrames;
            if (counts.resets > 0) {
                ioResult.warnings.push_back(
                    KeptText("$$$/Halcyon/TrHost/Media/TimestampsJump=@0: stream @1: its timestamps jump @2 "
                             "times; the sound is joined there#{@0: a file}",
                             {file, number, std::to_string(counts.resets)}));
            }
        }
    }
    WarnIfShort(ioResult);
}

void ConformPass::WarnIfShort(ConformResult& ioResult) const
{
    // A length worked out from the file's size or its last timestamps promises nothing, and streams that
    // were not read may have been the longest.
    const AVFormatContext& format = mSource.Format();
    for (std::size_t i = 0; i < mStreams.size(); ++i) {
        const AVMediaType kind = format.streams[i]->codecpar->codec_type;
        if (!mStreams[i].audio && !mStreams[i].video &&
            (kind == AVMEDIA_TYPE_AUDIO || kind == AVMEDIA_TYPE_VIDEO)) {
            return;
        }
    }
    if (format.duration_estimation_method != AVFMT_DURATION_FROM_STREAM || format.duration <= 0) {
        return;
    }
    const double found = double(mEndMicroseconds - mSource.StartMicroseconds()) / AV_TIME_BASE;
    const double declared = double(format.duration) / AV_TIME_BASE;
    if (found + kMissingSeconds < declared) {
        ioResult.warnings.push_back(KeptText("$$$/Halcyon/TrHost/Media/EndsEarly=@0: ends after @1; its "
                                             "header declares @2#{@0: a file, @1 and @2: durations}",
                                             {ShownPath(mSource.Path()), Seconds(found), Seconds(declared)}));
    }
}

void ConformPass::Publish(ConformResult& ioResult)
{
    if (mCancel.IsCancelled()) {
        mSource.ThrowCancelled();
    }
    std::vector<std::unique_ptr<OutputFile>> made;
    for (std::size_t i = 0; i < mFiles.size(); ++i) {
        if (ioResult.outputs[i].made) {
            mFiles[i]->Close();
            made.push_back(std::move(mFiles[i]));
        }
    }
    for (auto& file : made) {
        file->Publish();
    }
    // Only now: had one of them failed, those that had appeared would have gone with it.
    for (auto& file : made) {
        file->KeepPublished();
    }
}

} // namespace trhost::media
