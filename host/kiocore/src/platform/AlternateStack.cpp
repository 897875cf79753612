#include "platform/AlternateStack.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace kiocore::platform {
namespace {

// For crash callbacks: they have a path and a little book-keeping on the stack.
constexpr std::size_t kCallbackBytes = 64 * 1024;
constexpr std::size_t kLeastCallbackBytes = 16 * 1024;

std::size_t SystemBytes(int inName, std::size_t inOtherwise)
{
    const long bytes = sysconf(inName);
    return bytes > 0 ? static_cast<std::size_t>(bytes) : inOtherwise;
}

/// What the system wants for a handler; grows with the processor's registers.
std::size_t UsualBytes()
{
#if defined(_SC_SIGSTKSZ)
    return SystemBytes(_SC_SIGSTKSZ, 64 * 1024);
#else
    return std::max<std::size_t>(SIGSTKSZ, 64 * 1024);
#endif
}

/// What the system needs to enter a handler at all.
std::size_t LeastBytes()
{
#if defined(_SC_MINSIGSTKSZ)
    return SystemBytes(_SC_MINSIGSTKSZ, 16 * 1024);
#else
    return MINSIGSTKSZ;
#endif
}

} // namespace

AlternateStack::AlternateStack()
{
    if (sigaltstack(nullptr, &mBefore) == 0 && (mBefore.ss_flags & SS_DISABLE) == 0 &&
        mBefore.ss_size >= LeastBytes() + kLeastCallbackBytes) {
        return;
    }
    const std::size_t page = SystemBytes(_SC_PAGESIZE, 4096);
    const std::size_t stackBytes = (UsualBytes() + kCallbackBytes + page - 1) / page * page;
    void* mapping =
        mmap(nullptr, page + stackBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    mOurs.ss_sp = static_cast<char*>(mapping) + page;
    mOurs.ss_size = stackBytes;
    if (mprotect(mOurs.ss_sp, stackBytes, PROT_READ | PROT_WRITE) != 0 || sigaltstack(&mOurs, nullptr) != 0) {
        munmap(mapping, page + stackBytes);
        throw std::bad_alloc();
    }
    mMapping = mapping;
    mMappingBytes = page + stackBytes;
}

AlternateStack::~AlternateStack()
{
    if (!mMapping) {
        return;
    }
    stack_t now{};
    if (sigaltstack(nullptr, &now) == 0 && now.ss_sp == mOurs.ss_sp) {
        if ((mBefore.ss_flags & SS_DISABLE) != 0) {
            mBefore.ss_size = mOurs.ss_size; // some systems check it even so
        }
        if (sigaltstack(&mBefore, nullptr) != 0) {
            return; // still in use, so better kept
        }
    }
    munmap(mMapping, mMappingBytes);
}

} // namespace kiocore::platform
