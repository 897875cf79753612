#include "PeakBuilder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace trhost::media {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::size_t kWriteBytes = 64 * 1024;

using Vector = float __attribute__((vector_size(16)));
constexpr int kVectorFloats = 4;

/// Goes over values whose channel is given by their place modulo a divisor of Lanes, keeping one result
/// a lane, so that the loop has neither strides nor a dependency between neighbours.
/// The comparisons are false for what is not a number, which leaves it out.
template <int Lanes>
void FindLanePeaks(const float* inValues, std::int64_t inCount, float* outLow, float* outHigh)
{
    constexpr int kVectors = Lanes / kVectorFloats;
    Vector low[kVectors];
    Vector high[kVectors];
    for (int v = 0; v < kVectors; ++v) {
        low[v] = Vector{} + kInfinity;
        high[v] = Vector{} - kInfinity;
    }
    for (std::int64_t i = 0; i < inCount; i += Lanes) {
        for (int v = 0; v < kVectors; ++v) {
            Vector value;
            std::memcpy(&value, inValues + i + v * kVectorFloats, sizeof value);
            low[v] = value < low[v] ? value : low[v];
            high[v] = value > high[v] ? value : high[v];
        }
    }
    std::memcpy(outLow, low, sizeof low);
    std::memcpy(outHigh, high, sizeof high);
}

void MergePeak(Peak& ioPeak, float inLow, float inHigh)
{
    ioPeak.low = inLow < ioPeak.low ? inLow : ioPeak.low;
    ioPeak.high = inHigh > ioPeak.high ? inHigh : ioPeak.high;
}

/// @return values taken; what remains is less than Lanes.
template <int Lanes>
std::int64_t FindPeaksInLanes(const float* inValues, std::int64_t inCount, int inChannels, Peak* ioPeaks)
{
    float low[Lanes];
    float high[Lanes];
    const std::int64_t taken = inCount - inCount % Lanes;
    FindLanePeaks<Lanes>(inValues, taken, low, high);
    for (int lane = 0; lane < Lanes; ++lane) {
        MergePeak(ioPeaks[lane % inChannels], low[lane], high[lane]);
    }
    return taken;
}

} // namespace

void FindPeaks(const float* inFrames, std::int64_t inFrameCount, int inChannels, Peak* outPeaks)
{
    std::fill_n(outPeaks, inChannels, Peak{kInfinity, -kInfinity});
    const std::int64_t count = inFrameCount * inChannels;
    std::int64_t taken = 0;
    if (16 % inChannels == 0) {
        taken = FindPeaksInLanes<16>(inFrames, count, inChannels, outPeaks);
    } else if (24 % inChannels == 0) {
        taken = FindPeaksInLanes<24>(inFrames, count, inChannels, outPeaks);
    }
    for (const float* frame = inFrames + taken; frame != inFrames + count; frame += inChannels) {
        for (int channel = 0; channel < inChannels; ++channel) {
            MergePeak(outPeaks[channel], frame[channel], frame[channel]);
        }
    }
    for (int channel = 0; channel < inChannels; ++channel) {
        if (outPeaks[channel].low > outPeaks[channel].high) {
            outPeaks[channel] = {0, 0};
        }
    }
}

PeakBuilder::PeakBuilder(OutputFile& inFile, int inChannels, int inStreamIndex)
    : mFile(inFile), mChannels(inChannels), mStreamIndex(inStreamIndex)
{
    const PeakHeader place{};
    mFile.Write(&place, sizeof place);
}

void PeakBuilder::Add(const float* inFrames, std::int64_t inFrameCount)
{
    for (std::int64_t start = 0; start < inFrameCount; start += kPeakFramesPerBucket) {
        const std::size_t place = mFinest.size();
        mFinest.resize(place + std::size_t(mChannels));
        FindPeaks(inFrames + start * mChannels,
                  std::min<std::int64_t>(kPeakFramesPerBucket, inFrameCount - start), mChannels,
                  &mFinest[place]);
        Merge(0, &mFinest[place]);
        ++mFinestCount;
    }
    mFrameCount += inFrameCount;
    if (mFinest.size() * sizeof(Peak) >= kWriteBytes) {
        WriteFinest();
    }
}

void PeakBuilder::Merge(std::size_t inLevel, const Peak* inBucket)
{
    if (inLevel + 1 >= kPeakMaxLevels) {
        return;
    }
    if (inLevel == mLevels.size()) {
        mLevels.emplace_back();
    }
    Level& level = mLevels[inLevel];
    if (level.openParts == 0) {
        level.open.assign(inBucket, inBucket + mChannels);
    } else {
        for (int channel = 0; channel < mChannels; ++channel) {
            MergePeak(level.open[std::size_t(channel)], inBucket[channel].low, inBucket[channel].high);
        }
    }
    if (++level.openParts == kPeakLevelFactor) {
        CloseOpenBucket(inLevel);
    }
}

void PeakBuilder::CloseOpenBucket(std::size_t inLevel)
{
    Level& level = mLevels[inLevel];
    level.buckets.insert(level.buckets.end(), level.open.begin(), level.open.end());
    level.openParts = 0;
    const std::vector<Peak> closed = level.open; // merging may move the levels
    Merge(inLevel + 1, closed.data());
}

void PeakBuilder::WriteFinest()
{
    mFile.Write(mFinest.data(), mFinest.size() * sizeof(Peak));
    mFinest.clear();
}

std::int64_t PeakBuilder::Finish()
{
    WriteFinest();
    PeakHeader header{};
    std::copy_n(kPeakMagic, sizeof kPeakMagic, header.magic);
    header.version = kCacheFileVersion;
    header.headerBytes = sizeof header;
    header.sampleRate = kConformedSampleRate;
    header.channels = static_cast<std::uint32_t>(mChannels);
    header.frameCount = static_cast<std::uint64_t>(mFrameCount);
    header.sourceStreamIndex = mStreamIndex;
    header.framesPerBucket = kPeakFramesPerBucket;
    header.levelFactor = kPeakLevelFactor;
    header.levels[0] = {sizeof header, static_cast<std::uint64_t>(mFinestCount)};
    header.levelCount = 1;
    // One bucket for all ends the pyramid, so closing its level may open one more that is not wanted.
    while (header.levels[header.levelCount - 1].bucketCount > 1 && header.levelCount < kPeakMaxLevels) {
        const std::size_t index = header.levelCount - 1;
        if (mLevels[index].openParts > 0) {
            CloseOpenBucket(index);
        }
        const std::vector<Peak>& buckets = mLevels[index].buckets;
        header.levels[header.levelCount++] = {static_cast<std::uint64_t>(mFile.Size()),
                                              buckets.size() / std::size_t(mChannels)};
        mFile.Write(buckets.data(), buckets.size() * sizeof(Peak));
    }
    mFile.WriteAt(0, &header, sizeof header);
    return mFinestCount;
}

} // namespace trhost::media
