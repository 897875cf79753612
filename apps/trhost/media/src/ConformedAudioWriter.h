#pragma once

#include "PeakBuilder.h"
#include "platform/NativeFile.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace trhost::media {

/// Takes conformed audio in large pieces, which go to the ".cfa" and through the peak builder while they
/// are in the processor's cache. Either may be absent.
///
/// Threading: one thread at a time.
class ConformedAudioWriter {
public:
    /// @param inConformed, inPeaks  files to fill, may be null; they outlive this.
    ConformedAudioWriter(OutputFile* inConformed, OutputFile* inPeaks, int inChannels, int inStreamIndex,
                         int inSourceSampleRate, std::uint64_t inChannelMask);

    int Channels() const { return mChannels; }
    std::int64_t FrameCount() const { return mFrameCount; }

    /// Where to put the next frames; space for at least inFrames.
    float* Room(std::int64_t inFrames);
    /// Takes the frames put there.
    void Commit(std::int64_t inFrames);
    void AddSilence(std::int64_t inFrames);

    /// @return buckets of the finest peak level, 0 without peaks.
    std::int64_t Finish();

private:
    void Deliver(std::int64_t inFrames);

    OutputFile* const mConformed;
    const int mChannels;
    const int mStreamIndex;
    const int mSourceSampleRate;
    const std::uint64_t mChannelMask;
    const std::int64_t mDeliveryFrames; // whole peak buckets
    std::unique_ptr<PeakBuilder> mPeaks;
    std::vector<float> mBuffer;
    std::int64_t mBuffered = 0; // frames
    std::int64_t mFrameCount = 0;
};

} // namespace trhost::media
