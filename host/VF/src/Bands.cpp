#include "Bands.h"

#include <kiocore/threads/AsyncExecutor.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <thread>

namespace VF {
namespace {

constexpr std::uint64_t kLeastBandPixels = 128 * 1024; // below, a thread is not worth waking

/// Outlives the call for tasks that come too late; these find nothing left and never touch the work.
struct Run {
    Run(unsigned inCount, const std::function<bool(unsigned)>& inWork) : count(inCount), work(inWork) {}

    void TakePart()
    {
        for (unsigned band = next.fetch_add(1); band < count; band = next.fetch_add(1)) {
            if (!failed.load(std::memory_order_relaxed)) {
                try {
                    if (!work(band)) {
                        failed = true;
                    }
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
            }
            if (done.fetch_add(1) + 1 == count) {
                done.notify_all();
            }
        }
    }
    void WaitForOthers()
    {
        for (unsigned now = done.load(); now != count; now = done.load()) {
            done.wait(now);
        }
    }

    const unsigned count;
    const std::function<bool(unsigned)>& work;
    std::atomic<unsigned> next{0};
    std::atomic<unsigned> done{0};
    std::atomic<bool> failed{false};
};

} // namespace

unsigned BandThreads()
{
    static const unsigned count = std::max(std::thread::hardware_concurrency(), 1u);
    return count;
}

std::uint32_t BandRows(std::uint32_t inRows, std::uint64_t inPixelsPerRow, std::uint32_t inUnit,
                       unsigned inMostBands)
{
    const std::uint64_t worth = std::max<std::uint64_t>(inRows * inPixelsPerRow / kLeastBandPixels, 1);
    const auto bands = static_cast<std::uint32_t>(std::min<std::uint64_t>(worth, inMostBands));
    return std::min(((inRows + bands - 1) / bands + inUnit - 1) / inUnit * inUnit, inRows);
}

bool RunBands(unsigned inCount, const std::function<bool(unsigned)>& inWork)
{
    if (inCount == 1) {
        return inWork(0);
    }
    const auto run = std::make_shared<Run>(inCount, inWork);
    if (const auto executor = kiocore::threads::GetCPUBoundExecutor()) {
        const unsigned helpers = std::min(inCount, BandThreads()) - 1;
        for (unsigned helper = 0; helper < helpers; ++helper) {
            if (executor->Submit([run] { run->TakePart(); }) < 0) {
                break;
            }
        }
    }
    run->TakePart();
    run->WaitForOthers();
    return !run->failed;
}

} // namespace VF
