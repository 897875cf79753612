#include "BatchRun.h"

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

/// What the operation's task leaves behind. Kept by both sides, as the task may outlive our wait.
struct RunState {
    std::atomic<bool> finished{false};
    std::exception_ptr error; // set before finished
};

/// The pool, with an eye on how a task ends: an operation that throws posts no completion message, and its
/// exception would only be seen on the trace.
class WatchingExecutor final : public kiocore::threads::AsyncExecutor {
public:
    WatchingExecutor(std::shared_ptr<AsyncExecutor> inPool, std::shared_ptr<RunState> inState,
                     std::shared_ptr<kiocore::threads::MainThread> inMainThread)
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
            state->finished = true;
            mainThread->Post([] {}); // wakes the wait, after the messages that were posted before
        });
    }

private:
    const std::shared_ptr<AsyncExecutor> mPool;
    const std::shared_ptr<RunState> mState;
    const std::shared_ptr<kiocore::threads::MainThread> mMainThread;
};

} // namespace

void RunBatchOperation(Context& ioContext,
                       const std::function<kiocore::InterfaceRef<ZOL::IBatchOperation>()>& inMakeOperation)
{
    using namespace kiocore::threads;
    const auto state = std::make_shared<RunState>();
    const ScReplaceExecutor watch(
        ScReplaceExecutor::Pool::kCPUBound,
        std::make_shared<WatchingExecutor>(GetCPUBoundExecutor(), state, ioContext.mainThread));
    const auto operation = inMakeOperation();

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
    while (!ioContext.mainThread->RunUntil([&] { return state->finished.load(); },
                                           GetClock().SteadyTime() + std::chrono::milliseconds(100))) {
        bar.Show(progress);
        if (IsInterrupted()) {
            operation->Abort(); // returns once the work has stopped
        }
    }
    if (state->error) {
        std::rethrow_exception(state->error);
    }
    bar.Hide();
    ThrowIfInterrupted();
}

} // namespace trhost
