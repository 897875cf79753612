#include "MediaSource.h"

#include "../../support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace trhost::media {
namespace {

constexpr int kReadBytes = 256 * 1024;
constexpr int kMaxDamageInARow = 100;

/// Containers that are recognised but are not moving pictures or sound: what text files, program files and
/// lists of other files are taken for.
bool IsUnwantedContainer(std::string_view inName)
{
    static constexpr std::string_view kUnwanted[] = {
        "tty",        "bin",  "xbin", "adf",  "idf", "concat",    "hls",
        "ffmetadata", "dash", "sdp",  "rtsp", "imf", "applehttp", "webm_dash_manifest"};
    return std::any_of(std::begin(kUnwanted), std::end(kUnwanted), [&](std::string_view unwanted) {
        return inName == unwanted || inName.substr(0, inName.find(',')) == unwanted;
    });
}

bool IsStillPicture(std::string_view inName)
{
    return inName == "image2" || inName == "ico" ||
           (inName.size() > 5 && inName.substr(inName.size() - 5) == "_pipe");
}

int RefuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

} // namespace

MediaSource::MediaSource(const std::string& inNativePath, const ICancel& inCancel)
    : mPath(inNativePath), mCancel(&inCancel), mFile(inNativePath)
{
    if (inCancel.IsCancelled()) {
        ThrowCancelled();
    }
    Open();
    mCancel = nullptr;
}

MediaSource::~MediaSource() = default;

int MediaSource::ReadBytes(void* inThis, std::uint8_t* outBytes, int inSize)
{
    auto& self = *static_cast<MediaSource*>(inThis);
    if (IsInterrupted(inThis)) {
        return AVERROR_EXIT;
    }
    const int got = self.mFile.Read(outBytes, inSize);
    if (got < 0 && self.mReadError == 0) {
        self.mReadError = -got;
    }
    return got > 0 ? got : got == 0 ? AVERROR_EOF : AVERROR(-got);
}

std::int64_t MediaSource::SeekBytes(void* inThis, std::int64_t inOffset, int inWhence)
{
    InputFile& file = static_cast<MediaSource*>(inThis)->mFile;
    switch (inWhence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return file.Size();
    case SEEK_CUR:
        inOffset += file.Position();
        break;
    case SEEK_END:
        inOffset += file.Size();
        break;
    default:
        break;
    }
    if (inOffset < 0) {
        return AVERROR(EINVAL);
    }
    file.Seek(inOffset);
    return inOffset;
}

int MediaSource::IsInterrupted(void* inThis)
{
    const ICancel* cancel = static_cast<MediaSource*>(inThis)->mCancel;
    return cancel && cancel->IsCancelled();
}

void MediaSource::Open()
{
    auto* buffer = static_cast<std::uint8_t*>(Allocated(av_malloc(kReadBytes)));
    AVIOContext* io = avio_alloc_context(buffer, kReadBytes, 0, this, &ReadBytes, nullptr, &SeekBytes);
    if (!io) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    mIO.reset(io);

    AVFormatContext* format = Allocated(avformat_alloc_context());
    format->pb = mIO.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    format->interrupt_callback = {&IsInterrupted, this};
    format->io_open = &RefuseToOpen;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "max_size", "65536",
                0); // of a packet of plain samples; 4096 costs more than it holds
    const int opened =
        avformat_open_input(&format, mPath.c_str(), nullptr, &options); // frees it when it fails
    av_dict_free(&options);
    CheckReading();
    if (opened < 0) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/NotOpened=@0: not recognised, damaged or cut short (@1); "
                     "expected a media file#{@0: a file, @1: the reason}",
                     {ShownPath(mPath), ErrorText(opened)}),
            kMediaError_NotMedia);
    }
    mFormat.reset(format);
    CheckContainer();
    // A failure here shows again, and more to the point, when packets are read.
    avformat_find_stream_info(format, nullptr);
    CheckReading();
}

void MediaSource::CheckContainer() const
{
    const std::string_view name = mFormat->iformat->name;
    if (IsUnwantedContainer(name) || mFormat->probe_score < AVPROBE_SCORE_RETRY) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/NotRecognised=@0: not recognised (at best \"@1\"); expected a "
                     "media file#{@0: a file, @1: a file format}",
                     {ShownPath(mPath), std::string(name)}),
            kMediaError_NotMedia);
    }
    if (IsStillPicture(name)) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Media/StillPicture=@0: a still picture (\"@1\"); expected audio or "
                     "video streams#{@0: a file, @1: its format}",
                     {ShownPath(mPath), std::string(name)}),
            kMediaError_NotMedia);
    }
}

void MediaSource::CheckReading() const
{
    if (mCancel && mCancel->IsCancelled()) {
        ThrowCancelled();
    }
    if (mReadError != 0) {
        throw kiocore::file_exception("read", ShownPath(mPath), mReadError);
    }
}

void MediaSource::ThrowCancelled() const
{
    throw kiocore::kio_exception(
        KeptText("$$$/Halcyon/TrHost/Media/Cancelled=@0: cancelled#{@0: a file}", {ShownPath(mPath)}),
        kiocore::kError_Cancelled);
}

std::int64_t MediaSource::StartMicroseconds() const
{
    return mFormat->start_time == AV_NOPTS_VALUE ? 0 : std::max<std::int64_t>(0, mFormat->start_time);
}

double MediaSource::Progress(const AVPacket& inPacket) const
{
    // The file's own position runs ahead: finding out what is in it may have read all of a short file.
    const std::int64_t position = inPacket.pos >= 0 ? inPacket.pos : avio_tell(mIO.get());
    return std::clamp(double(position) / double(mFile.Size()), 0.0, 1.0);
}

bool MediaSource::ReadPacket(AVPacket& outPacket, const ICancel& inCancel, std::int64_t& ioDamage)
{
    mCancel = &inCancel;
    int result = 0;
    for (int damage = 0; damage < kMaxDamageInARow; ++damage) {
        av_packet_unref(&outPacket); // it may hold one that came just before a cancel
        result = av_read_frame(mFormat.get(), &outPacket);
        CheckReading();
        if (result == AVERROR(ENOMEM)) {
            throw std::bad_alloc();
        }
        if (result >= 0 || result == AVERROR_EOF) {
            break;
        }
        if (result != AVERROR(EAGAIN)) {
            ++ioDamage;
        }
    }
    mCancel = nullptr;
    return result >= 0;
}

bool MediaSource::Seek(int inStreamIndex, std::int64_t inTimestamp, const ICancel& inCancel)
{
    mCancel = &inCancel;
    const int result = av_seek_frame(mFormat.get(), inStreamIndex, inTimestamp, AVSEEK_FLAG_BACKWARD);
    CheckReading();
    mCancel = nullptr;
    return result >= 0;
}

} // namespace trhost::media
