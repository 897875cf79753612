#include <kiocore/threads/Clock.h>

#include <kiocore/debug/Trace.h>

#include "threads/ReplacedClock.h"

#include <atomic>
#include <thread>

namespace kiocore::threads {
namespace {

class SystemClock final : public Clock {
public:
    std::chrono::system_clock::time_point WallTime() override { return std::chrono::system_clock::now(); }
    std::chrono::steady_clock::time_point SteadyTime() override { return std::chrono::steady_clock::now(); }
    void Sleep(std::chrono::milliseconds inDuration) override { std::this_thread::sleep_for(inDuration); }
};

std::atomic<Clock*> sReplacement{nullptr};

// Leaked on purpose: threads that end at exit may still ask for the time.
Clock& TheSystemClock()
{
    static Clock* const clock = new SystemClock;
    return *clock;
}

} // namespace

Clock::~Clock() = default;

Clock* ReplacedClock() noexcept
{
    return sReplacement.load(std::memory_order_acquire);
}

Clock& GetClock()
{
    Clock* const replacement = ReplacedClock();
    return replacement ? *replacement : TheSystemClock();
}

void SleepFor(std::chrono::milliseconds inDuration)
{
    KIO_HOST_CALL("kiocore::threads::SleepFor", static_cast<long long>(inDuration.count()));
    GetClock().Sleep(inDuration);
}

ScReplaceClock::ScReplaceClock(Clock& inClock)
    : mPrevious(sReplacement.exchange(&inClock, std::memory_order_acq_rel))
{}
ScReplaceClock::~ScReplaceClock()
{
    sReplacement.store(mPrevious, std::memory_order_release);
}

} // namespace kiocore::threads
