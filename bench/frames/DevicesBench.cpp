#include "FramesBench.h"

#include "support/Interleaved.h"

#include <TR/PreemptionManager.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace bench {
namespace {

constexpr std::size_t kPairs = 31;

class Device final : public TR::IPreemptableProxy, public virtual kiocore::classref::UnknownBase {
public:
    std::uint32_t GetPriority() override { return kPriorityPlayer; }
    void Activate() override { ++activations; }
    void Preempt(const TR::IPreemptableProxyRef&, std::shared_ptr<kiocore::threads::Gate>& ioGate) override
    {
        ioGate->Open();
    }
    std::uint32_t GetHandoverKey() override { return 1; }
    void* QueryMap(const CFUUIDBytes&) override { return nullptr; }
    std::size_t activations = 0;
};

/// A thread asleep at a mutex and a condition variable: the least that a hand-over can be made of.
class BareHandOver {
public:
    void Open()
    {
        {
            const std::lock_guard lock(mLock);
            mOpen = true;
        }
        mChanged.notify_all();
    }
    void PassThrough()
    {
        std::unique_lock lock(mLock);
        mChanged.wait(lock, [this] { return mOpen; });
    }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    bool mOpen = false;
};

struct OurGate : kiocore::threads::Gate {
    OurGate() : Gate(false) {}
};

/// From the opening until the other thread runs again, in nanoseconds, summed over all hand-overs.
/// @param inPauseMicroseconds  how long the waiting thread has had time to fall asleep.
template <typename Door>
double WakeTimes(std::size_t inHandOvers, double inPauseMicroseconds)
{
    std::vector<Door> doors(inHandOvers);
    std::vector<double> woken(inHandOvers);
    std::atomic<std::size_t> arrived{0};
    std::thread sleeper([&] {
        for (std::size_t number = 0; number < inHandOvers; ++number) {
            arrived.store(number + 1, std::memory_order_release);
            doors[number].PassThrough();
            woken[number] = Now(CLOCK_MONOTONIC);
        }
    });
    double sum = 0;
    for (std::size_t number = 0; number < inHandOvers; ++number) {
        while (arrived.load(std::memory_order_acquire) <= number) {
        }
        const double opening = Now(CLOCK_MONOTONIC) + inPauseMicroseconds * 1000;
        while (Now(CLOCK_MONOTONIC) < opening) {
        }
        const double start = Now(CLOCK_MONOTONIC);
        doors[number].Open();
        while (arrived.load(std::memory_order_acquire) == number + 1 && number + 1 < inHandOvers) {
        }
        sum -= start;
    }
    sleeper.join();
    for (const double time : woken) {
        sum += time;
    }
    return sum;
}

} // namespace

void BenchDevices()
{
    PrintHeader("Arbitration of devices");
    const auto manager = TR::CreatePreemptionManager();
    const auto device = kiocore::classref::MakeObject<Device>();
    const TR::IPreemptableProxyRef proxy = device;
    manager->ActivateDevice(proxy);
    constexpr std::size_t kCalls = 200'000;
    std::atomic<TR::IPreemptableProxy*> called{proxy.Get()};
    const auto floor = [&] {
        return Timed(CLOCK_MONOTONIC, [&] {
            for (std::size_t call = 0; call < kCalls; ++call) {
                called.load(std::memory_order_relaxed)->Activate();
            }
        });
    };
    const auto ours = [&] {
        return Timed(CLOCK_MONOTONIC, [&] {
            for (std::size_t call = 0; call < kCalls; ++call) {
                manager->ActivateDevice(proxy);
            }
        });
    };
    PrintRow("ActivateDevice, holder again, against the device's own call",
             Compare(floor, ours, kPairs, kCalls), 0, "ns");
    PrintNote("Goal: at most 100 ns.");
    manager->Shutdown();

    constexpr std::size_t kHandOvers = 100;
    for (const double pause : {0.0, 100.0}) {
        const auto bare = [&] { return WakeTimes<BareHandOver>(kHandOvers, pause); };
        const auto gate = [&] { return WakeTimes<OurGate>(kHandOvers, pause); };
        PrintRow(pause == 0 ? "wake after the gate opens, at once" : "wake after the gate opens, from sleep",
                 Compare(bare, gate, kPairs, kHandOvers), 2, "us");
    }
}

} // namespace bench
