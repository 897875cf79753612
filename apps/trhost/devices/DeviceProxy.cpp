#include "DeviceProxy.h"

#include <utility>

namespace trhost::devices {

void DeviceOrders::WantHardware()
{
    {
        const std::lock_guard lock(mLock);
        if (mHardware) {
            return;
        }
        mHardware = true;
        Changed();
    }
    mArrived.notify_all();
}

void DeviceOrders::WantLetGo(GatePtr inGate)
{
    bool gone = false;
    {
        const std::lock_guard lock(mLock);
        gone = mGone;
        if (!gone) {
            mHardware = false;
            mGates.push_back(inGate);
            Changed();
        }
    }
    if (gone && inGate) {
        inGate->Open();
    }
    mArrived.notify_all();
}

void DeviceOrders::SetHolding(bool inHolding)
{
    {
        const std::lock_guard lock(mLock);
        mHolding = inHolding;
        Changed();
    }
    mArrived.notify_all();
}

void DeviceOrders::Quit()
{
    {
        const std::lock_guard lock(mLock);
        mQuit = true;
        Changed();
    }
    mArrived.notify_all();
}

void DeviceOrders::Touch()
{
    {
        const std::lock_guard lock(mLock);
        Changed();
    }
    mArrived.notify_all();
}

DeviceOrders::Orders DeviceOrders::Wait(std::uint64_t inSeen, std::chrono::nanoseconds inMost)
{
    std::unique_lock lock(mLock);
    const auto isNew = [&] { return mNumber != inSeen; };
    if (inMost < inMost.zero()) {
        mArrived.wait(lock, isNew);
    } else {
        mArrived.wait_for(lock, inMost, isNew);
    }
    return Get();
}

DeviceOrders::Orders DeviceOrders::Now() const
{
    const std::lock_guard lock(mLock);
    return Get();
}

// Called under the lock.
DeviceOrders::Orders DeviceOrders::Get() const
{
    return {mQuit, !mGates.empty() && !mHolding, !mGates.empty() && mHolding, mHardware, mNumber};
}

void DeviceOrders::HaveLetGo()
{
    std::vector<GatePtr> gates;
    {
        const std::lock_guard lock(mLock);
        gates.swap(mGates);
        Changed();
    }
    for (const GatePtr& gate : gates) {
        if (gate) {
            gate->Open();
        }
    }
}

void DeviceOrders::GiveUp()
{
    const std::lock_guard lock(mLock);
    mHardware = false;
    Changed();
}

void DeviceOrders::HaveGone()
{
    {
        const std::lock_guard lock(mLock);
        mGone = true;
        mHardware = false;
    }
    HaveLetGo();
}

DeviceProxy::DeviceProxy(std::string inName, std::uint32_t inPriority, std::uint32_t inKey,
                         std::shared_ptr<DeviceOrders> inOrders, std::shared_ptr<DeviceTimeline> inTimeline)
    : mName(std::move(inName)), mPriority(inPriority), mKey(inKey), mOrders(std::move(inOrders)),
      mTimeline(std::move(inTimeline))
{}

DeviceProxy::~DeviceProxy()
{
    // Nobody can ask any more; who waits has nothing left to wait for.
    mOrders->HaveLetGo();
}

void DeviceProxy::Activate()
{
    mOrders->WantHardware();
}

void DeviceProxy::Preempt(const TR::IPreemptableProxyRef& inRequester,
                          std::shared_ptr<kiocore::threads::Gate>& ioGate)
{
    const auto* requester = dynamic_cast<const DeviceProxy*>(inRequester.Get());
    DeviceEvent event;
    event.kind = DeviceEvent::Kind::kAskedToLetGo;
    event.device = mName;
    event.other = requester ? requester->Name() : "";
    mTimeline->Add(std::move(event)); // first: the audio thread answers with events of its own
    mOrders->WantLetGo(ioGate);
}

} // namespace trhost::devices
