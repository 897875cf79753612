#pragma once

#include <kiocore/threads/Clock.h>

namespace kiocore::threads {

/// The innermost replacement of the clock; null while the system's is in use. One load.
Clock* ReplacedClock() noexcept;

} // namespace kiocore::threads
