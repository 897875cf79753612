#include "MachineMemory.h"

#include <unistd.h>

namespace VF::platform {

std::uint64_t MachineMemoryBytes() noexcept
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageBytes = ::sysconf(_SC_PAGESIZE);
    constexpr std::uint64_t kGuess = 4ull << 30;
    return pages > 0 && pageBytes > 0
               ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes)
               : kGuess;
}

} // namespace VF::platform
