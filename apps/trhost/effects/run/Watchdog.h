#pragma once

#include "RunningCalls.h"

#include <kiocore/threads/DelayedExecutor.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace trhost::effects {

/// Tells of plug-ins that do not return. Looks at the innermost call of each thread: a call that waits for
/// another one, which it made, is not to blame, and is looked at again once that has returned.
///
/// A call is told of as soon as it has run for the limit; one that made another call meanwhile, up to one
/// limit after that.
///
/// Threading: Enter and Leave on any thread.
class Watchdog {
public:
    /// @param inMatchName  cut after CallEntry::kLongestName bytes.
    using Callback = std::function<void(const std::string& inMatchName, std::chrono::seconds inRunning)>;
    static constexpr std::chrono::seconds kDefaultLimit{10};

    /// @param inCallback  called once for each call that runs longer than the limit, on the executor, under a
    ///     lock of ours: it must not let this go.
    /// @param inExecutor  looks; the watchdog's own thread unless given, started with the first call. Given
    ///     when a test decides when time passes.
    explicit Watchdog(Callback inCallback, std::chrono::milliseconds inLimit = kDefaultLimit,
                      std::shared_ptr<kiocore::threads::DelayedExecutor> inExecutor = nullptr);
    /// Waits for a callback that is running. The thread is joined.
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void Enter(std::string_view inMatchName) noexcept;
    void Leave() noexcept { mCalls.Leave(); }

private:
    class Looking;
    Watchdog(Callback inCallback, std::chrono::milliseconds inLimit,
             std::shared_ptr<kiocore::threads::DelayedExecutor> inExecutor,
             const std::shared_ptr<CallTable>& inTable);

    RunningCalls mCalls;
    const std::shared_ptr<Looking> mLooking;
    const std::shared_ptr<kiocore::threads::DelayedExecutor> mExecutor;
    std::atomic<bool> mHasBegun{false};
};

} // namespace trhost::effects
