#include <kiocore/messaging/Messaging.h>

namespace kiocore::messaging {

Message::~Message() = default;

} // namespace kiocore::messaging
