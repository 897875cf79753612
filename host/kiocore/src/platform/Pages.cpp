#include "platform/Pages.h"

#include <sys/mman.h>

#include <new>

namespace kiocore::platform {

void* MapPages(std::size_t inBytes)
{
    void* const pages = mmap(nullptr, inBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return pages;
}

void UnmapPages(void* inPages, std::size_t inBytes) noexcept
{
    munmap(inPages, inBytes);
}

void SetPagesWritable(void* inPages, std::size_t inBytes, bool inWritable) noexcept
{
    mprotect(inPages, inBytes, inWritable ? PROT_READ | PROT_WRITE : PROT_READ);
}

} // namespace kiocore::platform
