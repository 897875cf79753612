#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiomediatypes/TickTime.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What trhost sees of its media module, which is loaded only when media must be decoded.
/// No media library shows here: trhost is started often, and mostly finds everything up to date.
namespace trhost::media {

/// Codes of the module's own failures, thrown as kiocore::kio_exception with a kept text
/// (support/KeptText.h). Others that it throws: file_exception (the media file could not be read, a cache
/// file not written), kError_Cancelled, kError_BadArgument. The text is always one line: the file, what was
/// found, what was expected.
enum MediaErrorCode : std::uint32_t {
    kMediaError_NotMedia = 0x80F10001,       ///< not a media file, or nothing in it that could be conformed
    kMediaError_NothingDecoded = 0x80F10002, ///< a media file, but none of the outputs could be made from it
};

enum class StreamKind { kAudio, kVideo };

/// One audio or video stream. Cover pictures, subtitles and data are not listed.
struct StreamInfo {
    int index = 0; ///< in the file; the indexes listed may have holes
    StreamKind kind = StreamKind::kAudio;
    std::string codec;           ///< short name: "pcm_s16le", "aac", "h264"
    bool decodable = true;       ///< audio: whether there is a decoder; video needs none
    double startSeconds = 0;     ///< of the first sample or frame, from the start of the file
    double durationSeconds = -1; ///< as the file declares it; -1 unknown
    int sampleRate = 0;          ///< audio
    int channels = 0;            ///< audio
    int width = 0;               ///< video
    int height = 0;              ///< video
    double framesPerSecond = 0;  ///< video; 0 unknown
    std::string language;        ///< as the file writes it, often ISO 639-2; empty when not said
};

/// The three formats are described in docs/cache-files.md, their bytes in CacheFileFormats.h.
enum class OutputKind {
    kConformedAudio, ///< ".cfa", of an audio stream
    kPeaks,          ///< ".pek", of an audio stream
    kVideoIndex,     ///< ".mcvideoindex", of a video stream
};

/// One file to make.
struct Output {
    OutputKind kind = OutputKind::kConformedAudio;
    int streamIndex = 0;
    std::string path; ///< native; its folder exists; a file that lies there is replaced
};

/// How one output fared.
struct OutputResult {
    bool made = false;
    std::string reason;     ///< a kept text, one line why it was not made; empty when made
    std::int64_t count = 0; ///< frames of audio, buckets of the finest peak level, entries of the index
    std::int64_t bytes = 0; ///< size of the file
};

struct ConformResult {
    std::vector<OutputResult> outputs; ///< in the order of the request
    std::int64_t damagedPackets = 0;   ///< left out or decoded only in part
    std::int64_t insertedFrames = 0; ///< of silence where a stream starts late or has a gap, at its own rate
    std::int64_t droppedFrames = 0;  ///< of sound before the start of the file or said twice, at its own rate
    std::vector<std::string> warnings; ///< kept texts, one line each: the file, the stream, what was found
};

/// Asked very often while the module works, on the thread that called it.
class ICancel {
public:
    virtual ~ICancel() = default;
    virtual bool IsCancelled() const noexcept = 0;
};

/// Told about 200 times on the way through a file, on the thread that called Conform.
class IProgress {
public:
    virtual ~IProgress() = default;
    /// @param inFraction  0 to 1 of the media file's bytes, never less than the time before.
    /// What it throws ends the conforming like a cancel and passes through.
    virtual void Progressed(double inFraction) = 0;
};

/// An opened media file; open until destroyed.
///
/// Threading: one thread at a time. Different files are independent of each other.
class IMediaFile {
public:
    virtual ~IMediaFile() = default;

    virtual const std::vector<StreamInfo>& Streams() const = 0;
    /// Short names of the container, "mov,mp4,m4a,3gp,3g2,mj2" or "wav".
    virtual const std::string& Container() const = 0;
    /// As the file declares it or as far as it can be estimated; -1 unknown.
    virtual double DurationSeconds() const = 0;

    /// Makes all outputs in one pass over the file. Only the streams that they name are read.
    /// The files appear under their names together, when all of them are complete; they are not synced, as
    /// they can be made again. After an exception none has appeared, and no temporary file is left.
    /// Damage is tolerated as a player would: what cannot be decoded is left out, its place filled with
    /// silence, and counted. A stream that yields nothing fails alone (see OutputResult).
    /// A second call opens the file anew, and Streams() then tells what is in it now.
    /// @param inProgress  may be null.
    /// @throws kio_exception: kError_Cancelled; kMediaError_NothingDecoded when no output could be made;
    ///         kError_BadArgument for an output whose stream does not exist or is of the wrong kind.
    /// @throws file_exception when reading or writing failed.
    virtual ConformResult Conform(const std::vector<Output>& inOutputs, IProgress* inProgress,
                                  const ICancel& inCancel) = 0;
};

/// Decodes the pictures of one video stream.
///
/// Threading: one thread at a time. Different readers are independent of each other.
class IVideoReader {
public:
    virtual ~IVideoReader() = default;

    virtual const StreamInfo& Stream() const = 0;
    /// The picture on show at a time from the start of the file: the last one that starts at or before it.
    /// Before the first picture it is the first, from the end on the last. Where the container's clock is too
    /// coarse for the frame rate, a time counts as that of a picture which it misses by half a tick of that
    /// clock, so that frame n is found at n / rate.
    /// Asking for later times one after the other decodes every picture once, as long as they are less than
    /// ten seconds apart or the container has an index.
    /// @return a frame of the picture's own size, pixel aspect ratio and colour space, upright, in the format
    ///     that keeps most of it: yuv420 and uyvy for 8-bit 4:2:0 and 4:2:2, v210 for 10-bit 4:2:2, bgra8 for
    ///     8-bit RGB; all others become bgra16 (bgra32f of floats). Chroma lies where our formats have it.
    ///     Never empty; not shared yet.
    /// @throws kio_exception: kError_Cancelled; kMediaError_NothingDecoded when there is no picture at all,
    /// or
    ///     none that a frame can hold.
    /// @throws file_exception when reading failed. The reader stays usable.
    virtual MF::IVideoFrameRef FrameAt(kiomediatypes::TickTime inTime, const ICancel& inCancel) = 0;
};

/// Decodes the sound of one audio stream at its own rate and channels, gaps filled with silence.
///
/// Threading: one thread at a time. Different readers are independent of each other.
class IAudioReader {
public:
    virtual ~IAudioReader() = default;

    virtual const StreamInfo& Stream() const = 0;
    /// Continues at a sample frame from the start of the file; at the end for one beyond it.
    virtual void SeekTo(std::int64_t inSampleFrame, const ICancel& inCancel) = 0;
    /// The next sample frames, interleaved, 1 = full scale.
    /// @param outSamples  room for inMostFrames * channels values.
    /// @return how many frames came; 0 at the end.
    /// @throws kio_exception (kError_Cancelled), file_exception.
    virtual int Read(float* outSamples, int inMostFrames, const ICancel& inCancel) = 0;
};

/// Threading: any thread.
class IMediaModule {
public:
    virtual ~IMediaModule() = default;

    /// Opens a file and finds out what is in it. Only that one file is ever read: playlists and files that
    /// refer to others, still pictures and text are refused as kMediaError_NotMedia.
    /// @param inNativePath  any bytes that the system takes for a path.
    /// @param inCancel      used during this call only.
    /// @throws kio_exception: kMediaError_NotMedia, kError_Cancelled; file_exception when it cannot be read.
    virtual std::unique_ptr<IMediaFile> Open(const std::string& inNativePath, const ICancel& inCancel) = 0;

    /// Opens a file to see its pictures, or hear its sound.
    /// @param inStreamIndex  -1 takes the first stream of the kind.
    /// @throws as Open; kMediaError_NotMedia also when there is no such stream, or no decoder for it.
    virtual std::unique_ptr<IVideoReader> OpenVideo(const std::string& inNativePath, int inStreamIndex,
                                                    const ICancel& inCancel) = 0;
    virtual std::unique_ptr<IAudioReader> OpenAudio(const std::string& inNativePath, int inStreamIndex,
                                                    const ICancel& inCancel) = 0;

    /// The media libraries at work, for "--version": "libavformat 59.27.100, libavcodec ...".
    virtual std::string LibraryVersions() const = 0;
};

/// Changes whenever anything in this header does, so that a module of another build is noticed.
inline constexpr int kMediaModuleVersion = 2;

/// File name of the module, below "<library folder>/trhost/", and its one function.
inline constexpr const char* kMediaModuleFileName = "trhost_media.so";
inline constexpr const char* kMediaModuleFunctionName = "trhost_media_module";

/// @return the module's one object, which lives as long as the process; null when the module was built
///         for another version of this header.
using MediaModuleFunction = IMediaModule* (*)(int inVersion);

} // namespace trhost::media

extern "C" KIO_EXPORT trhost::media::IMediaModule* trhost_media_module(int inVersion);
