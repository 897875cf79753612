#include <kiocore/utility/MemoryRecycler.h>

#include <new>

namespace kiocore::utility {

void* RecyclerAllocate(std::size_t inBytes)
{
    return ::operator new(inBytes);
}
// Not the sized form: not every compiler of ours has it switched on.
void RecyclerFree(void* inBlock, std::size_t) noexcept
{
    ::operator delete(inBlock);
}

} // namespace kiocore::utility
