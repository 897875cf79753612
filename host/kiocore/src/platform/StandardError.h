#pragma once

#include <string>

namespace kiocore::platform {

/// Writes the line and a line feed to standard error, in one piece where the system can, so that lines of
/// several processes on one terminal stay whole. Silent when nobody listens.
void WriteLineToStandardError(std::string inLine);

} // namespace kiocore::platform
