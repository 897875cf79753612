// Any bytes as a schedule of devices: manager and model must agree.

#include "preemption/Schedule.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const std::string fault = support::PlaySchedule({inBytes, inSize});
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
