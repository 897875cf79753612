// script_crash_victim REPORT CASE MODE: ends as the case says while a script engine lives, with a line
// appended to REPORT by a crash callback. CASE is one of support/CrashCases.h, MODE one of kModes below.

#include <kiocore/debug/CrashHandling.h>
#include <kiocore/exceptions/MachineException.h>
#include <kioscripting_jsc/JSCEngine.h>

#include "ScriptClasses.h"
#include "support/CrashCases.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace {

using kiocore::exceptions::GuardMachineExceptions;
using kiocore::exceptions::machine_exception;
using kioscripting::IScriptEngine;
using script_classes::Meter;

const char* sReportPath = nullptr;
std::string_view sCase;

void Report() noexcept
{
    const int file = open(sReportPath, O_WRONLY | O_CREAT | O_APPEND, 0600);
    [[maybe_unused]] const ssize_t written = write(file, "crashed\n", 8);
    close(file);
}

void InstallReporting()
{
    kiocore::debug::AddCrashCallback(&Report);
    kiocore::debug::InstallCrashHandling();
}

void RunCase()
{
    support::RunCrashCase(sCase);
}

std::unique_ptr<IScriptEngine> MakeBusyEngine()
{
    auto engine = kioscripting_jsc::MakeEngine({});
    engine->SetGlobal("meter", kioscripting::ScriptObjectPtr(
                                   kioscripting::CreateScriptObject<Meter>(engine->GetContextHdl())));
    engine->Evaluate("let s = 0; for (let i = 0; i < 1e6; ++i) s += i % 7; s", "busy.js"); // compiled by now
    return engine;
}

void CallFromScript(IScriptEngine& inEngine, void (*inFunction)())
{
    Meter::sCalled = inFunction;
    inEngine.Evaluate("(function deep(n) { if (n > 0) deep(n - 1); else meter.call() })(50)", "call.js");
}

void InNative()
{
    InstallReporting();
    CallFromScript(*MakeBusyEngine(), &RunCase);
}

void InNativeOnAWorker()
{
    InstallReporting();
    std::thread([] { CallFromScript(*MakeBusyEngine(), &RunCase); }).join();
}

void BesideAnEngine()
{
    InstallReporting();
    const auto engine = MakeBusyEngine();
    std::thread([] {
        kiocore::debug::PrepareThreadForCrash(); // as every thread that is to report an overflow of its stack
        RunCase();
    }).join();
}

void OnAThreadThatHadAnEngine()
{
    InstallReporting();
    MakeBusyEngine();
    RunCase();
}

void InstalledAfterTheEngine()
{
    const auto engine = MakeBusyEngine();
    InstallReporting();
    CallFromScript(*engine, &RunCase);
}

void StoreThroughNull()
{
    support::RunCrashCase("null-store");
}

void Overflow()
{
    support::RunCrashCase("stack-overflow");
}

/// Guards within scripts, and around them, and the engine's own faults in between.
void Guarded()
{
    InstallReporting();
    const auto engine = MakeBusyEngine();
    int caught = 0;
    for (int i = 0; i < 50; ++i) {
        static int* sCaught = nullptr;
        sCaught = &caught;
        for (auto* const fault : {&StoreThroughNull, &Overflow}) {
            static void (*sFault)() = nullptr;
            sFault = fault;
            CallFromScript(*engine, [] {
                try {
                    GuardMachineExceptions(sFault);
                } catch (const machine_exception&) {
                    ++*sCaught;
                }
            });
        }
    }
    if (caught != 100) {
        std::fprintf(stderr, "caught %d\n", caught);
        std::_Exit(7);
    }
    RunCase();
}

/// What the engine reads out of a module's memory faults on purpose, and becomes an error of the script's.
constexpr const char kOutOfBounds[] = R"(
    const bytes = new Uint8Array([0, 97, 115, 109, 1, 0, 0, 0, 1, 6, 1, 96, 1, 127, 1, 127, 3, 2, 1, 0, 5, 3, 1, 0, 1,
        7, 8, 1, 4, 114, 101, 97, 100, 0, 0, 10, 9, 1, 7, 0, 32, 0, 40, 2, 0, 11]);
    const { read } = new WebAssembly.Instance(new WebAssembly.Module(bytes)).exports;
    let errors = 0;
    for (let i = 0; i < 20000; ++i) {
        read(i % 60000);
    }
    for (let i = 0; i < 100; ++i) {
        try { read(0x7ffffff0); } catch (e) { errors += e instanceof WebAssembly.RuntimeError; }
    }
    errors)";

void EnginesOwnFaults(bool inInstalledFirst)
{
    if (inInstalledFirst) {
        InstallReporting();
    }
    const auto engine = MakeBusyEngine();
    if (!inInstalledFirst) {
        InstallReporting();
    }
    // Within a guard: it is for faults that nobody meant.
    GuardMachineExceptions([&] {
        if (engine->Evaluate(kOutOfBounds, "wasm.js") != kioscripting::Value(100)) {
            std::_Exit(9);
        }
    });
    kioscripting::EngineSettings settings;
    settings.timeLimitSeconds = 0.05;
    try {
        kioscripting_jsc::MakeEngine(settings)->Evaluate("let n = 0; for (;;) n++", "endless.js");
        std::_Exit(10);
    } catch (const kioscripting::script_exception&) {
    }
    RunCase();
}

constexpr struct {
    const char* name;
    void (*run)();
} kModes[] = {
    {"in-native", &InNative},
    {"in-native-on-worker", &InNativeOnAWorker},
    {"beside-an-engine", &BesideAnEngine},
    {"where-an-engine-was", &OnAThreadThatHadAnEngine},
    {"installed-after-the-engine", &InstalledAfterTheEngine},
    {"guarded", &Guarded},
    {"engines-own-faults", [] { EnginesOwnFaults(true); }},
    {"engines-own-faults-before-installing", [] { EnginesOwnFaults(false); }},
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
    std::fprintf(stderr, "script_crash_victim REPORT CASE MODE\n");
    return 2;
}
