#pragma once

#include <kiocore/threads/Clock.h>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>

namespace support {

/// A clock that stands still until the test winds it; in use for as long as it lives.
///
/// kSleepAdvances: a sleep moves the time on by its length and returns at once, after calling the test's
/// function: the place to let happen what the code under test polls for. For code tested on one thread.
/// kSleepBlocks: a sleeper stays asleep until Advance has moved the time past its end. For code that
/// sleeps on a thread of its own; WaitForSleepers tells when it has got there.
///
/// Threading: any thread. The test's function is called unlocked, on the thread that sleeps.
class HandWoundClock final : public kiocore::threads::Clock {
public:
    enum class Mode { kSleepAdvances, kSleepBlocks };

    explicit HandWoundClock(Mode inMode = Mode::kSleepAdvances) : mMode(inMode), mInUse(*this) {}
    /// Wakes who still sleeps.
    ~HandWoundClock() override;

    std::chrono::system_clock::time_point WallTime() override;
    std::chrono::steady_clock::time_point SteadyTime() override;
    void Sleep(std::chrono::milliseconds inDuration) override;

    void Advance(std::chrono::nanoseconds inDuration);
    /// Sets the wall time, back or forth; the steady time stays.
    void SetWallTime(std::chrono::system_clock::time_point inTime);
    void OnSleep(std::function<void()> inFunction);

    /// Waits until at least so many threads are asleep.
    void WaitForSleepers(std::size_t inCount);
    /// How often anybody went to sleep.
    std::size_t SleepCount() const;

private:
    const Mode mMode;
    mutable std::mutex mLock; // guards the members below
    std::condition_variable mChanged;
    std::chrono::system_clock::time_point mWall{std::chrono::hours(24 * 365 * 50)};
    std::chrono::steady_clock::time_point mSteady{std::chrono::hours(1)};
    std::function<void()> mOnSleep;
    std::size_t mSleepers = 0;
    std::size_t mSleeps = 0;
    bool mEnding = false;
    kiocore::threads::ScReplaceClock mInUse; // last: out of use before anything else goes
};

} // namespace support
