#include <kiocore/threads/Gate.h>

#include "platform/Parking.h"

#include <thread>

namespace kiocore::threads {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::hours kForever{24}; // per sleep; the caller goes round again
// A device that is about to let go does so within microseconds; a sleep and a wake-up take tens of them.
constexpr int kSpins = 200;

} // namespace

void Gate::Open() noexcept
{
    if (mState.exchange(kOpen, std::memory_order_acq_rel) == kClosedAndAwaited) {
        platform::UnparkAll(mState);
    }
}

void Gate::Close() noexcept
{
    std::uint32_t expected = kOpen;
    mState.compare_exchange_strong(expected, kClosed, std::memory_order_acq_rel);
}

void Gate::PassThrough() noexcept
{
    while (!PassThroughUntil(SteadyClock::now() + kForever)) {
    }
}

bool Gate::PassThroughUntil(SteadyClock::time_point inDeadline) noexcept
{
    static const bool spinningHelps = std::thread::hardware_concurrency() > 1;
    for (int spin = 0; spinningHelps && spin < kSpins; ++spin) {
        if (IsOpen()) {
            return true;
        }
        platform::SpinPause();
    }
    for (;;) {
        std::uint32_t expected = kClosed;
        mState.compare_exchange_strong(expected, kClosedAndAwaited, std::memory_order_acq_rel);
        if (IsOpen()) {
            return true;
        }
        const auto left = inDeadline - SteadyClock::now();
        if (left <= left.zero()) {
            return false;
        }
        platform::Park(mState, kClosedAndAwaited, std::chrono::duration_cast<std::chrono::nanoseconds>(left));
    }
}

} // namespace kiocore::threads
