#include "threads/SubExecutor.h"

#include <algorithm>
#include <limits>

namespace kiocore::threads {
namespace {

constexpr int kUnlimited = -1;
constexpr int kTasksInATurn = 4;

} // namespace

SubExecutor::SubExecutor(std::shared_ptr<AsyncExecutor> inParent, int inConcurrency)
    : QueueBase("sub"), mParent(std::move(inParent)), mOwnParent(dynamic_cast<QueueBase*>(mParent.get())),
      mMostAtOnce(inConcurrency == kUnlimited ? std::numeric_limits<std::int32_t>::max() : inConcurrency),
      // Without a limit every task has a turn of its own, and there is nothing to save.
      mTasksInATurn(inConcurrency == kUnlimited ? 1 : kTasksInATurn)
{}

bool SubExecutor::IsOpen() const
{
    return !mOwnParent || mOwnParent->IsOpen();
}

// Called under the lock.
bool SubExecutor::NeedsTurn() const
{
    return !mWaiting.empty() &&
           mTurns <
               std::min<std::int64_t>(mMostAtOnce, mRunning + static_cast<std::int64_t>(mWaiting.size()));
}

int SubExecutor::AskForTurn()
{
    Task turn = [self = shared_from_this()] { self->TakeTurn(); };
    return mOwnParent ? mOwnParent->Accept(std::move(turn)) : mParent->Submit(std::move(turn));
}

int SubExecutor::Accept(Task inTask)
{
    // Asked even though a running turn could still take the task: a task that submits its successor
    // here would otherwise keep a terminated parent from ever ending.
    if (!IsOpen()) {
        return -1;
    }
    std::uint64_t number;
    {
        std::lock_guard lock(mLock);
        number = ++mLastNumber;
        mWaiting.push_back({number, std::move(inTask)});
        if (!NeedsTurn()) {
            return 0; // a turn that is on its way, or running, will find it
        }
    }
    const int result = AskForTurn();

    Task refused; // let go unlocked
    std::lock_guard lock(mLock);
    if (result >= 0) {
        ++mTurns;
        return 0;
    }
    if (mTurns > 0) {
        return 0; // another turn will find it
    }
    const auto mine = std::find_if(mWaiting.begin(), mWaiting.end(),
                                   [number](const Waiting& waiting) { return waiting.number == number; });
    if (mine == mWaiting.end()) {
        return 0; // another turn has found it
    }
    refused = std::move(mine->task);
    mWaiting.erase(mine);
    return result;
}

void SubExecutor::TakeTurn()
{
    for (;;) {
        std::unique_lock lock(mLock);
        if (mRunning >= mMostAtOnce) {
            --mTurns; // those that run look at the queue again before they end
            return;
        }
        ++mRunning;
        for (int ran = 0; ran < mTasksInATurn && !mWaiting.empty(); ++ran) {
            Task task = std::move(mWaiting.front().task);
            mWaiting.pop_front();
            lock.unlock();
            Run(task);
            lock.lock();
        }
        --mRunning;
        --mTurns;
        if (!NeedsTurn()) {
            return;
        }
        // Counted before it is asked for, so that everybody else relies on this turn going on: when the
        // parent takes no more, it does so right here.
        ++mTurns;
        lock.unlock();
        if (AskForTurn() >= 0) {
            return;
        }
    }
}

} // namespace kiocore::threads
