#pragma once

#include "../CacheFileFormats.h"
#include "platform/NativeFile.h"

#include <cstdint>
#include <vector>

namespace trhost::media {

/// Lowest and highest value of each channel of interleaved frames. A value that is not a number counts
/// as none; a channel without any gets 0 and 0.
void FindPeaks(const float* inFrames, std::int64_t inFrameCount, int inChannels, Peak* outPeaks);

/// Makes a peak file from conformed audio as it passes by. The finest level goes to the file at once;
/// the coarser ones, a third of its size together, wait in memory for their place behind it.
///
/// Threading: one thread at a time.
class PeakBuilder {
public:
    PeakBuilder(OutputFile& inFile, int inChannels, int inStreamIndex);

    /// @param inFrameCount  whole buckets, except in the last call.
    void Add(const float* inFrames, std::int64_t inFrameCount);
    /// Writes what is left, and the header.
    /// @return buckets of the finest level.
    std::int64_t Finish();

private:
    struct Level {
        std::vector<Peak> buckets;
        std::vector<Peak> open; // the bucket being filled
        std::uint32_t openParts = 0;
    };
    void Merge(std::size_t inLevel, const Peak* inBucket);
    void CloseOpenBucket(std::size_t inLevel);
    void WriteFinest();

    OutputFile& mFile;
    const int mChannels;
    const int mStreamIndex;
    std::int64_t mFrameCount = 0;
    std::int64_t mFinestCount = 0;
    std::vector<Peak> mFinest;  // not yet in the file
    std::vector<Level> mLevels; // coarser ones; [0] is level 1 of the file
};

} // namespace trhost::media
