#include "DeviceThread.h"

#include <kiocore/threads/AsyncExecutor.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace trhost::devices {

using Kind = DeviceEvent::Kind;

DeviceThread::DeviceThread(std::shared_ptr<DeviceTimeline> inTimeline)
    : mTimeline(std::move(inTimeline)), mThread([this] { Run(); })
{}

DeviceThread::~DeviceThread()
{
    {
        const std::lock_guard lock(mLock);
        mQuit = true;
    }
    mArrived.notify_all();
    mThread.join();
}

void DeviceThread::Submit(Request inRequest)
{
    {
        const std::lock_guard lock(mLock);
        mRequests.push_back(std::move(inRequest));
    }
    mArrived.notify_all();
}

bool DeviceThread::IsIdle() const
{
    const std::lock_guard lock(mLock);
    return mRequests.empty();
}

std::string DeviceThread::Holder() const
{
    const std::lock_guard lock(mLock);
    return mHolder;
}

std::optional<DeviceThread::Waiting> DeviceThread::WaitsFor() const
{
    const std::lock_guard lock(mLock);
    return mWaiting;
}

std::optional<DeviceThread::Waiting> DeviceThread::TakeLongWait()
{
    std::optional<Waiting> waiting;
    {
        const std::lock_guard lock(mLock);
        if (!mWaiting || mWaitTold ||
            kiocore::threads::GetClock().SteadyTime() - mWaiting->since < kLongWait) {
            return std::nullopt;
        }
        mWaitTold = true;
        waiting = mWaiting;
    }
    DeviceEvent event;
    event.kind = Kind::kWaits;
    event.device = waiting->device;
    event.other = waiting->other;
    mTimeline->Add(std::move(event));
    return waiting;
}

void DeviceThread::Run()
{
    const ScThreadName name("devices");
    // Held for as long as there are devices: the next manager would start with an empty slot.
    const ManagerRef manager = TR::CreatePreemptionManager();
    for (;;) {
        Request request;
        {
            std::unique_lock lock(mLock);
            mArrived.wait(lock, [this] { return mQuit || !mRequests.empty(); });
            if (mQuit) {
                break;
            }
            request = mRequests.front();
        }
        try {
            Handle(*manager, request);
        } catch (const std::exception&) {
            // No device of ours throws; the thread goes on for the others whatever happened.
            kiocore::threads::ReportException("A request to the preemption manager");
        }
        const DeviceProxyRef holder = FindHolder(*manager);
        {
            const std::lock_guard lock(mLock);
            mWaiting.reset();
            mWaitTold = false;
            mHolder = holder ? holder->Name() : "";
            mRequests.pop_front();
        }
        mTimeline->WakeMainThread();
    }
    manager->Reset();
}

void DeviceThread::Handle(TR::PreemptionManager& inManager, const Request& inRequest)
{
    switch (inRequest.kind) {
    case Request::Kind::kActivate:
        HandleActivate(inManager, inRequest.proxy);
        break;
    case Request::Kind::kDeactivate:
        HandleDeactivate(inManager, inRequest.proxy);
        break;
    case Request::Kind::kForget:
        HandleDeactivate(inManager, inRequest.proxy);
        std::erase(mKnown, inRequest.proxy);
        break;
    case Request::Kind::kReset: {
        const DeviceProxyRef holder = FindHolder(inManager);
        inManager.Reset();
        if (holder) {
            mLastAsked = holder;
            Tell(Kind::kDeactivated, holder, {});
        }
        break;
    }
    }
}

void DeviceThread::HandleActivate(TR::PreemptionManager& inManager, const DeviceProxyRef& inProxy)
{
    if (std::find(mKnown.begin(), mKnown.end(), inProxy) == mKnown.end()) {
        mKnown.push_back(inProxy);
    }
    const DeviceProxyRef holder = FindHolder(inManager);
    if (holder && holder == inProxy) {
        Tell(Kind::kAlreadyHolds, inProxy, {});
        inManager.ActivateDevice(inProxy);
        return;
    }
    Tell(Kind::kAsks, inProxy, holder);
    const bool asks = holder && inProxy->GetPriority() <= holder->GetPriority();
    if (asks) {
        mLastAsked = holder;
    }
    NoteWait(inProxy);
    const bool holds = inManager.ActivateDevice(inProxy);
    if (holds && holder && !asks) {
        Tell(Kind::kReplaced, holder, inProxy);
    }
    Tell(holds ? Kind::kActive : Kind::kNotActive, inProxy, FindHolder(inManager));
}

void DeviceThread::HandleDeactivate(TR::PreemptionManager& inManager, const DeviceProxyRef& inProxy)
{
    if (!inManager.IsActiveDevice(inProxy)) {
        return;
    }
    inManager.DeactivateDevice(inProxy);
    mLastAsked = inProxy;
    Tell(Kind::kDeactivated, inProxy, {});
}

/// Foresees whom the manager will wait for, so that a wait can be told while it lasts: for the device that
/// was asked to let go last, whoever asked it, unless keys say that nobody waits for it.
void DeviceThread::NoteWait(const DeviceProxyRef& inProxy)
{
    if (!mLastAsked || mLastAsked->GetHandoverKey() == 0 ||
        mLastAsked->GetHandoverKey() == inProxy->GetHandoverKey()) {
        return;
    }
    const std::lock_guard lock(mLock);
    mWaiting = Waiting{inProxy->Name(), mLastAsked->Name(), kiocore::threads::GetClock().SteadyTime()};
    mLastAsked.Reset();
}

DeviceProxyRef DeviceThread::FindHolder(TR::PreemptionManager& inManager) const
{
    for (const DeviceProxyRef& proxy : mKnown) {
        if (inManager.IsActiveDevice(proxy)) {
            return proxy;
        }
    }
    return {};
}

void DeviceThread::Tell(DeviceEvent::Kind inKind, const DeviceProxyRef& inProxy,
                        const DeviceProxyRef& inOther)
{
    DeviceEvent event;
    event.kind = inKind;
    event.device = inProxy->Name();
    event.priority = inProxy->GetPriority();
    event.key = inProxy->GetHandoverKey();
    if (inOther && !(inOther == inProxy)) {
        event.other = inOther->Name();
        event.otherPriority = inOther->GetPriority();
        event.otherKey = inOther->GetHandoverKey();
    }
    mTimeline->Add(std::move(event));
}

} // namespace trhost::devices
