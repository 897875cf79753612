#include "Pacer.h"

#include <kiocore/threads/Clock.h>

#include <algorithm>

namespace trhost::devices {
namespace {

constexpr std::chrono::milliseconds kTolerance{100};
// Afterwards counting begins anew: clocks of real devices drift from ours, by little, but for ever.
constexpr std::chrono::seconds kObserved{10};

} // namespace

Pacer::Pacer(Mode inMode, int inRate, int inBufferFrames)
    : mMode(inMode), mRate(inRate), mBufferFrames(inBufferFrames), mPacing(inMode == Mode::kAlways)
{
    Start();
}

void Pacer::Start()
{
    mStart = kiocore::threads::GetClock().SteadyTime();
    mFrames = 0;
}

std::chrono::nanoseconds Pacer::Elapsed() const
{
    return kiocore::threads::GetClock().SteadyTime() - mStart;
}

std::chrono::nanoseconds Pacer::LengthOf(std::int64_t inFrames) const
{
    const std::chrono::seconds whole(inFrames / mRate);
    return whole + std::chrono::nanoseconds(inFrames % mRate * 1'000'000'000 / mRate);
}

void Pacer::Count(std::int64_t inFrames)
{
    mFrames += inFrames;
    if (mMode != Mode::kIfNeeded || mPacing) {
        return;
    }
    const std::chrono::nanoseconds elapsed = Elapsed();
    mPacing = LengthOf(mFrames) - elapsed > LengthOf(mBufferFrames) + kTolerance;
    if (!mPacing && elapsed > kObserved) {
        Start();
    }
}

std::chrono::nanoseconds Pacer::UntilNext()
{
    if (!mPacing) {
        return std::chrono::nanoseconds::zero();
    }
    // As a device would: its buffer is full, and what is next is due when a place gets free.
    return std::max(std::chrono::nanoseconds::zero(), LengthOf(mFrames - mBufferFrames) - Elapsed());
}

std::chrono::nanoseconds Pacer::UntilOver() const
{
    return mMode == Mode::kNever ? std::chrono::nanoseconds::zero()
                                 : std::max(std::chrono::nanoseconds::zero(), LengthOf(mFrames) - Elapsed());
}

} // namespace trhost::devices
