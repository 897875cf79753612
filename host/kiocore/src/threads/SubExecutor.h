#pragma once

#include "threads/QueueBase.h"

#include <cstdint>
#include <deque>
#include <mutex>

namespace kiocore::threads {

/// A queue that runs on its parent's threads, in turns: a turn is a task of ours in the parent's queue
/// that runs a few tasks of this queue and then asks for another turn, behind whatever else waits there.
///
/// Threading: any thread. Turns keep the queue alive, so it may be let go with work in it.
class SubExecutor final : public QueueBase, public std::enable_shared_from_this<SubExecutor> {
public:
    SubExecutor(std::shared_ptr<AsyncExecutor> inParent, int inConcurrency);

    int Accept(Task inTask) override;
    bool IsOpen() const override;

private:
    struct Waiting {
        std::uint64_t number;
        Task task;
    };
    int AskForTurn();
    void TakeTurn();
    bool NeedsTurn() const;

    const std::shared_ptr<AsyncExecutor> mParent;
    QueueBase* const mOwnParent; // the parent when it is one of ours
    const std::int64_t mMostAtOnce;
    const int mTasksInATurn;

    std::mutex mLock; // guards the members below; not held while the parent is asked or a task runs
    std::deque<Waiting> mWaiting;
    std::uint64_t mLastNumber = 0;
    std::int64_t mRunning = 0; // turns that are running tasks; never above mMostAtOnce
    // Turns that the parent accepted and that have not ended. Below zero for a moment when a turn ends
    // before the thread that asked for it has heard that it was accepted.
    std::int64_t mTurns = 0;
};

} // namespace kiocore::threads
