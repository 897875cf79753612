#include "AudioPlacement.h"

#include <algorithm>
#include <cstdlib>

namespace trhost::media {
namespace {

// A jump from one frame to the next of this length is a gap or an overlap: less than any lost packet of
// the usual codecs, more than timestamps waver.
constexpr std::int64_t kJumpMs = 15;
// Sound that has drifted this far from its timestamps is out of step with the lips.
constexpr std::int64_t kDriftMs = 40;
// More than this back is no overlap but a clock that was set anew.
constexpr std::int64_t kLongestOverlapMs = 1000;
// Silence reaches at most this far beyond the length that the file declares...
constexpr std::int64_t kBeyondDurationMs = 10'000;
// ...and a gap is at most this long when it declares none.
constexpr std::int64_t kLongestGapMs = 600'000;

constexpr AVRational kMicroseconds = {1, AV_TIME_BASE};

std::int64_t Frames(std::int64_t inMs, int inRate)
{
    return inMs * inRate / 1000;
}

} // namespace

void AudioPlacement::StartRate(int inRate, std::int64_t inPosition)
{
    if (mPlaced && mRate != inRate) {
        mShift = av_rescale(mShift, inRate, mRate);
        mPosition = inPosition;
        mExpected = AV_NOPTS_VALUE;
    }
    mRate = inRate;
}

std::int64_t AudioPlacement::TimestampPosition(std::int64_t inTimestamp) const
{
    const AVRational frameTime = {1, mRate};
    return av_rescale_q(inTimestamp, mStream.time_base, frameTime) -
           av_rescale_q(mSource.StartMicroseconds(), kMicroseconds, frameTime) + mShift;
}

std::int64_t AudioPlacement::FurthestPosition() const
{
    // A duration that was worked out from timestamps would vouch for the very one in question.
    const std::int64_t duration = mSource.Format().duration;
    return duration > 0 && mSource.Format().duration_estimation_method == AVFMT_DURATION_FROM_STREAM
               ? av_rescale_q(duration, kMicroseconds, {1, mRate}) + Frames(kBeyondDurationMs, mRate)
               : mPosition + Frames(kLongestGapMs, mRate);
}

AudioPlacement::Place AudioPlacement::Next(std::int64_t inTimestamp, std::int64_t inFrames)
{
    Place place;
    if (inTimestamp == AV_NOPTS_VALUE) {
        mPlaced = true;
        mLossBefore = false;
        mPosition += inFrames;
        return place;
    }
    const std::int64_t at = TimestampPosition(inTimestamp);
    const std::int64_t tick =
        std::max<std::int64_t>(1, av_rescale_q(1, mStream.time_base, AVRational{1, mRate}));
    std::int64_t off = at - mPosition;
    if (!mPlaced) {
        // A container whose ticks are longer than a sample cannot say "0" exactly.
        off = std::abs(off) <= tick && tick > 2 ? 0 : off;
    } else {
        const std::int64_t jump = mExpected == AV_NOPTS_VALUE ? off : at - mExpected;
        const bool isJump = std::abs(jump) >= Frames(kJumpMs, mRate) + tick || mLossBefore;
        const bool isDrift = std::abs(off) >= Frames(kDriftMs, mRate) + tick;
        off = std::abs(off) > 2 * tick && (isJump || isDrift) ? off : 0;
    }
    mExpected = at + inFrames;

    if (off > 0 && mPosition + off > FurthestPosition()) {
        off = -Frames(kLongestOverlapMs, mRate) - 1; // as senseless as a wide jump back
    }
    if (off < -Frames(kLongestOverlapMs, mRate)) {
        ++mCounts.resets;
        mShift += mPosition - at;
        mExpected = mPosition + inFrames;
        off = 0;
    }
    place.silence = std::max<std::int64_t>(0, off);
    place.skipped = std::min<std::int64_t>(std::max<std::int64_t>(0, -off), inFrames);
    mCounts.insertedFrames += place.silence;
    mCounts.droppedFrames += place.skipped;
    mPlaced = mPlaced || place.skipped < inFrames;
    mLossBefore = false;
    mPosition += place.silence + inFrames - place.skipped;
    return place;
}

void AudioPlacement::Rejoin(std::int64_t inTimestamp)
{
    mPosition = TimestampPosition(inTimestamp);
    mExpected = AV_NOPTS_VALUE;
    mPlaced = true;
    mLossBefore = false;
}

} // namespace trhost::media
