#include "BatchRun.h"

#include "Dialogs.h"

#include "../support/Failure.h"
#include "../support/Interrupt.h"

#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kiocore/threads/Clock.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <memory>

namespace trhost {

namespace {

using namespace kiocore::threads;
using kiocore::messaging::PostNewMessageToUIThread;
using Operation = kiocore::InterfaceRef<ZOL::IBatchOperation>;

/// What the operation's task leaves behind. Kept by both sides, as the task may outlive our wait.
struct RunState {
    std::atomic<bool> finished{false};
    std::exception_ptr error;              // set before finished
    kiocore::messaging::StationID station; // set before the operation starts
};

/// The pool, with an eye on how a task ends: an operation that throws posts no completion message, and its
/// exception would only be seen on the trace.
class WatchingExecutor final : public AsyncExecutor {
public:
    WatchingExecutor(std::shared_ptr<AsyncExecutor> inPool, std::shared_ptr<RunState> inState,
                     std::shared_ptr<MainThread> inMainThread)
        : mPool(std::move(inPool)), mState(std::move(inState)), mMainThread(std::move(inMainThread))
    {}

    int Submit(Task inTask) override
    {
        return mPool->Submit([task = std::move(inTask), state = mState, mainThread = mMainThread]() mutable {
            try {
                task();
            } catch (...) {
                state->error = std::current_exception();
            }
            task = nullptr;
            if (state->error) { // nobody else would tell a dialog that it is over
                PostNewMessageToUIThread<ZOL::OperationCompleteMessage>(state->station);
            }
            state->finished = true;
            mainThread->Post([] {}); // wakes the wait, after the messages that were posted before
        });
    }

private:
    const std::shared_ptr<AsyncExecutor> mPool;
    const std::shared_ptr<RunState> mState;
    const std::shared_ptr<MainThread> mMainThread;
};

/// An operation whose end is known, however it comes.
class WatchedOperation {
public:
    WatchedOperation(Context& ioContext, const MakeOperation& inMakeOperation)
        : mMainThread(ioContext.mainThread),
          mWatch(ScReplaceExecutor::Pool::kCPUBound,
                 std::make_shared<WatchingExecutor>(GetCPUBoundExecutor(), mState, mMainThread)),
          mOperation(inMakeOperation())
    {
        mState->station = mOperation->GetStationID();
    }

    const Operation& Get() const { return mOperation; }
    /// Runs posted work meanwhile. @return whether it has ended.
    bool WaitFor(std::chrono::nanoseconds inLimit) const
    {
        return mMainThread->RunUntil([this] { return mState->finished.load(); },
                                     GetClock().SteadyTime() + inLimit);
    }
    /// Once it has ended: passes on what it threw.
    void Rethrow() const
    {
        if (mState->error) {
            std::rethrow_exception(mState->error);
        }
    }

private:
    const std::shared_ptr<MainThread> mMainThread;
    const std::shared_ptr<RunState> mState = std::make_shared<RunState>();
    const ScReplaceExecutor mWatch;
    const Operation mOperation;
};

} // namespace

void RunBatchOperation(Context& ioContext, const MakeOperation& inMakeOperation)
{
    const WatchedOperation watched(ioContext, inMakeOperation);
    const Operation& operation = watched.Get();
    ProgressBar bar(ioContext.output, operation->GetDescription());
    float progress = 0;
    const kiocore::messaging::ScListener listener(
        operation->GetStationID(), [&](const kiocore::messaging::Message& inMessage) {
            if (const auto* update = dynamic_cast<const ZOL::UpdateOperationProgressMessage*>(&inMessage)) {
                progress = update->GetProgress();
            } else if (const auto* words =
                           dynamic_cast<const ZOL::UpdateOperationDescriptionMessage*>(&inMessage)) {
                bar.SetLabel(words->GetDescription());
            }
        });
    bar.Show(0);
    if (operation->Start() < 0) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NotStarted=the work could not be started"));
    }
    while (!watched.WaitFor(std::chrono::milliseconds(100))) {
        bar.Show(progress);
        if (IsInterrupted()) {
            operation->Abort(); // returns once the work has stopped
        }
    }
    watched.Rethrow();
    bar.Hide();
    ThrowIfInterrupted();
}

void RunBatchOperationInDialog(Context& ioContext, const UTF16String& inTitle,
                               const MakeOperation& inMakeOperation)
{
    const auto userInterface = OpenUserInterface(ioContext, {});
    const WatchedOperation watched(ioContext, inMakeOperation);
    const Operation& operation = watched.Get();
    const bool isDone = userInterface->RunOperation(inTitle, operation->GetDescription(), operation);
    while (!watched.WaitFor(std::chrono::milliseconds(100))) {
        // What was cancelled has stopped; what is complete is about to end.
    }
    watched.Rethrow();
    ThrowIfInterrupted();
    if (!isDone) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/Cancelled=cancelled"));
    }
}

} // namespace trhost
