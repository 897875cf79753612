#include "platform/Times.h"

#include <time.h>

namespace kioscripting_jsc::platform {
namespace {

double Seconds(clockid_t inClock) noexcept
{
    timespec time{};
    clock_gettime(inClock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

} // namespace

double ThreadSeconds() noexcept
{
    return Seconds(CLOCK_THREAD_CPUTIME_ID);
}

double SteadySeconds() noexcept
{
    return Seconds(CLOCK_MONOTONIC);
}

} // namespace kioscripting_jsc::platform
