#include "support/CrashCases.h"

#include "support/CrashCasesOfTheAllocator.h"
#include "support/Faults.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cassert>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace support {
namespace {

volatile int sZero = 0;
volatile int sOne = 1;
volatile int sSink = 0;

void JumpToData()
{
    static char data[64];
    auto* volatile function = reinterpret_cast<void (*)()>(data);
    function();
}

void DivideByZero()
{
#if defined(__x86_64__) || defined(__i386__)
    sSink = sOne / sZero;
#else
    std::raise(SIGFPE); // this processor divides by zero without a fault
#endif
}

void IllegalInstruction()
{
#if defined(__x86_64__) || defined(__i386__)
    asm volatile("ud2");
#else
    __builtin_trap();
#endif
}

void Trap()
{
#if defined(__x86_64__) || defined(__i386__)
    asm volatile("int3");
#else
    std::raise(SIGTRAP);
#endif
}

void FailAssertion()
{
    assert(sZero == 1);
}

/// Built with a stack protector. Apart, so that the compiler does not see the size.
__attribute__((noinline)) void Fill(char* outBytes, std::size_t inCount)
{
    std::memset(outBytes, 'x', inCount);
}

__attribute__((noinline)) void SmashStack()
{
    char small[16];
    Fill(small, sizeof(small) + 32 + static_cast<std::size_t>(sZero));
    sSink = small[sZero];
}

void ThrowUncaught()
{
    throw std::runtime_error("nobody catches this");
}

void ThrowInNoexcept() noexcept
{
    ThrowUncaught();
}

struct Abstract {
    Abstract() { Call(); }
    __attribute__((noinline)) void Call() { Missing(); }
    virtual void Missing() = 0;

protected:
    ~Abstract() = default;
};
struct Concrete final : Abstract {
    void Missing() override { sSink = 1; }
};

void CallPureVirtual()
{
    Concrete object;
}

void RaiseSignal()
{
    std::raise(SIGBUS);
}

/// The kernel refuses a system call with SIGSYS, as a sandbox makes it do.
void RefusedSystemCall()
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getppid, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter = {sizeof(program) / sizeof(program[0]), program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        std::raise(SIGSYS); // no filters on this machine
    }
    syscall(SYS_getppid);
}

void ExitWith3()
{
    std::exit(3);
}

void Kill9()
{
    kill(getpid(), SIGKILL);
}

/// A plug-in's helper process dies; the program itself goes on.
void CrashForkedHelper()
{
    const pid_t helper = fork();
    if (helper == 0) {
        StoreThroughNull();
    }
    int status = 0;
    if (waitpid(helper, &status, 0) != helper || !WIFSIGNALED(status) || WTERMSIG(status) != SIGSEGV) {
        std::fprintf(stderr, "the helper ended with status 0x%x\n", static_cast<unsigned>(status));
        std::_Exit(4);
    }
}

constexpr CrashCase kCases[] = {
    {"null-store", &StoreThroughNull, SIGSEGV, 0, true},
    {"wild-read", &ReadNowhere, SIGSEGV, 0, true},
    {"jump-to-data", &JumpToData, SIGSEGV, 0, true},
    {"stack-overflow", &OverflowStack, SIGSEGV, 0, true},
    {"division-by-zero", &DivideByZero, SIGFPE, 0, true},
    {"illegal-instruction", &IllegalInstruction, SIGILL, 0, true},
    {"past-end-of-file", &ReadPastEndOfFile, SIGBUS, 0, true},
    {"trap", &Trap, SIGTRAP, 0, true},
    {"abort", &std::abort, SIGABRT, 0, true},
    {"assert", &FailAssertion, SIGABRT, 0, true},
#if !defined(CRASH_CASES_THREAD_SANITIZER) // its allocator trusts whoever frees
    {"double-free", &FreeTwice, SIGABRT, 0, true},
    {"corrupted-heap", &FreeCorrupted, SIGABRT, 0, true},
#endif
#if !defined(CRASH_CASES_SANITIZED) // its allocator keeps its books where a program does not reach them
    {"allocator-locked", &FaultInAllocator, SIGSEGV, 0, true},
#endif
    {"stack-smash", &SmashStack, SIGABRT, 0, true},
    {"uncaught-exception", &ThrowUncaught, SIGABRT, 0, true},
    {"exception-in-noexcept", &ThrowInNoexcept, SIGABRT, 0, true},
    {"pure-virtual-call", &CallPureVirtual, SIGABRT, 0, true},
    {"terminate", &std::terminate, SIGABRT, 0, true},
    {"raised-signal", &RaiseSignal, SIGBUS, 0, true},
    {"refused-system-call", &RefusedSystemCall, SIGSYS, 0, true},
    {"exit-3", &ExitWith3, 0, 3, false},
    {"kill-9", &Kill9, SIGKILL, 0, false},
    {"crash-in-forked-helper", &CrashForkedHelper, 0, 0, false},
};

} // namespace

std::span<const CrashCase> CrashCases()
{
    return kCases;
}

void RunCrashCase(std::string_view inName)
{
    for (const CrashCase& known : kCases) {
        if (known.name == inName) {
            known.run();
            return;
        }
    }
    std::fprintf(stderr, "there is no crash case %.*s\n", static_cast<int>(inName.size()), inName.data());
    std::_Exit(2);
}

} // namespace support
