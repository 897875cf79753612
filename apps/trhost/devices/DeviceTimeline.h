#pragma once

#include <kiocore/threads/MainThread.h>
#include <kiocore/utility/UTF16String.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace trhost::devices {

/// One thing that happened to a device.
struct DeviceEvent {
    enum class Kind {
        kAsks,         ///< it asks for the slot; other = who holds it
        kAlreadyHolds, ///< it asks for the slot that it holds
        kAskedToLetGo, ///< by other; by nobody when it is deactivated
        kHoldsOn,      ///< it was asked to let go, and was told not to
        kOpened,       ///< its hardware
        kClosed,       ///< its hardware
        kLetGo,        ///< it opens the gate that others wait at
        kReplaced,     ///< other took the slot without asking
        kActive,       ///< it got the slot
        kNotActive,    ///< its request ended without the slot; other = who holds it
        kDeactivated,  ///< the slot was taken from it
        kRecording,    ///< from now on
        kRecorded,     ///< what it recorded is complete
        kFinished,     ///< all of it was played
        kFailed,
        kDestroyed,
        kWaits, ///< it has waited for long for other to let go
    };
    Kind kind = Kind::kAsks;
    std::string device;
    std::string other;
    // kAsks, kReplaced: what decides. Of other where there is one.
    std::uint32_t priority = 0;
    std::uint32_t key = 0;
    std::uint32_t otherPriority = 0;
    std::uint32_t otherKey = 0;
    kiocore::UTF16String text; ///< a file, a reason, what was opened

    std::chrono::nanoseconds time{}; ///< since the timeline began; filled in by it
    std::string thread;              ///< filled in by it
};

/// "asks", "askedToLetGo", ...: a contract with who reads them.
const char* NameOf(DeviceEvent::Kind inKind);
/// The event in words, for people.
kiocore::UTF16String Describe(const DeviceEvent& inEvent);

/// What happened to the devices, in order; each event is a line on trace channel "Devices", too.
///
/// Threading: any thread; TakeNew on one at a time.
class DeviceTimeline {
public:
    /// @param inMainThread  gets a wake-up for each event.
    explicit DeviceTimeline(std::shared_ptr<kiocore::threads::MainThread> inMainThread);

    void Add(DeviceEvent inEvent);
    /// The events since this was last called.
    std::vector<DeviceEvent> TakeNew();
    /// Wakes the main thread, as an event does.
    void WakeMainThread() const;

private:
    const std::shared_ptr<kiocore::threads::MainThread> mMainThread;
    const std::chrono::steady_clock::time_point mStart;
    std::mutex mLock; // guards the events
    std::vector<DeviceEvent> mNew;
};

/// Names the thread in the timeline for as long as it lives; without it a thread is "main".
class ScThreadName {
public:
    explicit ScThreadName(const std::string& inName);
    ~ScThreadName();
    ScThreadName(const ScThreadName&) = delete;
    ScThreadName& operator=(const ScThreadName&) = delete;
};

} // namespace trhost::devices
