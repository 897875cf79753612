#include "DeviceRunner.h"

#include "DevicesModule.h"

#include "../support/Failure.h"

#include <kiocore/config/Errors.h>

#include <exception>
#include <utility>

namespace trhost::devices {
namespace {

using Kind = DeviceEvent::Kind;

// Somebody who lets go of the hardware, perhaps another program, needs a moment.
constexpr std::chrono::milliseconds kRetry{50};
constexpr int kMostTries = 40;
constexpr std::chrono::nanoseconds kForever{-1};

} // namespace

DeviceRunner::DeviceRunner(std::string inName, std::uint32_t inPriority, std::uint32_t inKey,
                           IAudioWork& inWork, DeviceThread& inDeviceThread)
    : mTimeline(inDeviceThread.Timeline()),
      mProxy(kiocore::classref::MakeObject<DeviceProxy>(std::move(inName), inPriority, inKey, mOrders,
                                                        inDeviceThread.Timeline())),
      mWork(inWork), mDeviceThread(inDeviceThread), mThread([this] { Run(); })
{}

DeviceRunner::~DeviceRunner()
{
    mOrders->Quit();
    mThread.join();
    Tell(Kind::kDestroyed);
    mDeviceThread.Forget(mProxy);
}

void DeviceRunner::Tell(DeviceEvent::Kind inKind, kiocore::UTF16String inText)
{
    DeviceEvent event;
    event.kind = inKind;
    event.device = mProxy->Name();
    event.text = std::move(inText);
    mTimeline->Add(std::move(event));
}

void DeviceRunner::Run()
{
    const ScThreadName name(mProxy->Name());
    DeviceOrders::Orders orders;
    Pause pause = Pause::zero();
    for (;;) {
        orders = mOrders->Wait(orders.number, pause);
        if (orders.quit) {
            break;
        }
        try {
            pause = Turn(orders);
        } catch (const std::exception& error) {
            Fail(Told(error));
            pause = Pause::zero();
        }
        // Trying again counts as not settled: how it ends is not known yet.
        if (mTries == 0 && mSettled.exchange(orders.number) != orders.number) {
            mTimeline->WakeMainThread();
        }
    }
    CloseHardware();
    mOrders->HaveGone();
    try {
        mWork.HaveClosed();
    } catch (const std::exception& error) {
        Tell(Kind::kFailed, Told(error));
        mHasFailed = true;
    }
}

DeviceRunner::Pause DeviceRunner::Turn(const DeviceOrders::Orders& inOrders)
{
    if (inOrders.letGo) {
        LetGo();
        return Pause::zero();
    }
    if (inOrders.holdsOn && !mToldHoldingOn) {
        Tell(Kind::kHoldsOn);
    }
    mToldHoldingOn = inOrders.holdsOn;
    mWork.Look();
    if (mIsOpen) {
        return mWork.Step();
    }
    if (inOrders.hardware) {
        return TryToOpen();
    }
    mTries = 0;
    return kForever;
}

DeviceRunner::Pause DeviceRunner::TryToOpen()
{
    try {
        mOpened = mWork.Open();
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() != kDevicesError_Busy || ++mTries >= kMostTries) {
            throw;
        }
        return kRetry;
    }
    mTries = 0;
    mIsOpen = true;
    mHasFailed = false;
    Tell(Kind::kOpened, mOpened);
    return Pause::zero();
}

void DeviceRunner::CloseHardware()
{
    mTries = 0;
    if (mIsOpen) {
        mWork.Close();
        mIsOpen = false;
        Tell(Kind::kClosed, mOpened);
    }
}

void DeviceRunner::LetGo()
{
    CloseHardware();
    // Told first: who waits at the gate has events of its own to tell once it is open.
    Tell(Kind::kLetGo);
    mOrders->HaveLetGo();
    mWork.HaveClosed();
}

void DeviceRunner::Fail(kiocore::UTF16String inReason)
{
    CloseHardware();
    mOrders->GiveUp();
    try {
        mWork.HaveClosed();
    } catch (const std::exception& error) {
        inReason += u"; " + Told(error);
    }
    Tell(Kind::kFailed, std::move(inReason));
    mHasFailed = true;
    mDeviceThread.Deactivate(mProxy);
}

} // namespace trhost::devices
