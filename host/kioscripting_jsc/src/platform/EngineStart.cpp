#include "platform/EngineStart.h"

#include "EngineFunctions.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/CrashHandling.h>

#include <signal.h>
#include <sys/mman.h>

#include <atomic>
#include <cstdlib>
#include <iterator>
#include <mutex>

namespace kioscripting_jsc::platform {
namespace {

constexpr int kFaults[] = {SIGSEGV, SIGBUS};
constexpr std::size_t kFaultCount = std::size(kFaults);

struct sigaction sBefore[kFaultCount];
struct sigaction sEngines[kFaultCount];
std::atomic<bool> sIsStarted{false};

// Where a signal handler finds them without a call that may need memory.
#define KIO_IN_HANDLERS __attribute__((tls_model("initial-exec")))
KIO_IN_HANDLERS thread_local int tScripts = 0;
KIO_IN_HANDLERS thread_local bool tIsEngines = false; // the fault that the engine is asked about

std::size_t IndexOf(int inSignal) noexcept
{
    return inSignal == kFaults[0] ? 0 : 1;
}

/// What the engine calls for a fault that is not its own, as the one who had the signal before.
void OnNotTheEngines(int inSignal, siginfo_t* inInfo, void*)
{
    if (sIsStarted.load()) {
        tIsEngines = false;
        return;
    }
    // Another thread faults while the engine starts: it does so again, to those who are to have it.
    sigaction(inSignal, &sBefore[IndexOf(inSignal)], nullptr);
    if (inInfo->si_code <= 0) {
        raise(inSignal);
    }
}

bool TakeFault(int inSignal, void* inInfo, void* ioContext) noexcept
{
    if (tScripts == 0) {
        return false;
    }
    const struct sigaction& engines = sEngines[IndexOf(inSignal)];
    tIsEngines = true;
    engines.sa_sigaction(inSignal, static_cast<siginfo_t*>(inInfo), ioContext);
    return tIsEngines;
}

bool IsOnNotTheEngines(const struct sigaction& inAction) noexcept
{
    return (inAction.sa_flags & SA_SIGINFO) != 0 && inAction.sa_sigaction == &OnNotTheEngines;
}

void CheckAddressSpace()
{
    constexpr std::size_t kBytes = std::size_t(6) << 30; // the least that the engine makes do with
    void* const space = mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (space == MAP_FAILED) {
        throw kiocore::kio_exception(
            "Cannot start JavaScriptCore: it needs 6 GB of address space, which a limit of the process "
            "(ulimit -v) does not leave",
            kiocore::kError_Startup);
    }
    munmap(space, kBytes);
}

void ChooseSignalToStopThreads()
{
    if (std::getenv("JSC_SIGNAL_FOR_GC")) {
        return;
    }
    for (int signal = SIGRTMAX - 1; signal > SIGRTMIN; --signal) {
        struct sigaction now = {};
        if (sigaction(signal, nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) == 0 &&
            now.sa_handler == SIG_DFL && JSConfigureSignalForGC(signal)) {
            return;
        }
    }
}

void Start()
{
    CheckAddressSpace();
    ChooseSignalToStopThreads();
    struct sigaction asking = {};
    asking.sa_sigaction = &OnNotTheEngines;
    asking.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&asking.sa_mask);
    for (std::size_t i = 0; i < kFaultCount; ++i) {
        sigaction(kFaults[i], &asking, &sBefore[i]);
    }
    JSContextGroupRelease(JSContextGroupCreate());
    bool isEngines = true;
    for (std::size_t i = 0; i < kFaultCount; ++i) {
        sigaction(kFaults[i], &sBefore[i], &sEngines[i]);
        // Somebody else had started it: then it stands behind us already.
        isEngines = isEngines && (sEngines[i].sa_flags & SA_SIGINFO) != 0 && !IsOnNotTheEngines(sEngines[i]);
    }
    sIsStarted.store(true);
    if (isEngines) {
        kiocore::debug::AddFaultTaker(&TakeFault);
    }
}

} // namespace

void StartEngine()
{
    static std::once_flag sOnce; // not done when starting throws
    std::call_once(sOnce, &Start);
}

ScScriptThread::ScScriptThread()
{
    if (tScripts == 0 && kiocore::debug::IsCrashHandlingInstalled()) {
        kiocore::debug::PrepareThreadForCrash();
    }
    ++tScripts;
}

ScScriptThread::~ScScriptThread()
{
    --tScripts;
}

} // namespace kioscripting_jsc::platform
