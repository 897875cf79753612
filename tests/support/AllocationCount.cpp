#include "support/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t sCount = 0;

} // namespace

void* operator new(std::size_t inSize)
{
    ++sCount;
    if (void* memory = std::malloc(inSize > 0 ? inSize : 1)) {
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

namespace support {

AllocationCount::AllocationCount() : mAtStart(sCount) {}

std::size_t AllocationCount::SinceThen() const
{
    return sCount - mAtStart;
}

} // namespace support
