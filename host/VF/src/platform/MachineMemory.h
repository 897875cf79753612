#pragma once

#include <cstddef>
#include <cstdint>

namespace VF::platform {

/// All memory of the machine; a generous guess where the system does not tell.
std::uint64_t MachineMemoryBytes() noexcept;

/// Asks for large pages, as far as they fit into that memory, which is about to be used from end to end:
/// getting thousands of small ones takes as long as decoding a picture. Where there are none nothing happens.
void PreferLargePages(void* inMemory, std::size_t inBytes) noexcept;

} // namespace VF::platform
