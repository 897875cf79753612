#pragma once

#include "support/HandWoundClock.h"

#include <kiocore/threads/DelayedExecutor.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>

namespace support {

/// Begins tasks when the test has wound the clock past their time, on the test's own thread. What throws
/// reaches the test.
///
/// Threading: submitted to from any thread; the rest on the test's.
class HandWoundExecutor final : public kiocore::threads::DelayedExecutor {
public:
    /// @param ioClock  lives longer than this.
    explicit HandWoundExecutor(HandWoundClock& ioClock) : mClock(ioClock) {}

    int Submit(Task inTask) override;
    int SubmitAfter(std::chrono::milliseconds inDelay, Task inTask) override;

    /// Winds the clock on, stopping at each task that comes due on the way, also those that tasks submit.
    /// @return how many ran.
    std::size_t Advance(std::chrono::milliseconds inDuration);
    /// From now on; what is held stays.
    void Refuse(bool inRefuses);
    std::size_t HeldCount() const;

private:
    using Time = std::chrono::steady_clock::time_point;
    bool RunNextDue(Time inUntil);

    HandWoundClock& mClock;
    mutable std::mutex mLock; // guards the members below
    std::multimap<Time, Task> mHeld;
    bool mRefuses = false;
};

} // namespace support
