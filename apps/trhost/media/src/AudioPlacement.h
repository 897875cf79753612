#pragma once

#include "FFmpegSupport.h"
#include "MediaSource.h"

#include <cstdint>

namespace trhost::media {

/// Says where the decoded frames of one audio stream lie on the time line: sample 0 is the start of the media
/// file, what comes late or is missing leaves silence, what lies before the start or overlaps is dropped.
///
/// Small differences between timestamps and the count of samples are left alone: containers round their
/// timestamps, and recorders' clocks drift; mending each would be heard.
///
/// All positions are in sample frames of the stream's own rate.
///
/// Threading: one thread at a time.
class AudioPlacement {
public:
    struct Counts {
        std::int64_t insertedFrames = 0;
        std::int64_t droppedFrames = 0;
        std::int64_t resets = 0; // jumps of the timestamps too wide to be a gap or an overlap
    };
    /// What comes before a frame, and what of the frame's beginning is left out.
    struct Place {
        std::int64_t silence = 0;
        std::int64_t skipped = 0;
    };

    /// Both outlive this.
    AudioPlacement(const MediaSource& inSource, const AVStream& inStream)
        : mSource(inSource), mStream(inStream)
    {}

    /// Frames of this rate follow.
    /// @param inPosition  where the next one goes, in the new rate.
    void StartRate(int inRate, std::int64_t inPosition);
    /// Places the next frame; the position is then behind it.
    /// @param inTimestamp  in the stream's time base, AV_NOPTS_VALUE when it has none.
    Place Next(std::int64_t inTimestamp, std::int64_t inFrames);
    /// Where the next frame goes if it follows without a gap.
    std::int64_t Position() const { return mPosition; }
    /// Something could not be decoded: the next frame's timestamp counts.
    void NoteLoss() { mLossBefore = true; }

    /// After a jump in the file: the next frame lies where its timestamp says.
    void Rejoin(std::int64_t inTimestamp);

    const Counts& Count() const { return mCounts; }

private:
    std::int64_t TimestampPosition(std::int64_t inTimestamp) const;
    std::int64_t FurthestPosition() const;

    const MediaSource& mSource;
    const AVStream& mStream;
    Counts mCounts;
    int mRate = 0;
    bool mPlaced = false; // some frame is on the time line
    std::int64_t mPosition = 0;
    std::int64_t mShift = 0;                 // from the timestamps to positions, not 0 after a reset
    std::int64_t mExpected = AV_NOPTS_VALUE; // by the timestamp of the frame before
    bool mLossBefore = false;                // something could not be decoded since the last frame
};

} // namespace trhost::media
