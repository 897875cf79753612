#include <kiocore/debug/CrashHandling.h>

#include <kiocore/config/Errors.h>

#include "debug/CrashThread.h"
#include "debug/TerminateHandler.h"
#include "platform/CrashSignals.h"

#include <array>

namespace kiocore::debug {
namespace {

// Without gaps, nulls last. Initialised before any code runs.
std::array<std::atomic<CrashCallback>, kMostCrashCallbacks> sCallbacks{};

void RunCallbacks() noexcept
{
    for (const auto& callback : sCallbacks) {
        if (CrashCallback call = callback.load()) {
            call();
        }
    }
}

} // namespace

void InstallCrashHandling()
{
    PrepareThreadForCrash();
    platform::SwitchCrashHandlingOn(&RunCallbacks);
    InstallTerminateHandler();
}

void UninstallCrashHandling() noexcept
{
    UninstallTerminateHandler();
    platform::SwitchCrashHandlingOff();
}

bool IsCrashHandlingInstalled() noexcept
{
    return platform::IsCrashHandlingOn();
}

void AddCrashCallback(CrashCallback inCallback)
{
    for (auto& callback : sCallbacks) {
        const CrashCallback there = callback.load();
        if (there == inCallback) {
            return;
        }
        if (!there) {
            callback.store(inCallback);
            return;
        }
    }
    throw kio_exception("Cannot add a crash callback: there are " + std::to_string(kMostCrashCallbacks) +
                            " already, which is the most",
                        kError_BadArgument);
}

void AddFaultTaker(FaultTaker inTaker)
{
    if (!platform::KeepFaultTaker(inTaker)) {
        throw kio_exception("Cannot add a taker of faults: there are " + std::to_string(kMostFaultTakers) +
                                " already, which is the most",
                            kError_BadArgument);
    }
    platform::TakeFaultSignals();
}

void RemoveCrashCallback(CrashCallback inCallback) noexcept
{
    std::size_t kept = 0;
    for (auto& callback : sCallbacks) {
        const CrashCallback there = callback.load();
        if (there && there != inCallback) {
            sCallbacks[kept++].store(there);
        }
    }
    for (; kept < sCallbacks.size(); ++kept) {
        sCallbacks[kept].store(nullptr);
    }
}

bool IsHandlingCrash() noexcept
{
    return platform::IsThisThreadCrashing();
}

void PrepareThreadForCrash()
{
    CrashThread::Demand();
}

} // namespace kiocore::debug
