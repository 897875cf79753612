#pragma once

#include <memory>

namespace kioui::platform {

/// Qt ends the process when it reaches no window system; this asks first, in the same places and order.
/// @return the connection that was made to find out, to be held until Qt has made its own: some displays
/// begin
///     anew when their only client leaves, and are gone for a moment. May be empty.
/// @throws kio_exception (kError_Startup) naming each window system that was tried and why it cannot be used.
std::shared_ptr<void> RequireWindowSystem();

} // namespace kioui::platform
