#pragma once

#include "CallTable.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

namespace trhost::effects {

/// Those who keep a table of running calls; each has one table at a time.
enum class CallKeeper { kBlackBox, kWatchdog };
inline constexpr std::size_t kCallKeeperCount = 2;

/// Writes a table of calls: gives each thread a slot at its first call and takes it back when the thread
/// ends. When all are taken, further threads go unnamed until they begin an outermost call while one is
/// free.
///
/// Threading: any thread; the calls of one thread nest. Those that are running when this goes just end.
class RunningCalls {
public:
    /// @param inTable  stays until the last thread that has a slot of it has let go.
    RunningCalls(CallKeeper inKeeper, std::shared_ptr<CallTable> inTable);
    ~RunningCalls();
    RunningCalls(const RunningCalls&) = delete;
    RunningCalls& operator=(const RunningCalls&) = delete;

    /// A few nanoseconds; neither allocates nor locks but at the first call of a thread.
    void Enter(std::string_view inName, std::int64_t inStartTicks = 0) noexcept;
    void Leave() noexcept;
    const CallTable& Table() const;

    struct Slots;

private:
    const CallKeeper mKeeper;
    const std::shared_ptr<Slots> mSlots;
};

} // namespace trhost::effects
