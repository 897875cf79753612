#include <kiocore/messaging/Messaging.h>

#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kiocore/utility/Guid.h>

#include "debug/TypeName.h"
#include "threads/MainThreadQueue.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace kiocore::messaging {
namespace {

constexpr int kTracedLevel = 5;

struct Listener {
    Listener(const StationID& inStation, ScListener::Handler inHandler)
        : station(inStation), handler(std::move(inHandler))
    {}
    const StationID station;
    const ScListener::Handler handler;
    std::uint64_t madeAfter = 0;   // the last message posted anywhere before this was made
    std::atomic<bool> hears{true}; // until destroyed, or its station disposed
};
using ListenerPtr = std::shared_ptr<Listener>;

struct Station {
    std::optional<ObserveStation> observe; // empty: not registered
    std::vector<ListenerPtr> listeners;
};

struct Stations {
    std::mutex lock; // guards the members below; nothing is called out under it
    std::map<StationID, Station> stations;
    std::uint64_t lastNumber = 0; // of the messages posted
};

// Leaked on purpose: listeners may be destroyed at exit.
Stations& TheStations()
{
    static Stations* const stations = new Stations;
    return *stations;
}

std::vector<ListenerPtr> ListenersFor(const StationID& inStation, std::uint64_t inNumber)
{
    std::vector<ListenerPtr> listeners;
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    if (const auto found = all.stations.find(inStation); found != all.stations.end()) {
        for (const ListenerPtr& listener : found->second.listeners) {
            if (listener->madeAfter < inNumber) {
                listeners.push_back(listener);
            }
        }
    }
    return listeners;
}

void Deliver(const StationID& inStation, std::uint64_t inNumber, const Message& inMessage)
{
    for (const ListenerPtr& listener : ListenersFor(inStation, inNumber)) {
        if (!listener->hears) {
            continue; // an earlier one has just destroyed it
        }
        try {
            listener->handler(inMessage);
        } catch (...) {
            threads::ReportException("A listener at station " + inStation.AsString());
        }
    }
}

void RegisterQuietly(const StationID& inStation, ObserveStation inObserve)
{
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    all.stations[inStation].observe = inObserve;
}

} // namespace

struct ScListener::State : Listener {
    using Listener::Listener;
};

Message::~Message() = default;

void RegisterStation(const StationID& inStation, ObserveStation inObserve)
{
    KIO_HOST_CALL("kiocore::messaging::RegisterStation", inStation, static_cast<int>(inObserve));
    RegisterQuietly(inStation, inObserve);
}

void DisposeStation(const StationID& inStation)
{
    KIO_HOST_CALL("kiocore::messaging::DisposeStation", inStation);
    Station disposed; // let go unlocked
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    const auto found = all.stations.find(inStation);
    if (found == all.stations.end()) {
        return;
    }
    // Whoever listens here later was made after the messages that are on their way, so these are lost
    // with the listeners of today.
    disposed = std::move(found->second);
    all.stations.erase(found);
    for (const ListenerPtr& listener : disposed.listeners) {
        listener->hears = false;
    }
}

bool IsStationRegistered(const StationID& inStation)
{
    KIO_HOST_CALL("kiocore::messaging::IsStationRegistered", inStation);
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    const auto found = all.stations.find(inStation);
    return found != all.stations.end() && found->second.observe;
}

StationID CreateUniqueStation()
{
    KIO_HOST_CALL("kiocore::messaging::CreateUniqueStation");
    const StationID station("station." + utility::Guid::CreateUnique().AsUTF8());
    RegisterQuietly(station, kObserveStation_Quiet);
    return station;
}

int PostMessageToUIThread(const StationID& inStation, std::shared_ptr<const Message> inMessage)
{
    if (!inMessage) {
        classref::ThrowNullReference(typeid(Message));
    }
    const Message& message = *inMessage;
    KIO_HOST_CALL("kiocore::messaging::PostMessageToUIThread", inStation, debug::TypeName(typeid(message)));
    std::uint64_t number;
    bool traced = false;
    {
        Stations& all = TheStations();
        std::lock_guard lock(all.lock);
        number = ++all.lastNumber;
        const auto found = all.stations.find(inStation);
        traced = found != all.stations.end() && found->second.observe == kObserveStation_Traced;
    }
    if (traced && debug::TraceEnabled("Messaging", kTracedLevel)) {
        debug::Trace(kTracedLevel, "Messaging",
                     inStation.AsString() + ": " + debug::TypeName(typeid(message)));
    }
    const auto mainThread = threads::TheMainThread();
    if (!mainThread) {
        return -1;
    }
    return mainThread->Post([station = inStation, number, message = std::move(inMessage)] {
        Deliver(station, number, *message);
    });
}

ScListener::ScListener(const StationID& inStation, Handler inHandler)
    : mState(std::make_shared<State>(inStation, std::move(inHandler)))
{
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    mState->madeAfter = all.lastNumber;
    all.stations[inStation].listeners.push_back(mState);
}

ScListener::~ScListener()
{
    mState->hears = false;
    Stations& all = TheStations();
    std::lock_guard lock(all.lock);
    const auto found = all.stations.find(mState->station);
    if (found == all.stations.end()) {
        return;
    }
    std::erase(found->second.listeners, mState);
    if (found->second.listeners.empty() && !found->second.observe) {
        all.stations.erase(found);
    }
}

} // namespace kiocore::messaging
