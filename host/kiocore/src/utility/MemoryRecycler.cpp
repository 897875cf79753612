#include <kiocore/utility/MemoryRecycler.h>

#include <new>

namespace kiocore::utility {

void* RecyclerAllocate(std::size_t inBytes) { return ::operator new(inBytes); }
void RecyclerFree(void* inBlock, std::size_t inBytes) noexcept { ::operator delete(inBlock, inBytes); }

} // namespace kiocore::utility
