#include "DeviceSession.h"

#include "../support/Failure.h"
#include "../support/Interrupt.h"

#include <kiocore/threads/Clock.h>

namespace trhost::devices {
namespace {

constexpr std::chrono::milliseconds kTurn{50};

} // namespace

DeviceSession::DeviceSession(Context& ioContext)
    : mContext(ioContext), mDevices(std::make_shared<DeviceTimeline>(ioContext.mainThread))
{}

void DeviceSession::Report()
{
    if (const auto waiting = mDevices.TakeLongWait()) {
        DeviceEvent event;
        event.kind = DeviceEvent::Kind::kWaits;
        event.device = waiting->device;
        event.other = waiting->other;
        mContext.output.Error(Describe(event));
    }
    for (const DeviceEvent& event : Timeline()->TakeNew()) {
        if (mOnEvent) {
            mOnEvent(event);
        }
    }
}

bool DeviceSession::RunUntil(const std::function<bool()>& inDone,
                             std::chrono::steady_clock::time_point inDeadline, OnInterrupt inOnInterrupt)
{
    auto& clock = kiocore::threads::GetClock();
    for (;;) {
        // Asked first: what makes it true has put its events on the timeline before.
        const bool done = inDone();
        Report();
        if (done) {
            return true;
        }
        if ((inOnInterrupt == OnInterrupt::kReturn && IsInterrupted()) || clock.SteadyTime() >= inDeadline) {
            return false;
        }
        // The main thread sleeps by the system's clock, whichever clock is in use here.
        bool woken = false;
        mContext.mainThread->RunUntil([&woken] { return std::exchange(woken, true); },
                                      std::chrono::steady_clock::now() + kTurn);
    }
}

} // namespace trhost::devices
