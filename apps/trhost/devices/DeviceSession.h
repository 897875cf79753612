#pragma once

#include "DeviceThread.h"

#include "../support/Context.h"

#include <functional>
#include <memory>
#include <utility>

namespace trhost::devices {

/// The timeline and the device thread of a command, and its waiting. Declare the devices after it.
///
/// Threading: main thread.
class DeviceSession {
public:
    explicit DeviceSession(Context& ioContext);

    DeviceThread& Devices() { return mDevices; }
    const std::shared_ptr<DeviceTimeline>& Timeline() const { return mDevices.Timeline(); }

    /// Called with each event, on the main thread, from within the members below.
    void OnEvent(std::function<void(const DeviceEvent&)> inFunction) { mOnEvent = std::move(inFunction); }

    enum class OnInterrupt { kReturn, kGoOn };
    /// Runs the main thread until inDone says so, the deadline has passed or the user interrupts. Asks again
    /// after each event, and at least every 50 ms. Tells the user whom a request has waited for too long.
    /// @param inDeadline     on the clock in use.
    /// @param inOnInterrupt  kGoOn: for what must be brought to its end; a second Ctrl-C ends the process.
    /// @return whether inDone said so.
    bool
    RunUntil(const std::function<bool()>& inDone,
             std::chrono::steady_clock::time_point inDeadline = std::chrono::steady_clock::time_point::max(),
             OnInterrupt inOnInterrupt = OnInterrupt::kReturn);
    /// Hands on the events that have come by now.
    void Report();

private:
    Context& mContext;
    DeviceThread mDevices;
    std::function<void(const DeviceEvent&)> mOnEvent;
};

} // namespace trhost::devices
