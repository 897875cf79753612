#include <kiocore/threads/RecursiveMutex.h>

#include <kiocore/debug/Trace.h>

#include "platform/Parking.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <thread>

namespace kiocore::threads {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::uint32_t kMostSpins = 100;
constexpr std::chrono::hours kForever{24}; // per sleep; the caller goes round again

// The form in which debuggers name threads.
std::string ThreadText(std::uintptr_t inThread)
{
    char digits[2 * sizeof(inThread)];
    return "0x" + std::string(digits, std::to_chars(digits, digits + sizeof(digits), inThread, 16).ptr);
}

bool SpinningHelps()
{
    static const bool helps = std::thread::hardware_concurrency() > 1;
    return helps;
}

} // namespace

// How long to spin follows what it took lately: a lock held for long teaches its waiters to sleep soon.
bool RecursiveMutex::Spin(const char* inName) noexcept
{
    if (!SpinningHelps()) {
        return false;
    }
    const std::uint32_t usual = mUsualSpins.load(std::memory_order_relaxed);
    const std::uint32_t most = std::min(kMostSpins, usual * 2 + 10);
    std::uint32_t spins = 0;
    bool got = false;
    for (; spins < most && !got; ++spins) {
        platform::SpinPause();
        const std::uint32_t state = mState.load(std::memory_order_relaxed);
        if (state == kHeldAndAwaited) {
            break; // others sleep already
        }
        got = state == kFree && TryLock(inName);
    }
    const auto change = (static_cast<std::int32_t>(spins) - static_cast<std::int32_t>(usual)) / 8;
    mUsualSpins.store(static_cast<std::uint32_t>(static_cast<std::int32_t>(usual) + change),
                      std::memory_order_relaxed);
    return got;
}

void RecursiveMutex::LockSlowly(const char* inName, std::chrono::milliseconds inLimit)
{
    if (Spin(inName)) {
        return;
    }
    const SteadyClock::time_point start = SteadyClock::now();
    bool reported = false;
    // From here on it is taken as "awaited": we cannot know whether others still sleep.
    while (mState.exchange(kHeldAndAwaited, std::memory_order_acquire) != kFree) {
        const SteadyClock::duration waited = SteadyClock::now() - start;
        std::chrono::nanoseconds sleep = kForever;
        if (!reported) {
            if (waited >= inLimit) {
                reported = true;
                ReportWait(inName, std::chrono::duration_cast<std::chrono::milliseconds>(waited));
                continue;
            }
            sleep = std::min<std::chrono::nanoseconds>(sleep, inLimit - waited);
        }
        platform::Park(mState, kHeldAndAwaited, sleep);
    }
    Own(CallingThread(), inName);
}

void RecursiveMutex::ReportWait(const char* inName, std::chrono::milliseconds inWaited) const
{
    const std::uintptr_t owner = mOwner.load(std::memory_order_relaxed);
    const char* const holder = mHolder.load(std::memory_order_relaxed);
    std::string text = "Thread " + ThreadText(CallingThread());
    if (inName) {
        text.append(" (").append(inName).append(")");
    }
    text.append(" has waited ").append(std::to_string(inWaited.count())).append(" ms for lock ");
    text.append(mName ? mName : ThreadText(reinterpret_cast<std::uintptr_t>(this)));
    text.append(", held by thread ").append(owner ? ThreadText(owner) : "unknown");
    if (holder) {
        text.append(" (").append(holder).append(")");
    }
    text.append("; it goes on waiting");
    debug::Trace(1, "Threads", text);
}

void RecursiveMutex::WakeOne() noexcept
{
    platform::UnparkOne(mState);
}

} // namespace kiocore::threads
