#include "platform/Parking.h"

#if defined(__linux__)
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#include <limits>
#else
#include <condition_variable>
#include <mutex>
#endif

namespace kiocore::platform {

#if defined(__linux__)

static_assert(sizeof(std::atomic<std::uint32_t>) == 4 && std::atomic<std::uint32_t>::is_always_lock_free);

void Park(std::atomic<std::uint32_t>& ioWord, std::uint32_t inExpected,
          std::chrono::nanoseconds inLimit) noexcept
{
    if (inLimit <= std::chrono::nanoseconds::zero()) {
        return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(inLimit);
    const timespec limit{static_cast<std::time_t>(seconds.count()),
                         static_cast<long>((inLimit - seconds).count())};
    // A result is of no use: woken, changed already, interrupted and timed out all mean "look again".
    syscall(SYS_futex, &ioWord, FUTEX_WAIT_PRIVATE, inExpected, &limit, nullptr, 0);
}

void UnparkOne(std::atomic<std::uint32_t>& ioWord) noexcept
{
    syscall(SYS_futex, &ioWord, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void UnparkAll(std::atomic<std::uint32_t>& ioWord) noexcept
{
    syscall(SYS_futex, &ioWord, FUTEX_WAKE_PRIVATE, std::numeric_limits<int>::max(), nullptr, nullptr, 0);
}

#else

namespace {

// Words share a few places to sleep at; waking all of a place is right, if not frugal.
struct Place {
    std::mutex lock;
    std::condition_variable changed;
};

Place& PlaceOf(const std::atomic<std::uint32_t>& inWord)
{
    static Place* const places = new Place[64]; // leaked on purpose: locks are taken until the very end
    return places[(reinterpret_cast<std::uintptr_t>(&inWord) >> 4) % 64];
}

} // namespace

void Park(std::atomic<std::uint32_t>& ioWord, std::uint32_t inExpected,
          std::chrono::nanoseconds inLimit) noexcept
{
    Place& place = PlaceOf(ioWord);
    std::unique_lock lock(place.lock);
    if (ioWord.load() == inExpected) {
        place.changed.wait_for(lock, inLimit);
    }
}

void UnparkOne(std::atomic<std::uint32_t>& ioWord) noexcept
{
    Place& place = PlaceOf(ioWord);
    {
        // Whoever saw the old value is asleep by now, or sees the new one.
        std::lock_guard lock(place.lock);
    }
    place.changed.notify_all();
}

void UnparkAll(std::atomic<std::uint32_t>& ioWord) noexcept
{
    UnparkOne(ioWord); // wakes the whole place anyway
}

#endif

void SpinPause() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

} // namespace kiocore::platform
