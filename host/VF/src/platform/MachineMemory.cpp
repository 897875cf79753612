#include "MachineMemory.h"

#include <sys/mman.h>
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

void PreferLargePages(void* inMemory, std::size_t inBytes) noexcept
{
    const long pageBytes = ::sysconf(_SC_PAGESIZE);
    if (pageBytes <= 0) {
        return;
    }
    // Whole small pages of ours only; the system takes large ones where they fit.
    const auto page = static_cast<std::uintptr_t>(pageBytes);
    const auto start = (reinterpret_cast<std::uintptr_t>(inMemory) + page - 1) / page * page;
    const auto end = (reinterpret_cast<std::uintptr_t>(inMemory) + inBytes) / page * page;
    if (start < end) {
        ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
    }
}

} // namespace VF::platform
