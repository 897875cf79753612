#include "support/Faults.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace support {
namespace {

volatile int sSink = 0;

__attribute__((noinline)) void Recurse(volatile char* inCaller)
{
    volatile char frame[1024];
    frame[0] = inCaller[0];
    if (sSink >= 0) { // always, but the compiler does not know
        Recurse(frame);
    }
    sSink = frame[0]; // so that it is no tail call
}

} // namespace

void StoreThroughNull()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

void ReadNowhere()
{
    const volatile int* volatile nowhere = reinterpret_cast<const volatile int*>(kNowhere);
    sSink = *nowhere;
}

std::uintptr_t EndOfFileAddress()
{
    static const std::uintptr_t address = [] {
        const long page = sysconf(_SC_PAGESIZE);
        std::FILE* file = std::tmpfile();
        if (!file || ftruncate(fileno(file), page) != 0) {
            throw std::runtime_error("no temporary file");
        }
        void* mapping = mmap(nullptr, std::size_t(2 * page), PROT_READ, MAP_SHARED, fileno(file), 0);
        std::fclose(file);
        if (mapping == MAP_FAILED) {
            throw std::runtime_error("no mapping");
        }
        return reinterpret_cast<std::uintptr_t>(mapping) + std::uintptr_t(page);
    }();
    return address;
}

void ReadPastEndOfFile()
{
    const volatile char* volatile beyond = reinterpret_cast<const volatile char*>(EndOfFileAddress());
    sSink = *beyond;
}

void OverflowStack()
{
    volatile char first = 0;
    Recurse(&first);
}

} // namespace support
