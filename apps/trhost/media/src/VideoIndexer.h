#pragma once

#include "../CacheFileFormats.h"
#include "FFmpegSupport.h"
#include "MediaSource.h"
#include "platform/NativeFile.h"

#include <cstdint>
#include <vector>

namespace trhost::media {

/// Writes down where the packets of one video stream lie. Nothing is decoded.
///
/// Threading: one thread at a time.
class VideoIndexer {
public:
    /// @param inFile  outlives this.
    VideoIndexer(const MediaSource& inSource, int inStreamIndex, OutputFile& inFile);

    /// @throws file_exception, as Finish.
    void Take(const AVPacket& inPacket);
    void Finish();

    std::int64_t EntryCount() const { return mEntryCount; }
    std::int64_t DamagedPackets() const { return mDamagedPackets; }

private:
    void WriteEntries();

    const MediaSource& mSource;
    const AVStream& mStream;
    OutputFile& mFile;
    std::vector<VideoIndexEntry> mEntries; // not yet in the file
    std::int64_t mEntryCount = 0;
    std::int64_t mKeyFrameCount = 0;
    std::int64_t mDamagedPackets = 0;
};

} // namespace trhost::media
