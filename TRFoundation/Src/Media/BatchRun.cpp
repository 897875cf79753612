#include "BatchRun.h"

#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/Clock.h>
#include <kiocore/threads/MainThread.h>

#include <chrono>

namespace TR {
namespace {

/// So that a user interface hears about twenty times from an operation, however much it handles.
constexpr float kProgressStep = 0.05f;
constexpr std::chrono::milliseconds kAbortPollInterval{20};

} // namespace

BatchRun::BatchRun() : mStation(kiocore::messaging::CreateUniqueStation()) {}
BatchRun::~BatchRun()
{
    // Behind the last message: an operation that nobody holds may go before its completion is delivered.
    const auto mainThread = kiocore::threads::GetRegisteredMainThread();
    if (!mainThread ||
        mainThread->Post([station = mStation] { kiocore::messaging::DisposeStation(station); }) < 0) {
        kiocore::messaging::DisposeStation(mStation);
    }
}

int BatchRun::Start(std::function<void()> inProcess)
{
    mExecutor = kiocore::threads::CreateCPUBoundExecutor();
    if (!mExecutor) {
        return 0;
    }
    mFinished.store(0);
    ResetProgress();
    const int result = mExecutor->Submit(std::move(inProcess));
    if (result < 0) {
        mFinished.store(1);
    }
    return result;
}

int BatchRun::Abort()
{
    mAbort.store(1);
    while (mFinished.load() == 0) {
        kiocore::threads::SleepFor(kAbortPollInterval);
    }
    return mFinished.load();
}

bool BatchRun::ConsumeAbort()
{
    std::int32_t requested = 1;
    return mAbort.compare_exchange_strong(requested, 0);
}

void BatchRun::Progress(float inMeasured, float inShown)
{
    if (inMeasured - mLastProgress > kProgressStep) {
        mLastProgress = inMeasured;
        kiocore::messaging::PostNewMessageToUIThread<ZOL::UpdateOperationProgressMessage>(mStation, inShown);
    }
}

void BatchRun::PostComplete()
{
    kiocore::messaging::PostNewMessageToUIThread<ZOL::OperationCompleteMessage>(mStation);
}

} // namespace TR
