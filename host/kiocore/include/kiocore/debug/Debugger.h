#pragma once

#include <kiocore/Export.h>

namespace kiocore::debug {

/// Asked of the system at each call (on Linux: a tracer in /proc/self/status).
KIO_EXPORT bool IsDebuggerAttached();
/// Stops in the attached debugger as at a breakpoint. Ends the process when there is none.
KIO_EXPORT void BreakIntoDebugger();

} // namespace kiocore::debug
