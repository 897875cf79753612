#pragma once

#include "DeviceProxy.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace trhost::devices {

/// The one thread that calls the preemption manager: the manager takes no lock, and activating may wait for
/// as long as a device needs to let go. Requests are queued and run one after the other; one that comes while
/// another waits is run after it. A device that lets go, or dies, opens its gate from its own audio thread,
/// so it is never held up by the request that waits for it. No lock of ours is held around the manager's
/// calls.
///
/// Outlives the devices: what waits for one of them when this is to end would wait for ever. Pending requests
/// are dropped then.
///
/// Threading: any thread. None of the members waits, but for the destructor.
class DeviceThread {
public:
    /// After this the user is told that a request waits, and for whom.
    static constexpr std::chrono::seconds kLongWait{2};

    struct Waiting {
        std::string device; ///< asks for the slot
        std::string other;  ///< has to let go first
        std::chrono::steady_clock::time_point since;
    };

    explicit DeviceThread(std::shared_ptr<DeviceTimeline> inTimeline);
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    const std::shared_ptr<DeviceTimeline>& Timeline() const { return mTimeline; }

    void Activate(const DeviceProxyRef& inProxy) { Submit({Request::Kind::kActivate, inProxy}); }
    void Deactivate(const DeviceProxyRef& inProxy) { Submit({Request::Kind::kDeactivate, inProxy}); }
    /// The device is gone: takes the slot from it if it holds it, and knows it no more.
    void Forget(const DeviceProxyRef& inProxy) { Submit({Request::Kind::kForget, inProxy}); }
    void Reset() { Submit({Request::Kind::kReset, {}}); }

    /// Whether all requests have been run.
    bool IsIdle() const;
    /// Who held the slot when the last request ended; empty for nobody.
    std::string Holder() const;
    /// The request that waits for a device to let go, if one does.
    std::optional<Waiting> WaitsFor() const;
    /// Tells, once for each wait, that a request has waited for kLongWait; also put on the timeline. For the
    /// main thread, which asks now and then and tells the user.
    std::optional<Waiting> TakeLongWait();

private:
    struct Request {
        enum class Kind { kActivate, kDeactivate, kForget, kReset };
        Kind kind;
        DeviceProxyRef proxy;
    };
    using ManagerRef = kiocore::InterfaceRef<TR::PreemptionManager>;

    void Submit(Request inRequest);
    void Run();
    void Handle(TR::PreemptionManager& inManager, const Request& inRequest);
    void HandleActivate(TR::PreemptionManager& inManager, const DeviceProxyRef& inProxy);
    void HandleDeactivate(TR::PreemptionManager& inManager, const DeviceProxyRef& inProxy);
    DeviceProxyRef FindHolder(TR::PreemptionManager& inManager) const;
    void NoteWait(const DeviceProxyRef& inProxy);
    void Tell(DeviceEvent::Kind inKind, const DeviceProxyRef& inProxy, const DeviceProxyRef& inOther);

    const std::shared_ptr<DeviceTimeline> mTimeline;

    // Of the device thread only.
    std::vector<DeviceProxyRef> mKnown;
    DeviceProxyRef mLastAsked; // to let go; empty once somebody has waited for it

    mutable std::mutex mLock; // guards the members below
    std::condition_variable mArrived;
    std::deque<Request> mRequests; // the first one is at work
    std::string mHolder;
    std::optional<Waiting> mWaiting;
    bool mWaitTold = false;
    bool mQuit = false;

    std::thread mThread; // last: uses all the others
};

} // namespace trhost::devices
