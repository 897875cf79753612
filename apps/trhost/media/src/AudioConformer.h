#pragma once

#include "ConformedAudioWriter.h"
#include "FFmpegSupport.h"
#include "MediaSource.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace trhost::media {

/// Decodes one audio stream and lays its sound on the time line: sample 0 is the start of the media file,
/// whatever comes late or is missing leaves silence, what lies before the start or overlaps is dropped.
///
/// Small differences between timestamps and the count of samples are left alone: containers round their
/// timestamps, and recorders' clocks drift; mending each would be heard.
///
/// Threading: one thread at a time.
class AudioConformer {
public:
    struct Counts {
        std::int64_t damagedPackets = 0;
        std::int64_t insertedFrames = 0;
        std::int64_t droppedFrames = 0;
        std::int64_t resets = 0; // jumps of the timestamps too wide to be a gap or an overlap
    };

    /// @param inConformed, inPeaks  files to fill, may be null; they outlive this, as does the source.
    AudioConformer(MediaSource& inSource, int inStreamIndex, OutputFile* inConformed, OutputFile* inPeaks);

    /// Why this stream cannot be decoded at all; empty when it can.
    const std::string& Failure() const { return mFailure; }

    /// @throws kio_exception (kError_Cancelled), file_exception.
    void Take(const AVPacket& inPacket, const ICancel& inCancel);
    /// Gets the last sound out of the decoder and completes the files, unless there was no sound.
    void Finish(const ICancel& inCancel);

    const Counts& Count() const { return mCounts; }
    std::int64_t FrameCount() const { return mWriter ? mWriter->FrameCount() : 0; }
    std::int64_t BucketCount() const { return mBucketCount; }

private:
    void OpenDecoder();
    void TakeDecoded(const ICancel& inCancel);
    void TakeFrame(const AVFrame& inFrame, const ICancel& inCancel);
    bool HasOtherFormat(const AVFrame& inFrame) const;
    void StartSegment(const AVFrame& inFrame);
    std::int64_t PlaceFrame(const AVFrame& inFrame, const ICancel& inCancel);
    std::int64_t PlaceFirst(std::int64_t inPosition);
    void InsertSilence(std::int64_t inFrames, const ICancel& inCancel);
    void Convert(const std::uint8_t* const* inPlanes, std::int64_t inFrames);
    void EndSegment();

    MediaSource& mSource;
    AVStream& mStream;
    OutputFile* const mConformed;
    OutputFile* const mPeaks;
    std::string mFailure;
    DecoderPtr mDecoder;
    FramePtr mFrame;
    std::unique_ptr<ConformedAudioWriter> mWriter; // from the first frame on
    Counts mCounts;
    std::int64_t mBucketCount = 0;
    bool mLossBefore = false; // something could not be decoded since the last frame

    // A segment is a stretch of one sample format, rate and channel layout; nearly always the only one.
    ResamplerPtr mResampler; // empty when the decoder delivers what we keep
    AVSampleFormat mFormat = AV_SAMPLE_FMT_NONE;
    int mRate = 0;
    AVChannelLayout mLayout{};
    std::int64_t mSegmentStart = 0; // in conformed frames

    // Positions in frames of the stream's own rate, from the start of the file.
    bool mPlaced = false;                    // some frame is on the time line
    std::int64_t mPosition = 0;              // where the next frame goes
    std::int64_t mSegmentFirst = 0;          // position at which the segment starts
    std::int64_t mShift = 0;                 // from the timestamps to positions, not 0 after a reset
    std::int64_t mExpected = AV_NOPTS_VALUE; // by the timestamp of the frame before
};

} // namespace trhost::media
