#pragma once

#include <kiocore/debug/CrashHandling.h>

#include <atomic>

namespace kiocore::platform {

/// The signals of a crash, and who gets them: whoever made a fault on purpose, the armed guard of the
/// faulting thread, else crash handling while it is on, else whoever had the signal before us.
///
/// Threading: any thread, except as crash handling's own functions say.

/// SIGSEGV and SIGBUS come to us from now on, for guards.
/// @throws std::system_error when the system refuses.
void TakeFaultSignals();
extern std::atomic<bool> gFaultSignalsTaken;
inline bool AreFaultSignalsTaken() noexcept
{
    return gFaultSignalsTaken.load(std::memory_order_acquire);
}

/// Asked first about every fault from now on, once the signals are taken.
/// @return false when there is no room.
bool KeepFaultTaker(debug::FaultTaker inTaker) noexcept;

/// All of them come to us, and crash handling is on for this process, though not for its forked children.
/// @param inRunCallbacks  called at most once, in the signal handler.
/// @throws std::system_error when the system refuses.
void SwitchCrashHandlingOn(void (*inRunCallbacks)() noexcept);
/// The signals go back, except those that guards need, and those that somebody else has taken since, who may
/// count on us as the one before him.
void SwitchCrashHandlingOff() noexcept;
bool IsCrashHandlingOn() noexcept;

/// A fault while its signal is blocked ends the process at once, and threads are often started with all
/// signals blocked.
void OpenCrashSignalsToThisThread() noexcept;

/// Whether the calling thread is in inRunCallbacks.
bool IsThisThreadCrashing() noexcept;

} // namespace kiocore::platform
