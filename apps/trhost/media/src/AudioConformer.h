#pragma once

#include "AudioDecoder.h"
#include "AudioPlacement.h"
#include "ConformedAudioWriter.h"
#include "FFmpegSupport.h"
#include "MediaSource.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace trhost::media {

/// Decodes one audio stream and lays its sound on the time line (see AudioPlacement) at the conformed rate.
///
/// Threading: one thread at a time.
class AudioConformer {
public:
    struct Counts : AudioPlacement::Counts {
        std::int64_t damagedPackets = 0;
    };

    /// @param inConformed, inPeaks  files to fill, may be null; they outlive this, as does the source.
    AudioConformer(MediaSource& inSource, int inStreamIndex, OutputFile* inConformed, OutputFile* inPeaks);

    /// Why this stream cannot be decoded at all; empty when it can.
    const std::string& Failure() const { return mFailure; }

    /// @throws kio_exception (kError_Cancelled), file_exception.
    void Take(const AVPacket& inPacket, const ICancel& inCancel);
    /// Gets the last sound out of the decoder and completes the files, unless there was no sound.
    void Finish(const ICancel& inCancel);

    Counts Count() const { return {mPlacement.Count(), mDecoder.DamagedPackets()}; }
    std::int64_t FrameCount() const { return mWriter ? mWriter->FrameCount() : 0; }
    std::int64_t BucketCount() const { return mBucketCount; }

private:
    void TakeDecoded(const ICancel& inCancel);
    void TakeFrame(const AVFrame& inFrame, const ICancel& inCancel);
    bool HasOtherFormat(const AVFrame& inFrame) const;
    void StartSegment(const AVFrame& inFrame);
    void InsertSilence(std::int64_t inFrames, const ICancel& inCancel);
    void Convert(const std::uint8_t* const* inPlanes, std::int64_t inFrames);
    void EndSegment();

    MediaSource& mSource;
    AVStream& mStream;
    OutputFile* const mConformed;
    OutputFile* const mPeaks;
    AudioDecoder mDecoder;
    std::string mFailure;
    std::unique_ptr<ConformedAudioWriter> mWriter; // from the first frame on
    AudioPlacement mPlacement;
    std::int64_t mBucketCount = 0;

    // A segment is a stretch of one sample format, rate and channel layout; nearly always the only one.
    ResamplerPtr mResampler; // empty when the decoder delivers what we keep
    AVSampleFormat mFormat = AV_SAMPLE_FMT_NONE;
    int mRate = 0;
    AVChannelLayout mLayout{};
    std::int64_t mSegmentStart = 0;  // in conformed frames
    std::int64_t mSegmentFrames = 0; // in frames of its own rate
};

} // namespace trhost::media
