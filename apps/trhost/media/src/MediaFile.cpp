#include "MediaFile.h"

#include "../../support/KeptText.h"
#include "ConformPass.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <set>

namespace trhost::media {
namespace {

bool IsListed(const AVStream& inStream)
{
    switch (inStream.codecpar->codec_type) {
    case AVMEDIA_TYPE_AUDIO:
        return true;
    case AVMEDIA_TYPE_VIDEO:
        return !(inStream.disposition & AV_DISPOSITION_ATTACHED_PIC); // a cover picture
    default:
        return false;
    }
}

} // namespace

StreamInfo DescribeStream(const AVStream& inStream, const MediaSource& inSource)
{
    const AVCodecParameters& codec = *inStream.codecpar;
    const double tick = av_q2d(inStream.time_base);
    StreamInfo info;
    info.index = inStream.index;
    info.kind = codec.codec_type == AVMEDIA_TYPE_AUDIO ? StreamKind::kAudio : StreamKind::kVideo;
    info.codec = avcodec_get_name(codec.codec_id);
    if (inStream.start_time != AV_NOPTS_VALUE) {
        info.startSeconds =
            double(inStream.start_time) * tick - double(inSource.StartMicroseconds()) / AV_TIME_BASE;
    }
    if (inStream.duration != AV_NOPTS_VALUE) {
        info.durationSeconds = double(inStream.duration) * tick;
    } else if (inSource.Format().duration != AV_NOPTS_VALUE) {
        info.durationSeconds = double(inSource.Format().duration) / AV_TIME_BASE;
    }
    if (info.kind == StreamKind::kAudio) {
        info.decodable = avcodec_find_decoder(codec.codec_id) != nullptr;
        info.sampleRate = codec.sample_rate;
        info.channels = codec.ch_layout.nb_channels;
    } else {
        info.width = codec.width;
        info.height = codec.height;
        info.framesPerSecond = inStream.avg_frame_rate.den != 0 ? av_q2d(inStream.avg_frame_rate) : 0;
    }
    if (const AVDictionaryEntry* language = av_dict_get(inStream.metadata, "language", nullptr, 0)) {
        info.language = language->value;
    }
    return info;
}

MediaFile::MediaFile(const std::string& inNativePath, const ICancel& inCancel) : mPath(inNativePath)
{
    Open(inCancel);
}

MediaFile::~MediaFile() = default;

void MediaFile::Open(const ICancel& inCancel)
{
    mSource = std::make_unique<MediaSource>(mPath, inCancel);
    mStreams.clear();
    mDurationSeconds = -1;
    const AVFormatContext& format = mSource->Format();
    mContainer = format.iformat->name;
    if (format.duration != AV_NOPTS_VALUE) {
        mDurationSeconds = double(format.duration) / AV_TIME_BASE;
    }
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        if (IsListed(*format.streams[i])) {
            mStreams.push_back(DescribeStream(*format.streams[i], *mSource));
        }
    }
    if (mStreams.empty()) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/NoStreams=@0: no audio or video streams in it (\"@1\"); "
                     "expected at least one#{@0: a file, @1: its format}",
                     {ShownPath(mPath), mContainer}),
            kMediaError_NotMedia);
    }
}

void MediaFile::CheckOutputs(const std::vector<Output>& inOutputs) const
{
    std::set<std::pair<OutputKind, int>> seen;
    std::set<std::string> paths;
    for (const Output& output : inOutputs) {
        const StreamKind kind =
            output.kind == OutputKind::kVideoIndex ? StreamKind::kVideo : StreamKind::kAudio;
        const bool exists = std::any_of(mStreams.begin(), mStreams.end(), [&](const StreamInfo& stream) {
            return stream.index == output.streamIndex && stream.kind == kind;
        });
        const bool isNew =
            seen.emplace(output.kind, output.streamIndex).second && paths.insert(output.path).second;
        if (!exists || !isNew || output.path == mPath) {
            throw kiocore::kio_exception(
                ShownPath(mPath) + ": cannot make " + ShownPath(output.path) + " from stream " +
                    std::to_string(output.streamIndex) +
                    (!exists  ? kind == StreamKind::kAudio ? ", which is no audio stream"
                                                           : ", which is no video stream"
                     : !isNew ? ": asked for twice; expected one output of each kind, each with its own path"
                              : ": that is the media file itself"),
                kiocore::kError_BadArgument);
        }
    }
}

ConformResult MediaFile::Conform(const std::vector<Output>& inOutputs, IProgress* inProgress,
                                 const ICancel& inCancel)
{
    if (!mSource) {
        Open(inCancel); // again from the start; the file may have changed since
    }
    CheckOutputs(inOutputs);
    if (inOutputs.empty()) {
        return {};
    }
    const std::unique_ptr<MediaSource> source = std::move(mSource);
    return ConformPass(*source, inOutputs, inCancel).Run(inProgress);
}

} // namespace trhost::media
