#include <kiocore/messaging/Listener.h>

#include <kiocore/debug/Trace.h>

namespace kiocore::messaging {

Listener::Listener() = default;
Listener::~Listener() = default;

void Listener::ListenTo(const StationID& inStation)
{
    KIO_HOST_CALL("kiocore::messaging::Listener::ListenTo", inStation);
    mStations.push_back(std::make_unique<ScListener>(
        inStation, [this](const Message& inMessage) { ListenToMessage(inMessage); }));
}

void Listener::StopListening()
{
    mStations.clear();
}

} // namespace kiocore::messaging
