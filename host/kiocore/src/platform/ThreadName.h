#pragma once

#include <string>

namespace kiocore::platform {

/// Names the calling thread for debuggers and process listings; shortened to what the system takes.
void NameThisThread(const std::string& inName) noexcept;

} // namespace kiocore::platform
