#pragma once

namespace kioui::platform {

/// Qt ends the process when it reaches no window system; this asks first, in the same places and order.
/// @throws kio_exception (kError_Startup) naming each window system that was tried and why it cannot be used.
void RequireWindowSystem();

} // namespace kioui::platform
