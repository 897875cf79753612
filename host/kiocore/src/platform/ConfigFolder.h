#pragma once

#include <string>

namespace kiocore::platform {

/// The folder in which programs keep the user's settings, as a native path without a separator at its end:
/// $XDG_CONFIG_HOME when it is absolute, else .config in the user's home. Empty when there is neither.
std::string GetConfigFolder();

} // namespace kiocore::platform
