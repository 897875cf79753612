#include "VideoIndexer.h"

#include <algorithm>

namespace trhost::media {
namespace {

constexpr std::size_t kEntriesAtOnce = 2048;

static_assert(kNoTimestamp == AV_NOPTS_VALUE);

} // namespace

VideoIndexer::VideoIndexer(const MediaSource& inSource, int inStreamIndex, OutputFile& inFile)
    : mSource(inSource), mStream(*inSource.Format().streams[inStreamIndex]), mFile(inFile)
{
    mEntries.reserve(kEntriesAtOnce);
    const VideoIndexHeader place{};
    mFile.Write(&place, sizeof place);
}

void VideoIndexer::Take(const AVPacket& inPacket)
{
    const bool isKey = inPacket.flags & AV_PKT_FLAG_KEY;
    const bool isCorrupt = inPacket.flags & AV_PKT_FLAG_CORRUPT;
    VideoIndexEntry entry{inPacket.pts, inPacket.dts, inPacket.pos, static_cast<std::uint32_t>(inPacket.size),
                          0};
    entry.flags = (isKey ? kVideoIndexFlag_KeyFrame : 0U) |
                  (inPacket.flags & AV_PKT_FLAG_DISCARD ? kVideoIndexFlag_Discard : 0U) |
                  (isCorrupt ? kVideoIndexFlag_Corrupt : 0U);
    mEntries.push_back(entry);
    ++mEntryCount;
    mKeyFrameCount += isKey;
    mDamagedPackets += isCorrupt;
    if (mEntries.size() == kEntriesAtOnce) {
        WriteEntries();
    }
}

void VideoIndexer::WriteEntries()
{
    mFile.Write(mEntries.data(), mEntries.size() * sizeof(VideoIndexEntry));
    mEntries.clear();
}

void VideoIndexer::Finish()
{
    WriteEntries();
    VideoIndexHeader header{};
    std::copy_n(kVideoIndexMagic, sizeof kVideoIndexMagic, header.magic);
    header.version = kCacheFileVersion;
    header.headerBytes = sizeof header;
    header.timeBaseNumerator = mStream.time_base.num;
    header.timeBaseDenominator = mStream.time_base.den;
    header.entryCount = static_cast<std::uint64_t>(mEntryCount);
    header.sourceStreamIndex = mStream.index;
    header.keyFrameCount = static_cast<std::uint32_t>(mKeyFrameCount);
    header.startTicks = av_rescale_q(mSource.StartMicroseconds(), {1, AV_TIME_BASE}, mStream.time_base);
    header.width = static_cast<std::uint32_t>(std::max(0, mStream.codecpar->width));
    header.height = static_cast<std::uint32_t>(std::max(0, mStream.codecpar->height));
    mFile.WriteAt(0, &header, sizeof header);
}

} // namespace trhost::media
