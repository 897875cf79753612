#include "ConformedAudioWriter.h"

#include <algorithm>
#include <cstring>

namespace trhost::media {
namespace {

constexpr std::int64_t kDeliveryBytes = 256 * 1024; // fits the second-level cache with what the decoder needs

std::int64_t DeliveryFrames(int inChannels)
{
    const std::int64_t bucketBytes =
        std::int64_t(kPeakFramesPerBucket) * inChannels * std::int64_t(sizeof(float));
    return std::max<std::int64_t>(1, kDeliveryBytes / bucketBytes) * kPeakFramesPerBucket;
}

} // namespace

ConformedAudioWriter::ConformedAudioWriter(OutputFile* inConformed, OutputFile* inPeaks, int inChannels,
                                           int inStreamIndex, int inSourceSampleRate,
                                           std::uint64_t inChannelMask)
    : mConformed(inConformed), mChannels(inChannels), mStreamIndex(inStreamIndex),
      mSourceSampleRate(inSourceSampleRate), mChannelMask(inChannelMask),
      mDeliveryFrames(DeliveryFrames(inChannels))
{
    if (inPeaks) {
        mPeaks = std::make_unique<PeakBuilder>(*inPeaks, inChannels, inStreamIndex);
    }
    if (mConformed) {
        const ConformedAudioHeader place{};
        mConformed->Write(&place, sizeof place);
    }
}

float* ConformedAudioWriter::Room(std::int64_t inFrames)
{
    if (mBuffered >= mDeliveryFrames) {
        const std::int64_t whole = mBuffered - mBuffered % mDeliveryFrames;
        Deliver(whole);
        mBuffered -= whole;
        std::memmove(mBuffer.data(), mBuffer.data() + whole * mChannels,
                     std::size_t(mBuffered * mChannels) * sizeof(float));
    }
    const auto needed = static_cast<std::size_t>((mBuffered + inFrames) * mChannels);
    if (mBuffer.size() < needed) {
        mBuffer.resize(needed + std::size_t(mDeliveryFrames * mChannels));
    }
    return mBuffer.data() + mBuffered * mChannels;
}

void ConformedAudioWriter::Commit(std::int64_t inFrames)
{
    mBuffered += inFrames;
    mFrameCount += inFrames;
}

void ConformedAudioWriter::AddSilence(std::int64_t inFrames)
{
    while (inFrames > 0) {
        const std::int64_t part = std::min(inFrames, mDeliveryFrames);
        std::fill_n(Room(part), part * mChannels, 0.0F);
        Commit(part);
        inFrames -= part;
    }
}

void ConformedAudioWriter::Deliver(std::int64_t inFrames)
{
    if (mPeaks) {
        mPeaks->Add(mBuffer.data(), inFrames);
    }
    if (mConformed) {
        mConformed->Write(mBuffer.data(), std::size_t(inFrames * mChannels) * sizeof(float));
    }
}

std::int64_t ConformedAudioWriter::Finish()
{
    Deliver(mBuffered);
    mBuffered = 0;
    if (mConformed) {
        ConformedAudioHeader header{};
        std::copy_n(kConformedAudioMagic, sizeof kConformedAudioMagic, header.magic);
        header.version = kCacheFileVersion;
        header.headerBytes = sizeof header;
        header.sampleRate = kConformedSampleRate;
        header.channels = static_cast<std::uint32_t>(mChannels);
        header.frameCount = static_cast<std::uint64_t>(mFrameCount);
        header.sourceStreamIndex = mStreamIndex;
        header.sourceSampleRate = static_cast<std::uint32_t>(mSourceSampleRate);
        header.channelMask = mChannelMask;
        mConformed->WriteAt(0, &header, sizeof header);
    }
    return mPeaks ? mPeaks->Finish() : 0;
}

} // namespace trhost::media
