#include "platform/Pages.h"

#include <sys/mman.h>

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define PAGES_ARE_SEARCHED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PAGES_ARE_SEARCHED 1
#endif
#endif
#ifdef PAGES_ARE_SEARCHED
#include <sanitizer/lsan_interface.h>
#endif

namespace kiocore::platform {
namespace {

/// Who looks for leaks must look for owners here too.
void Search([[maybe_unused]] void* inPages, [[maybe_unused]] std::size_t inBytes,
            [[maybe_unused]] bool inSearch)
{
#ifdef PAGES_ARE_SEARCHED
    inSearch ? __lsan_register_root_region(inPages, inBytes)
             : __lsan_unregister_root_region(inPages, inBytes);
#endif
}

} // namespace

void* MapPages(std::size_t inBytes)
{
    void* const pages = mmap(nullptr, inBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        throw std::bad_alloc();
    }
    Search(pages, inBytes, true);
    return pages;
}

void UnmapPages(void* inPages, std::size_t inBytes) noexcept
{
    Search(inPages, inBytes, false);
    munmap(inPages, inBytes);
}

void SetPagesWritable(void* inPages, std::size_t inBytes, bool inWritable) noexcept
{
    mprotect(inPages, inBytes, inWritable ? PROT_READ | PROT_WRITE : PROT_READ);
}

} // namespace kiocore::platform
