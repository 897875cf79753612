#pragma once

#include <kiocore/Export.h>
#include <kiocore/messaging/Messaging.h>

#include <memory>
#include <vector>

namespace kiocore::messaging {

/// An object that messages are handed to, one after the other as they are posted, for as long as it lives.
///
/// Threading: main thread, where it is told too. It may stop listening and go while it is told.
class KIO_EXPORT Listener {
public:
    virtual ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    virtual void ListenToMessage(const Message& inMessage) = 0;

    /// Hears what is posted from now on. The station may be one that nobody registered.
    void ListenTo(const StationID& inStation);
    void StopListening();

protected:
    Listener();

private:
    std::vector<std::unique_ptr<ScListener>> mStations;
};

} // namespace kiocore::messaging
