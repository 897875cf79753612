#include <kiocore/utility/ExpiringEntryMap.h>

#include "platform/CoarseTime.h"
#include "threads/ReplacedClock.h"

#include <kiocore/debug/Trace.h>

#include <mutex>
#include <utility>

namespace kiocore::utility {
namespace {

struct Executors {
    std::mutex lock; // guards the members below
    std::weak_ptr<threads::DelayedExecutor> inUse;
    std::shared_ptr<threads::DelayedExecutor> replacement;
};

// Leaked on purpose: maps are made and let go until the very end of the process.
Executors& TheExecutors()
{
    static Executors* const executors = new Executors;
    return *executors;
}

} // namespace

std::shared_ptr<threads::DelayedExecutor> CreateExpiringEntryMapExecutor()
{
    KIO_HOST_CALL("kiocore::utility::CreateExpiringEntryMapExecutor");
    Executors& executors = TheExecutors();
    std::lock_guard lock(executors.lock);
    if (executors.replacement) {
        return executors.replacement;
    }
    auto executor = executors.inUse.lock();
    if (!executor) {
        executor = threads::CreateDelayedExecutor("ExpiringEntries");
        executors.inUse = executor;
    }
    return executor;
}

ScReplaceExpiringEntryMapExecutor::ScReplaceExpiringEntryMapExecutor(
    std::shared_ptr<threads::DelayedExecutor> inReplacement)
    : mPrevious(std::move(inReplacement))
{
    Executors& executors = TheExecutors();
    std::lock_guard lock(executors.lock);
    executors.replacement.swap(mPrevious);
}

ScReplaceExpiringEntryMapExecutor::~ScReplaceExpiringEntryMapExecutor()
{
    Executors& executors = TheExecutors();
    std::lock_guard lock(executors.lock);
    executors.replacement.swap(mPrevious); // ours is let go with this, unlocked
}

TimeStampable::Time CoarseSteadyTime() noexcept
{
    if (threads::Clock* const clock = threads::ReplacedClock()) [[unlikely]] {
        return clock->SteadyTime();
    }
    return platform::CoarseSteadyTime();
}

} // namespace kiocore::utility
