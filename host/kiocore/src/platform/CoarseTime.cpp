#include "CoarseTime.h"

#include <ctime>

namespace kiocore::platform {

std::chrono::steady_clock::time_point CoarseSteadyTime() noexcept
{
#if defined(__linux__)
    // The same zero as std::chrono::steady_clock, which is CLOCK_MONOTONIC.
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec)));
#else
    return std::chrono::steady_clock::now();
#endif
}

} // namespace kiocore::platform
