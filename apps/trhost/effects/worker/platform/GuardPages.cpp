#include "GuardPages.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <sys/socket.h>
#include <ucontext.h>
#include <unistd.h>

namespace trhost::effects::platform {

namespace {

/// One block as the signal handler sees it: the key is set last and taken away first.
struct KnownBlock {
    std::atomic<std::uintptr_t> begin{0};
    std::atomic<std::uintptr_t> end{0};
    std::atomic<std::uintptr_t> lowest{0};
    std::atomic<std::uintptr_t> highest{0};
    std::atomic<MemoryUse> use{MemoryUse::kOutput};
};
constexpr std::size_t kMostBlocks = 1024;
constexpr std::uintptr_t kTaken = 1; // no block begins there
KnownBlock sBlocks[kMostBlocks];
int sReportFile = -1;
static_assert(std::atomic<std::uintptr_t>::is_always_lock_free &&
              std::atomic<MemoryUse>::is_always_lock_free);

std::uintptr_t Address(const void* inPointer)
{
    return reinterpret_cast<std::uintptr_t>(inPointer);
}

/// A line put together without anything that a signal handler may not call.
struct HandlerLine {
    char text[256];
    std::size_t size = 0;

    void Add(const char* inText)
    {
        while (*inText && size < sizeof(text)) {
            text[size++] = *inText++;
        }
    }
    void Add(std::uint64_t inNumber)
    {
        char digits[20];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + inNumber % 10);
            inNumber /= 10;
        } while (inNumber);
        while (count > 0 && size < sizeof(text)) {
            text[size++] = digits[--count];
        }
    }
};

bool WasWrite([[maybe_unused]] const void* inContext)
{
#if defined(__x86_64__)
    constexpr greg_t kWriteBit = 2; // of the processor's page fault code
    return (static_cast<const ucontext_t*>(inContext)->uc_mcontext.gregs[REG_ERR] & kWriteBit) != 0;
#else
    return true; // not told in a common way; the graver case is assumed
#endif
}

const char* UseName(MemoryUse inUse)
{
    switch (inUse) {
    case MemoryUse::kInput:
        return "input";
    case MemoryUse::kOutput:
        return "output";
    case MemoryUse::kGiven:
        return "given";
    }
    return "given";
}

void TellFault(std::uintptr_t inAddress, bool inWrote)
{
    for (const KnownBlock& block : sBlocks) {
        const std::uintptr_t begin = block.begin.load(std::memory_order_acquire);
        if (begin <= kTaken || inAddress < block.lowest || inAddress >= block.highest) {
            continue;
        }
        const std::uintptr_t end = block.end;
        const bool isBehind = inAddress >= end;
        HandlerLine line;
        line.Add("{\"finding\":{\"kind\":\"");
        line.Add(inWrote ? "wrote outside" : "read outside");
        line.Add("\",\"use\":\"");
        line.Add(UseName(block.use));
        line.Add(isBehind ? "\",\"behind\":true,\"distance\":" : "\",\"behind\":false,\"distance\":");
        line.Add(isBehind ? inAddress - end + 1 : begin - inAddress);
        line.Add("}}\n");
        [[maybe_unused]] const ssize_t sent = send(sReportFile, line.text, line.size, MSG_NOSIGNAL);
        return;
    }
}

extern "C" void HandleFault(int inSignal, siginfo_t* inInfo, void* inContext)
{
    const int error = errno;
    TellFault(Address(inInfo->si_addr), WasWrite(inContext));
    std::signal(inSignal, SIG_DFL); // the access happens again and ends the process
    errno = error;
}

} // namespace

GuardedPages MapGuardedPages(std::size_t inBytes)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t bytes = (inBytes + page - 1) / page * page;
    if (bytes < inBytes || bytes > SIZE_MAX / 2) {
        throw std::bad_alloc();
    }
    void* const mapping =
        mmap(nullptr, bytes + 2 * kGuardBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    std::byte* const begin = static_cast<std::byte*>(mapping) + kGuardBytes;
    if (bytes > 0 && mprotect(begin, bytes, PROT_READ | PROT_WRITE) != 0) {
        munmap(mapping, bytes + 2 * kGuardBytes);
        throw std::bad_alloc();
    }
    return {begin, begin + bytes};
}

void UnmapGuardedPages(const GuardedPages& inPages) noexcept
{
    munmap(inPages.begin - kGuardBytes,
           static_cast<std::size_t>(inPages.end - inPages.begin) + 2 * kGuardBytes);
}

void KnowBlock(const GuardedPages& inPages, const std::byte* inBegin, const std::byte* inEnd,
               MemoryUse inUse) noexcept
{
    for (KnownBlock& block : sBlocks) {
        std::uintptr_t free = 0;
        if (!block.begin.compare_exchange_strong(free, kTaken)) {
            continue;
        }
        block.end = Address(inEnd);
        block.lowest = Address(inPages.begin) - kGuardBytes;
        block.highest = Address(inPages.end) + kGuardBytes;
        block.use = inUse;
        block.begin.store(Address(inBegin), std::memory_order_release);
        return;
    }
}

void ForgetBlock(const std::byte* inBegin) noexcept
{
    for (KnownBlock& block : sBlocks) {
        std::uintptr_t known = Address(inBegin);
        if (block.begin.compare_exchange_strong(known, 0)) {
            return;
        }
    }
}

void ReportFaults(int inFile)
{
    sReportFile = inFile;
    // A stack of its own, so that a plug-in that has used up the usual one still ends by its own signal.
    static std::byte sStack[65536];
    const stack_t stack{sStack, 0, sizeof(sStack)};
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = HandleFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(SIGSEGV, &action, nullptr);
    sigaction(SIGBUS, &action, nullptr);
}

} // namespace trhost::effects::platform
