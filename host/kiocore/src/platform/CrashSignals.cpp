#include "platform/CrashSignals.h"

#include <kiocore/debug/CrashHandling.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/exceptions/MachineException.h>

#include "debug/CrashThread.h"
#include "platform/SignalCalls.h"

#include <signal.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <mutex>
#include <system_error>

namespace kiocore::platform {
namespace {

// The first two are faults, which guards take.
constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
constexpr std::size_t kSignalCount = std::size(kSignals);
constexpr std::size_t kFaultCount = 2;

// All of these are initialised before any code runs; the handler reads them.
std::mutex sInstallLock; // for installing; never taken by the handler
struct sigaction sBefore[kSignalCount];
std::atomic<bool> sIsOurs[kSignalCount]; // somebody may call us as the one before him even when it is not set
std::atomic<bool> sIsOn{false};
std::atomic<void (*)() noexcept> sRunCallbacks{nullptr};
std::atomic<pid_t> sProcess{0};
std::atomic<pid_t> sCrashingThread{0}; // 0: none so far
std::atomic<int> sFirstSignal{0};
std::atomic<debug::FaultTaker> sFaultTakers[debug::kMostFaultTakers];

std::size_t IndexOf(int inSignal) noexcept
{
    std::size_t index = 0;
    while (index < kSignalCount && kSignals[index] != inSignal) {
        ++index;
    }
    return index;
}

/// Whether somebody made the fault on purpose.
bool IsTaken(int inSignal, siginfo_t& ioInfo, ucontext_t* ioContext) noexcept
{
    if (IndexOf(inSignal) >= kFaultCount || !IsFromTheProcessor(ioInfo)) {
        return false;
    }
    for (const auto& slot : sFaultTakers) {
        const debug::FaultTaker taker = slot.load();
        if (taker && taker(inSignal, &ioInfo, ioContext)) {
            return true;
        }
    }
    return false;
}

/// Jumps into the innermost guard of this thread, if there is one and it is its business.
void OfferToGuard(int inSignal, const siginfo_t& inInfo, const ucontext_t* inContext) noexcept
{
    debug::CrashThread* thread = debug::CrashThread::Current();
    exceptions::detail::GuardFrame* guard =
        thread ? thread->Guard().load(std::memory_order_relaxed) : nullptr;
    if (!guard || IndexOf(inSignal) >= kFaultCount || !IsFromTheProcessor(inInfo)) {
        return;
    }
    exceptions::detail::Disarm(*guard);
    guard->code = inSignal;
    guard->address = reinterpret_cast<std::uintptr_t>(inInfo.si_addr);
    // The jump restores no mask; what the system, or a handler that passes faults on to us, has blocked would
    // stay so.
    if (inContext) {
        pthread_sigmask(SIG_SETMASK, &inContext->uc_sigmask, nullptr);
    } else {
        Unblock(inSignal);
    }
    siglongjmp(guard->jump, 1);
}

/// The process ends with the signal once our handler returns, so that a core dump shows the fault and not us.
void EndWhenHandlerReturns(int inSignal, const siginfo_t& inInfo, ucontext_t* ioContext) noexcept
{
    Block(inSignal); // somebody who calls us may have it open
    SetDefault(inSignal);
    SendToThisThread(inSignal, &inInfo);
    if (ioContext) {
        sigdelset(&ioContext->uc_sigmask, inSignal);
    } else {
        Unblock(inSignal);
    }
}

[[noreturn]] void EndNow(int inSignal) noexcept
{
    SetDefault(inSignal);
    SendToThisThread(inSignal, nullptr);
    Unblock(inSignal);
    _exit(128 + inSignal); // the signal did not end us
}

/// As the system would have called it.
void CallHandler(const struct sigaction& inAction, int inSignal, siginfo_t* ioInfo, ucontext_t* ioContext)
{
    sigset_t mask = inAction.sa_mask;
    if ((inAction.sa_flags & SA_NODEFER) == 0) {
        sigaddset(&mask, inSignal);
    }
    sigset_t ours;
    pthread_sigmask(SIG_SETMASK, nullptr, &ours);
    if (ioContext) {
        pthread_sigmask(SIG_SETMASK, &ioContext->uc_sigmask, nullptr);
    } else {
        Unblock(inSignal);
    }
    pthread_sigmask(SIG_BLOCK, &mask, nullptr);
    if ((inAction.sa_flags & SA_SIGINFO) != 0) {
        inAction.sa_sigaction(inSignal, ioInfo, ioContext);
    } else {
        inAction.sa_handler(inSignal);
    }
    pthread_sigmask(SIG_SETMASK, &ours, nullptr);
}

void PassOn(int inSignal, siginfo_t* ioInfo, ucontext_t* ioContext)
{
    const std::size_t index = IndexOf(inSignal);
    if (index == kSignalCount) {
        return; // somebody calls us for a signal that we never had
    }
    struct sigaction& before = sBefore[index];
    const bool isSimple = (before.sa_flags & SA_SIGINFO) == 0;
    if (isSimple && before.sa_handler == SIG_IGN && !IsFromTheProcessor(*ioInfo)) {
        return;
    }
    if (isSimple && (before.sa_handler == SIG_DFL || before.sa_handler == SIG_IGN)) {
        EndWhenHandlerReturns(inSignal, *ioInfo, ioContext); // a fault cannot be ignored
        return;
    }
    const struct sigaction action = before;
    if ((before.sa_flags & SA_RESETHAND) != 0) {
        before.sa_flags = 0;
        before.sa_handler = SIG_DFL;
    }
    CallHandler(action, inSignal, ioInfo, ioContext);
}

void HandleCrash(int inSignal, const siginfo_t& inInfo, ucontext_t* ioContext) noexcept
{
    const pid_t thisThread = ThreadID();
    pid_t crashing = 0;
    if (!sCrashingThread.compare_exchange_strong(crashing, thisThread)) {
        if (crashing == thisThread) {
            EndNow(sFirstSignal.load()); // a callback crashed
        }
        WaitForEnd();
    }
    sFirstSignal.store(inSignal);
    BlockAllBut(kSignals); // no other handler in between
    if (debug::CrashThread* thread = debug::CrashThread::Current()) {
        thread->Guard().store(nullptr); // a fault in a callback must not lead back into the program
    }
    debug::gHostTraceOn.store(false, std::memory_order_relaxed); // a trace line needs memory
    if (auto* runCallbacks = sRunCallbacks.load()) {
        runCallbacks();
    }
    if (ProcessID() == 1) {
        EndNow(inSignal); // the system spares the first process of a container what it sends itself
    }
    EndWhenHandlerReturns(inSignal, inInfo, ioContext);
}

void OnSignal(int inSignal, siginfo_t* ioInfo, void* ioContext)
{
    const int error = errno;
    auto* context = static_cast<ucontext_t*>(ioContext);
    siginfo_t nothingKnown{}; // for whoever calls us with the number only
    siginfo_t* info = ioInfo ? ioInfo : &nothingKnown;
    if (IsTaken(inSignal, *info, context)) {
        errno = error;
        return;
    }
    OfferToGuard(inSignal, *info, context);
    if (!sIsOn.load()) {
        PassOn(inSignal, info, context);
    } else if (ProcessID() == sProcess.load()) {
        HandleCrash(inSignal, *info, context);
    } else {
        EndWhenHandlerReturns(inSignal, *info, context); // a forked child
    }
    errno = error;
}

/// Under sInstallLock.
void Take(std::size_t inIndex)
{
    if (sIsOurs[inIndex].load()) {
        return;
    }
    struct sigaction ours = {};
    ours.sa_sigaction = &OnSignal;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&ours.sa_mask);
    // Asked first, so that a handler that runs at once finds whom to pass on to.
    if (sigaction(kSignals[inIndex], nullptr, &sBefore[inIndex]) != 0 ||
        sigaction(kSignals[inIndex], &ours, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(),
                                "Cannot handle signal " + std::to_string(kSignals[inIndex]));
    }
    sIsOurs[inIndex].store(true);
}

/// Under sInstallLock. Stays ours where somebody else has come after us.
void GiveBack(std::size_t inIndex) noexcept
{
    struct sigaction now = {};
    if (sIsOurs[inIndex].load() && sigaction(kSignals[inIndex], nullptr, &now) == 0 &&
        (now.sa_flags & SA_SIGINFO) != 0 && now.sa_sigaction == &OnSignal &&
        sigaction(kSignals[inIndex], &sBefore[inIndex], nullptr) == 0) {
        sIsOurs[inIndex].store(false);
    }
}

} // namespace

std::atomic<bool> gFaultSignalsTaken{false};

void TakeFaultSignals()
{
    std::lock_guard lock(sInstallLock);
    for (std::size_t i = 0; i < kFaultCount; ++i) {
        Take(i);
    }
    gFaultSignalsTaken.store(true, std::memory_order_release);
}

bool KeepFaultTaker(debug::FaultTaker inTaker) noexcept
{
    for (auto& slot : sFaultTakers) {
        debug::FaultTaker empty = nullptr;
        if (slot.compare_exchange_strong(empty, inTaker) || empty == inTaker) {
            return true;
        }
    }
    return false;
}

void SwitchCrashHandlingOn(void (*inRunCallbacks)() noexcept)
{
    std::lock_guard lock(sInstallLock);
    sRunCallbacks.store(inRunCallbacks);
    if (sProcess.exchange(ProcessID()) != ProcessID()) {
        sCrashingThread.store(0); // perhaps a child that was forked while its parent crashed
    }
    for (std::size_t i = 0; i < kSignalCount; ++i) {
        Take(i);
    }
    sIsOn.store(true);
}

void SwitchCrashHandlingOff() noexcept
{
    std::lock_guard lock(sInstallLock);
    sIsOn.store(false);
    for (std::size_t i = gFaultSignalsTaken.load() ? kFaultCount : 0; i < kSignalCount; ++i) {
        GiveBack(i);
    }
}

bool IsCrashHandlingOn() noexcept
{
    return sIsOn.load();
}

void OpenCrashSignalsToThisThread() noexcept
{
    for (int signal : kSignals) {
        Unblock(signal);
    }
}

bool IsThisThreadCrashing() noexcept
{
    const pid_t crashing = sCrashingThread.load();
    return crashing != 0 && crashing == ThreadID();
}

} // namespace kiocore::platform
