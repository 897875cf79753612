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

SharedRecycledMemory MakeSharedRecycledMemory(std::size_t inBytes)
{
    if (inBytes == 0) {
        return {};
    }
    try {
        auto* const bytes = static_cast<std::byte*>(::operator new(inBytes));
        return {std::shared_ptr<std::byte[]>(
                    bytes, [](std::byte* inMemory) { ::operator delete(inMemory); },
                    RecyclerAllocator<std::byte>()),
                inBytes};
    } catch (const std::bad_alloc&) {
        return {}; // for the bytes, or for what counts their users
    }
}

} // namespace kiocore::utility
