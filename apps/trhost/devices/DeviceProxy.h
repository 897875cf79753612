#pragma once

#include "DeviceTimeline.h"

#include <TR/PreemptionManager.h>
#include <kiocore/classref/UnknownBase.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace trhost::devices {

/// What the manager and the owner want of a device, as its audio thread finds it. Shared by the device and
/// its proxy, so that each may go before the other.
///
/// Threading: any thread; Wait, HaveLetGo, GiveUp and HaveGone on the audio thread. Gates are opened
/// unlocked.
class DeviceOrders {
public:
    using GatePtr = std::shared_ptr<kiocore::threads::Gate>;
    /// What is to be done now, most urgent first.
    struct Orders {
        bool quit = false;
        bool letGo = false;    ///< close the hardware and say HaveLetGo
        bool holdsOn = false;  ///< was asked to let go, and told not to
        bool hardware = false; ///< have it open
        std::uint64_t number = 0;
    };

    void WantHardware();
    /// The gate is opened once the device has let go; at once when it is gone.
    void WantLetGo(GatePtr inGate);
    /// Not to let go when asked, until told otherwise or told to quit.
    void SetHolding(bool inHolding);
    void Quit();
    /// Something else has changed that the audio thread should look at.
    void Touch();

    /// Sleeps until the orders are others than those last seen, or the time is up.
    /// @param inMost  negative: for as long as it takes.
    Orders Wait(std::uint64_t inSeen, std::chrono::nanoseconds inMost);
    Orders Now() const;
    /// Opens all gates that came by now.
    void HaveLetGo();
    /// The hardware cannot be had; it is not wanted until somebody asks anew.
    void GiveUp();
    /// Nobody will look at orders any more: opens all gates, and from now on each that comes.
    void HaveGone();

private:
    Orders Get() const;
    void Changed() { ++mNumber; }

    mutable std::mutex mLock; // guards the members below
    std::condition_variable mArrived;
    std::vector<GatePtr> mGates;
    bool mHardware = false;
    bool mHolding = false;
    bool mQuit = false;
    bool mGone = false;
    std::uint64_t mNumber = 0;
};

/// A player or recorder as the preemption manager sees it. Never waits: what the manager asks becomes an
/// order for the device's audio thread. The manager may keep it for longer than the device lives; every gate
/// that it is given is opened, at the latest when it goes itself.
///
/// Threading: the members of the interface on the device thread, the others on any.
class DeviceProxy final : public TR::IPreemptableProxy, public virtual kiocore::classref::UnknownBase {
public:
    DeviceProxy(std::string inName, std::uint32_t inPriority, std::uint32_t inKey,
                std::shared_ptr<DeviceOrders> inOrders, std::shared_ptr<DeviceTimeline> inTimeline);
    ~DeviceProxy() override;

    const std::string& Name() const { return mName; }
    DeviceOrders& Orders() { return *mOrders; }
    void SetPriority(std::uint32_t inPriority) { mPriority = inPriority; }
    void SetKey(std::uint32_t inKey) { mKey = inKey; }

    std::uint32_t GetPriority() override { return mPriority; }
    void Activate() override;
    void Preempt(const TR::IPreemptableProxyRef& inRequester,
                 std::shared_ptr<kiocore::threads::Gate>& ioGate) override;
    std::uint32_t GetHandoverKey() override { return mKey; }

private:
    const std::string mName;
    std::atomic<std::uint32_t> mPriority;
    std::atomic<std::uint32_t> mKey;
    const std::shared_ptr<DeviceOrders> mOrders;
    const std::shared_ptr<DeviceTimeline> mTimeline;
};

using DeviceProxyRef = kiocore::InterfaceRef<DeviceProxy>;

} // namespace trhost::devices
