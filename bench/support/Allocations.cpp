#include "Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> sAllocations{0};

} // namespace

void* operator new(std::size_t inBytes)
{
    sAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(inBytes ? inBytes : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* inMemory) noexcept
{
    std::free(inMemory);
}
void operator delete(void* inMemory, std::size_t) noexcept
{
    std::free(inMemory);
}

namespace bench {

std::size_t AllocationCount()
{
    return sAllocations.load();
}

} // namespace bench
