#include "support/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t sCount = 0;

} // namespace

#if defined(CRASH_CASES_SANITIZED)

// A sanitizer has an operator new of its own and tells us of its calls.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                                         void (*)(const volatile void*));

namespace {

void ListenOnce()
{
    static const int listening = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) { ++sCount; }, [](const volatile void*) {});
    if (listening == 0) {
        std::abort();
    }
}

} // namespace

#else

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

namespace {

void ListenOnce() {}

} // namespace

#endif

namespace support {

AllocationCount::AllocationCount()
{
    ListenOnce();
    mAtStart = sCount;
}

std::size_t AllocationCount::SinceThen() const
{
    return sCount - mAtStart;
}

} // namespace support
