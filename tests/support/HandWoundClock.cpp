#include "support/HandWoundClock.h"

namespace support {

HandWoundClock::~HandWoundClock()
{
    std::unique_lock lock(mLock);
    mEnding = true;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return mSleepers == 0; });
}

std::chrono::system_clock::time_point HandWoundClock::WallTime()
{
    std::lock_guard lock(mLock);
    return mWall;
}

std::chrono::steady_clock::time_point HandWoundClock::SteadyTime()
{
    std::lock_guard lock(mLock);
    return mSteady;
}

void HandWoundClock::Sleep(std::chrono::milliseconds inDuration)
{
    std::function<void()> onSleep;
    {
        std::lock_guard lock(mLock);
        ++mSleeps;
        onSleep = mOnSleep;
    }
    if (onSleep) {
        onSleep();
    }
    if (mMode == Mode::kSleepAdvances) {
        Advance(inDuration);
        return;
    }
    std::unique_lock lock(mLock);
    const auto end = mSteady + inDuration;
    ++mSleepers;
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return mSteady >= end || mEnding; });
    --mSleepers;
    mChanged.notify_all();
}

void HandWoundClock::Advance(std::chrono::nanoseconds inDuration)
{
    std::lock_guard lock(mLock);
    mSteady += std::chrono::duration_cast<std::chrono::steady_clock::duration>(inDuration);
    mWall += std::chrono::duration_cast<std::chrono::system_clock::duration>(inDuration);
    mChanged.notify_all();
}

void HandWoundClock::SetWallTime(std::chrono::system_clock::time_point inTime)
{
    std::lock_guard lock(mLock);
    mWall = inTime;
}

void HandWoundClock::OnSleep(std::function<void()> inFunction)
{
    std::lock_guard lock(mLock);
    mOnSleep = std::move(inFunction);
}

void HandWoundClock::WaitForSleepers(std::size_t inCount)
{
    std::unique_lock lock(mLock);
    mChanged.wait(lock, [&] { return mSleepers >= inCount; });
}

std::size_t HandWoundClock::SleepCount() const
{
    std::lock_guard lock(mLock);
    return mSleeps;
}

} // namespace support
