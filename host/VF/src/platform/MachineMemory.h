#pragma once

#include <cstdint>

namespace VF::platform {

/// All memory of the machine; a generous guess where the system does not tell.
std::uint64_t MachineMemoryBytes() noexcept;

} // namespace VF::platform
