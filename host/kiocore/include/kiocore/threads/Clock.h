#pragma once

#include <kiocore/Export.h>

#include <chrono>

namespace kiocore::threads {

/// The time and the waiting of the host libraries. A test winds its own by hand.
///
/// Threading: any thread.
class KIO_EXPORT Clock {
public:
    virtual ~Clock();
    virtual std::chrono::system_clock::time_point WallTime() = 0;
    virtual std::chrono::steady_clock::time_point SteadyTime() = 0;
    virtual void Sleep(std::chrono::milliseconds inDuration) = 0;
};

/// The clock in use: the system's, or the innermost replacement.
KIO_EXPORT Clock& GetClock();
/// Sleeps on the clock in use.
KIO_EXPORT void SleepFor(std::chrono::milliseconds inDuration);

/// Replaces the clock for as long as it lives.
class KIO_EXPORT ScReplaceClock {
public:
    explicit ScReplaceClock(Clock& inClock);
    ~ScReplaceClock();
    ScReplaceClock(const ScReplaceClock&) = delete;
    ScReplaceClock& operator=(const ScReplaceClock&) = delete;

private:
    Clock* mPrevious;
};

} // namespace kiocore::threads
