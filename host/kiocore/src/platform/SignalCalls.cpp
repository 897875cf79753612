#include "platform/SignalCalls.h"

#include <pthread.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/syscall.h>
#endif

namespace kiocore::platform {

#if defined(__linux__)

// Straight to the kernel: the answers must be right in a child that was made without the C library's
// knowledge.
pid_t ProcessID() noexcept
{
    return static_cast<pid_t>(syscall(SYS_getpid));
}

pid_t ThreadID() noexcept
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

void SendToThisThread(int inSignal, const siginfo_t* inInfo) noexcept
{
    if (inInfo) {
        siginfo_t info = *inInfo; // the kernel takes it by a pointer to what may be changed
        if (syscall(SYS_rt_tgsigqueueinfo, ProcessID(), ThreadID(), inSignal, &info) == 0) {
            return;
        }
    }
    syscall(SYS_tgkill, ProcessID(), ThreadID(), inSignal);
}

#else

pid_t ProcessID() noexcept
{
    return getpid();
}

pid_t ThreadID() noexcept
{
    return static_cast<pid_t>(pthread_mach_thread_np(pthread_self()));
}

void SendToThisThread(int inSignal, const siginfo_t*) noexcept
{
    pthread_kill(pthread_self(), inSignal);
}

#endif

bool IsFromTheProcessor(const siginfo_t& inInfo) noexcept
{
    return inInfo.si_code > 0; // kill() is 0, other ways of sending are below
}

void SetDefault(int inSignal) noexcept
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    sigaction(inSignal, &action, nullptr);
}

void Block(int inSignal) noexcept
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, inSignal);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void Unblock(int inSignal) noexcept
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, inSignal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void BlockAllBut(std::span<const int> inSignals) noexcept
{
    sigset_t set;
    sigfillset(&set);
    for (int signal : inSignals) {
        sigdelset(&set, signal);
    }
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void WaitForEnd() noexcept
{
    for (;;) {
        pause();
    }
}

} // namespace kiocore::platform
