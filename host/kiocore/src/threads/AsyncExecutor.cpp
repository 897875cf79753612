#include <kiocore/threads/AsyncExecutor.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include "threads/SubExecutor.h"
#include "threads/ThreadPool.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace kiocore::threads {
namespace {

using Pool = ScReplaceExecutor::Pool;

constexpr std::size_t kMostIOThreads = 16;

struct Slot {
    std::shared_ptr<ThreadPool> pool; // empty until asked for, and again after termination
    std::vector<std::shared_ptr<AsyncExecutor>> replacements; // innermost last
};

struct Slots {
    std::mutex lock; // guards the members below
    std::array<Slot, 3> slots;
    bool exiting = false;

    Slot& Of(Pool inPool) { return slots[static_cast<std::size_t>(inPool)]; }
};

// Leaked on purpose: handles and queues are let go, and asked for, until the very end of the process.
Slots& TheSlots()
{
    static Slots* const slots = new Slots;
    return *slots;
}

// What is still to get done before anything ends may need the pools.
void RunPreTerminationExecutorDry()
{
    std::shared_ptr<ThreadPool> executor;
    {
        Slots& all = TheSlots();
        std::lock_guard lock(all.lock);
        executor = all.Of(Pool::kPreTermination).pool;
    }
    if (executor) {
        executor->CloseWhenDry();
    }
}

// Closes all before it waits for any: what they accepted may hand work from one to the other.
void EndPools(bool inExiting)
{
    RunPreTerminationExecutorDry();
    std::array<std::shared_ptr<ThreadPool>, 3> pools;
    {
        Slots& all = TheSlots();
        std::lock_guard lock(all.lock);
        all.exiting = all.exiting || inExiting;
        std::transform(all.slots.begin(), all.slots.end(), pools.begin(),
                       [](Slot& slot) { return std::exchange(slot.pool, nullptr); });
    }
    for (const auto& pool : pools) {
        if (pool) {
            pool->Close();
        }
    }
    for (const auto& pool : pools) {
        if (pool) {
            pool->Terminate();
        }
    }
}

// Made with the first pool, hence destroyed before whatever static was there by then: tasks that still
// run may use those.
struct AtExit {
    ~AtExit() { EndPools(true); }
};

std::shared_ptr<ThreadPool> MakePool(Pool inPool)
{
    static AtExit atExit;
    switch (inPool) {
    case Pool::kCPUBound:
        return std::make_shared<ThreadPool>("CPU-bound", "CPU",
                                            std::max<std::size_t>(1, std::thread::hardware_concurrency()));
    case Pool::kIOBound:
        return std::make_shared<ThreadPool>("I/O-bound", "IO", kMostIOThreads);
    case Pool::kPreTermination:
        break;
    }
    return std::make_shared<ThreadPool>("pre-termination", "PreTermination", 1);
}

std::shared_ptr<AsyncExecutor> CurrentExecutor(Pool inPool)
{
    Slots& all = TheSlots();
    std::lock_guard lock(all.lock);
    Slot& slot = all.Of(inPool);
    if (!slot.replacements.empty()) {
        return slot.replacements.back();
    }
    if (!slot.pool) {
        slot.pool = MakePool(inPool);
        if (all.exiting) {
            slot.pool->Close(); // nobody would join its threads
        }
    }
    return slot.pool;
}

std::string NameOf(const AsyncExecutor* inExecutor)
{
    if (!inExecutor) {
        return "none";
    }
    const auto* ours = dynamic_cast<const QueueBase*>(inExecutor);
    return ours ? ours->Name() : "replacement";
}

} // namespace

std::shared_ptr<AsyncExecutor> CreateCPUBoundExecutor()
{
    KIO_HOST_CALL("kiocore::threads::CreateCPUBoundExecutor");
    return CurrentExecutor(Pool::kCPUBound);
}

std::shared_ptr<AsyncExecutor> GetCPUBoundExecutor()
{
    KIO_HOST_CALL("kiocore::threads::GetCPUBoundExecutor");
    return CurrentExecutor(Pool::kCPUBound);
}

std::shared_ptr<AsyncExecutor> CreateIOBoundExecutor()
{
    KIO_HOST_CALL("kiocore::threads::CreateIOBoundExecutor");
    return CurrentExecutor(Pool::kIOBound);
}

std::shared_ptr<AsyncExecutor> GetIOBoundExecutor()
{
    KIO_HOST_CALL("kiocore::threads::GetIOBoundExecutor");
    return CurrentExecutor(Pool::kIOBound);
}

std::shared_ptr<AsyncExecutor> CreateSubExecutor(const std::shared_ptr<AsyncExecutor>& inParent,
                                                 int inConcurrency)
{
    KIO_HOST_CALL("kiocore::threads::CreateSubExecutor", NameOf(inParent.get()), inConcurrency);
    if (inConcurrency == 0 || inConcurrency < -1) {
        throw kio_exception("A sub-executor cannot run " + std::to_string(inConcurrency) +
                                " tasks at once; expected 1 or more, or -1 for as many as its parent allows",
                            kError_BadArgument);
    }
    if (!inParent) {
        return nullptr;
    }
    return std::make_shared<SubExecutor>(inParent, inConcurrency);
}

std::shared_ptr<AsyncExecutor> CreatePreTerminationExecutor()
{
    KIO_HOST_CALL("kiocore::threads::CreatePreTerminationExecutor");
    return CurrentExecutor(Pool::kPreTermination);
}

void TerminateExecutors()
{
    KIO_HOST_CALL("kiocore::threads::TerminateExecutors");
    if (ThreadPool::IsPoolThread()) {
        throw kio_exception("TerminateExecutors was called by a task of a pool, which it would wait for",
                            kError_BadArgument);
    }
    EndPools(false);
}

ScReplaceExecutor::ScReplaceExecutor(Pool inPool, std::shared_ptr<AsyncExecutor> inReplacement)
    : mPool(inPool)
{
    Slots& all = TheSlots();
    std::lock_guard lock(all.lock);
    all.Of(mPool).replacements.push_back(std::move(inReplacement));
}

ScReplaceExecutor::~ScReplaceExecutor()
{
    std::shared_ptr<AsyncExecutor> replaced; // let go unlocked
    Slots& all = TheSlots();
    std::lock_guard lock(all.lock);
    replaced = std::move(all.Of(mPool).replacements.back());
    all.Of(mPool).replacements.pop_back();
}

} // namespace kiocore::threads
