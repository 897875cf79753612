#pragma once

#include <chrono>

namespace kiocore::platform {

/// The steady time as of the system's last tick, a few milliseconds back at the most; reads no timer.
std::chrono::steady_clock::time_point CoarseSteadyTime() noexcept;

} // namespace kiocore::platform
