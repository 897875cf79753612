#include "support/CrashCasesOfTheAllocator.h"

#include <pthread.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace support {
namespace {

// Through volatile pointers, so that the compiler neither warns nor leaves anything out.
void* (*volatile sMalloc)(std::size_t) = &std::malloc;
void (*volatile sFree)(void*) = &std::free;

void* Sleep(void*)
{
    for (;;) {
        pause();
    }
}

} // namespace

void FreeTwice()
{
    void* block = sMalloc(100);
    sFree(block);
    sFree(block);
}

void FreeCorrupted()
{
    auto* block = static_cast<char*>(sMalloc(100));
    void* (*volatile fill)(void*, int, std::size_t) = &std::memset;
    fill(block - 16, 0x41, 16);
    sFree(block);
}

void FaultInAllocator()
{
    pthread_t other; // the allocator takes its lock only when there is somebody to share with
    pthread_create(&other, nullptr, &Sleep, nullptr);
    // Too large for the lists of a thread, so that freeing puts it among the unsorted, which the next request
    // for another size walks through. Its second word is the way to the one before it. One in a row of many,
    // so that its neighbours are in use, and it does not merge with them.
    volatile std::uintptr_t* blocks[64];
    for (auto& block : blocks) {
        block = static_cast<volatile std::uintptr_t*>(sMalloc(4000));
    }
    sFree(const_cast<std::uintptr_t*>(blocks[62]));
    blocks[62][1] = 0x5000;
    sMalloc(8000);
}

} // namespace support
