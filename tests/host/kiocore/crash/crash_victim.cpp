// crash_victim REPORT CASE MODE: ends as the case says, with its innermost crash context's text appended to
// REPORT by a crash callback. CASE is one of support/CrashCases.h, MODE one of kModes below.

#include <kiocore/debug/CrashContext.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/exceptions/MachineException.h>

#include "support/CrashCases.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <barrier>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace {

using kiocore::ImmutableString;
using kiocore::debug::PopCrashContextForCurrentThread;
using kiocore::debug::PushCrashContextForCurrentThread;
using kiocore::exceptions::GuardMachineExceptions;
using kiocore::utility::Dictionary;

const char* sReportPath = nullptr;
std::string_view sCase;

void Report() noexcept
{
    if (!kiocore::debug::IsHandlingCrash()) {
        _exit(5);
    }
    KIO_HOST_CALL("must not be written: it would need memory");
    const auto stack = kiocore::debug::detail::InspectCrashContextForCurrentThread();
    for (std::size_t i = 0; i < stack.Depth(); ++i) {
        if (const Dictionary::Value* value = stack.At(i).Find("victim")) {
            const std::string_view text = boost::get<ImmutableString>(*value);
            const int file = open(sReportPath, O_WRONLY | O_CREAT | O_APPEND, 0600);
            [[maybe_unused]] const ssize_t written = write(file, text.data(), text.size());
            close(file);
            return;
        }
    }
}

void Fault() noexcept
{
    support::RunCrashCase("null-store");
}

void Abort() noexcept
{
    std::abort();
}

void InstallReporting()
{
    kiocore::debug::SetTraceLevel("Host", 10);
    kiocore::debug::AddCrashCallback(&Report);
    kiocore::debug::InstallCrashHandling();
}

void RunCaseInContext()
{
    PushCrashContextForCurrentThread("victim", "the outer one");
    PushCrashContextForCurrentThread("victim", "one that came back");
    PopCrashContextForCurrentThread();
    PushCrashContextForCurrentThread("victim", "{\"innermost\":\"\xC3\xA9\\n\"}");
    PushCrashContextForCurrentThread("other", "not the victim's");
    support::RunCrashCase(sCase);
}

void OnMain()
{
    InstallReporting();
    RunCaseInContext();
}

void OnWorker()
{
    InstallReporting();
    std::thread(&RunCaseInContext).join();
}

/// As libraries often start theirs, so that no signal of the program is handled there.
void OnWorkerWithSignalsBlocked()
{
    InstallReporting();
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    std::thread(&RunCaseInContext).join();
}

void OnTwoThreadsAtOnce()
{
    InstallReporting();
    std::barrier together(2);
    const auto run = [&] {
        together.arrive_and_wait();
        RunCaseInContext();
    };
    std::thread other(run);
    run();
    other.join();
}

void WithFaultingCallback()
{
    kiocore::debug::AddCrashCallback(&Fault);
    OnMain();
}

void WithAbortingCallback()
{
    kiocore::debug::AddCrashCallback(&Abort);
    OnMain();
}

/// A fault while crash callbacks run must not lead back into the program.
void WithFaultingCallbackInGuard()
{
    kiocore::debug::AddCrashCallback(&Fault);
    InstallReporting();
    try {
        GuardMachineExceptions(&RunCaseInContext);
    } catch (const kiocore::exceptions::machine_exception&) {
        std::_Exit(6);
    }
}

struct sigaction sOurs;

/// Other software that takes the signal after us and passes on what is not its own.
void PassOnToOurs(int inSignal, siginfo_t* inInfo, void* inContext)
{
    sOurs.sa_sigaction(inSignal, inInfo, inContext);
}

void TakeFaults(void (*inHandler)(int, siginfo_t*, void*), struct sigaction* outBefore)
{
    struct sigaction action = {};
    action.sa_sigaction = inHandler;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask);
    sigaction(SIGSEGV, &action, outBefore);
}

void BehindAnotherHandler()
{
    InstallReporting();
    TakeFaults(&PassOnToOurs, &sOurs);
    int caught = 0;
    for (int i = 0; i < 1000; ++i) {
        try {
            GuardMachineExceptions(&Fault);
        } catch (const kiocore::exceptions::machine_exception&) {
            ++caught;
        }
    }
    if (caught != 1000) {
        std::_Exit(7);
    }
    RunCaseInContext();
}

void Uninstalled()
{
    InstallReporting();
    kiocore::debug::UninstallCrashHandling();
    RunCaseInContext();
}

void InstalledAgainInAForkedChild()
{
    InstallReporting();
    if (fork() == 0) {
        kiocore::debug::InstallCrashHandling();
        RunCaseInContext();
    }
    int status = 0;
    wait(&status);
}

void GuardsOnly()
{
    GuardMachineExceptions([] {});
}

void OldHandler(int inSignal)
{
    std::fprintf(stderr, "old handler: %d\n", inSignal);
    std::_Exit(8);
}

void GuardsOnlyAfterAnOldHandler()
{
    std::signal(SIGSEGV, &OldHandler);
    GuardsOnly();
    RunCaseInContext();
}

void GuardsOnlyAfterDefault()
{
    std::signal(SIGSEGV, SIG_DFL);
    GuardsOnly();
    RunCaseInContext();
}

void GuardsOnlyAfterIgnore()
{
    std::signal(SIGSEGV, SIG_IGN);
    GuardsOnly();
    std::raise(SIGSEGV); // ignored, as before
    RunCaseInContext();  // a fault cannot be ignored
}

char* sPage = nullptr;

/// Sets things right, so that the instruction can be done again.
void OpenPage(int, siginfo_t* inInfo, void* inContext)
{
    errno = 0;
    if (inInfo->si_addr != sPage || !inContext || mprotect(sPage, 1, PROT_READ) != 0) {
        std::_Exit(9);
    }
}

void GuardsOnlyAfterAHandlerThatRepairs()
{
    sPage = static_cast<char*>(mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    TakeFaults(&OpenPage, nullptr);
    GuardsOnly();
    errno = E2BIG;
    const char read = *const_cast<volatile char*>(sPage);
    std::_Exit(read == 0 && errno == E2BIG ? 0 : 10);
}

constexpr struct {
    const char* name;
    void (*run)();
} kModes[] = {
    {"main", &OnMain},
    {"worker", &OnWorker},
    {"worker-with-signals-blocked", &OnWorkerWithSignalsBlocked},
    {"two-threads-at-once", &OnTwoThreadsAtOnce},
    {"faulting-callback", &WithFaultingCallback},
    {"aborting-callback", &WithAbortingCallback},
    {"faulting-callback-in-guard", &WithFaultingCallbackInGuard},
    {"behind-another-handler", &BehindAnotherHandler},
    {"uninstalled", &Uninstalled},
    {"installed-again-in-forked-child", &InstalledAgainInAForkedChild},
    {"guards-only-after-old-handler", &GuardsOnlyAfterAnOldHandler},
    {"guards-only-after-default", &GuardsOnlyAfterDefault},
    {"guards-only-after-ignore", &GuardsOnlyAfterIgnore},
    {"guards-only-after-repairing-handler", &GuardsOnlyAfterAHandlerThatRepairs},
};

} // namespace

int main(int inCount, char** inArguments)
{
    if (inCount == 4) {
        sReportPath = inArguments[1];
        sCase = inArguments[2];
        for (const auto& mode : kModes) {
            if (std::string_view(inArguments[3]) == mode.name) {
                mode.run();
                return 0;
            }
        }
    }
    std::fprintf(stderr, "crash_victim REPORT CASE MODE\n");
    return 2;
}
