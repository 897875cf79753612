#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/ImmutableString.h>

#include <functional>
#include <memory>
#include <typeinfo>
#include <utility>

namespace kiocore::messaging {

/// Names a station: a place that messages are posted to and listened at.
using StationID = utility::ImmutableString;

/// How a station is watched. kObserveStation_Traced writes each message posted to it to trace channel
/// "Messaging" at level 5.
enum ObserveStation : int { kObserveStation_Quiet = 0, kObserveStation_Traced = 1 };

/// Base of all messages; a message is immutable once posted.
class KIO_EXPORT Message {
public:
    virtual ~Message();
};

/// Makes a station known. Registering one again is no error; the newest observation counts. Stations
/// need not be registered to be used: a registered one exists without listeners.
KIO_EXPORT void RegisterStation(const StationID& inStation, ObserveStation inObserve);
/// Forgets the station; messages that are on their way to it are dropped, its listeners hear nothing
/// more. Unknown stations are no error.
KIO_EXPORT void DisposeStation(const StationID& inStation);
KIO_EXPORT bool IsStationRegistered(const StationID& inStation);
/// A registered station under a name that was never used before.
KIO_EXPORT StationID CreateUniqueStation();

/// Delivers the message to the station's listeners on the main thread, in order of posting.
/// A handler that throws is reported on trace channel "Threads"; the other listeners still hear it.
/// @return 0 it will be delivered; negative when no main thread is registered: it is dropped, as there
///     is no user interface that could miss it.
/// @throws null_reference_exception when inMessage is empty.
KIO_EXPORT int PostMessageToUIThread(const StationID& inStation, std::shared_ptr<const Message> inMessage);
/// The same for a message made in place.
template <typename MessageType, typename... Arguments>
int PostNewMessageToUIThread(const StationID& inStation, Arguments&&... inArguments)
{
    return PostMessageToUIThread(
        inStation, std::make_shared<const MessageType>(std::forward<Arguments>(inArguments)...));
}

/// Listens at a station for as long as it lives.
///
/// Threading: made and destroyed on the main thread, where the handler is called, unlocked. A handler
/// may destroy its own listener and make others; a listener hears nothing posted before it was made.
class KIO_EXPORT ScListener {
public:
    using Handler = std::function<void(const Message&)>;
    ScListener(const StationID& inStation, Handler inHandler);
    ~ScListener();
    ScListener(const ScListener&) = delete;
    ScListener& operator=(const ScListener&) = delete;

private:
    struct State;
    std::shared_ptr<State> mState;
};

} // namespace kiocore::messaging
