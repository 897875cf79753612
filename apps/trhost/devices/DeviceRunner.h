#pragma once

#include "DeviceProxy.h"
#include "DeviceThread.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace trhost::devices {

/// What a player or recorder does on its audio thread. Everything that throws makes the device fail: its
/// hardware is closed and it gives the slot back.
class IAudioWork {
public:
    virtual ~IAudioWork() = default;

    /// Opens the hardware. @return what was opened, for people.
    /// @throws kio_exception; with kDevicesError_Busy it is tried again for some time.
    virtual kiocore::UTF16String Open() = 0;
    /// Stops the sound at once and closes what Open has opened.
    virtual void Close() noexcept = 0;
    /// Moves some sound; sleeps only for the hardware, and for at most 20 ms. While the hardware is open.
    /// @return how long nothing needs to be done.
    virtual std::chrono::nanoseconds Step() = 0;
    /// With the hardware closed and the gate open: what others need not wait for. Also after a failure, and
    /// last before the thread ends.
    virtual void HaveClosed() = 0;
    /// On each turn, with open and with closed hardware: looks at what its owner wants.
    virtual void Look() = 0;
};

/// A device's audio thread: does what the orders say, on behalf of its work.
///
/// Threading: any thread; the destructor waits until the thread has closed the hardware, at most for one
/// step.
class DeviceRunner {
public:
    /// @param inWork, inDeviceThread  outlive this.
    DeviceRunner(std::string inName, std::uint32_t inPriority, std::uint32_t inKey, IAudioWork& inWork,
                 DeviceThread& inDeviceThread);
    ~DeviceRunner();
    DeviceRunner(const DeviceRunner&) = delete;
    DeviceRunner& operator=(const DeviceRunner&) = delete;

    const std::string& Name() const { return mProxy->Name(); }
    const DeviceProxyRef& Proxy() const { return mProxy; }
    DeviceThread& GetDeviceThread() const { return mDeviceThread; }
    void SetHolding(bool inHolding) { mOrders->SetHolding(inHolding); }
    void Touch() { mOrders->Touch(); }

    bool IsOpen() const { return mIsOpen; }
    bool HasFailed() const { return mHasFailed; }
    bool HoldsOn() const { return mOrders->Now().holdsOn; }
    /// Whether all orders were carried out, as far as they can be.
    bool IsSettled() const { return mSettled == mOrders->Now().number; }

    void Tell(DeviceEvent::Kind inKind, kiocore::UTF16String inText = {});

private:
    using Pause = std::chrono::nanoseconds;

    void Run();
    Pause Turn(const DeviceOrders::Orders& inOrders);
    Pause TryToOpen();
    void LetGo();
    void CloseHardware();
    void Fail(kiocore::UTF16String inReason);

    const std::shared_ptr<DeviceOrders> mOrders = std::make_shared<DeviceOrders>();
    const std::shared_ptr<DeviceTimeline> mTimeline;
    const DeviceProxyRef mProxy;
    IAudioWork& mWork;
    DeviceThread& mDeviceThread;
    std::atomic<bool> mIsOpen{false};
    std::atomic<bool> mHasFailed{false};
    std::atomic<std::uint64_t> mSettled{0};

    // Of the audio thread only.
    kiocore::UTF16String mOpened; // what, for people
    bool mToldHoldingOn = false;
    int mTries = 0;

    std::thread mThread; // last: uses all the others
};

} // namespace trhost::devices
