#pragma once

#include "Interleaved.h"

#include <atomic>
#include <numeric>
#include <thread>
#include <vector>

namespace bench {

/// Runs inWork on inThreads threads at once, each told its number. Waiting for memory that another thread
/// writes is processor time; waiting for a processor that somebody else has is not, and does not count.
/// @return the processor time of a thread, on average.
template <typename Work>
double OnThreads(unsigned inThreads, const Work& inWork)
{
    std::vector<double> times(inThreads);
    const auto run = [&](unsigned inNumber) {
        times[inNumber] = Timed(CLOCK_THREAD_CPUTIME_ID, [&] { inWork(inNumber); });
    };
    std::atomic<unsigned> ready{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> others;
    for (unsigned number = 1; number < inThreads; ++number) {
        others.emplace_back([&, number] {
            ++ready;
            while (!go.load(std::memory_order_acquire)) {
            }
            run(number);
        });
    }
    while (ready + 1 < inThreads) {
    }
    go.store(true, std::memory_order_release);
    run(0);
    for (std::thread& other : others) {
        other.join();
    }
    return std::accumulate(times.begin(), times.end(), 0.0) / inThreads;
}

} // namespace bench
