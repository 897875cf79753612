#pragma once

#include <kiocore/Export.h>

#include <cstddef>

namespace kiocore::debug {

/// What the process does when it crashes: SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS and
/// std::terminate. The crash callbacks run once, on the crashing thread and its alternate stack, in the order
/// of registration; then the process ends with its original signal. A thread that crashes later waits for
/// that end; a callback that crashes itself ends it at once. In a forked child nothing is called.
///
/// A fault inside a machine-exception guard is the guard's (see exceptions/MachineException.h). Who had one
/// of the signals before is not asked; who takes one later should pass on to us what is not his.

/// Called in a signal handler: only what is async-signal-safe may be done, so no memory, no lock, no
/// function-local static on its first use, no thread_local with a constructor.
using CrashCallback = void (*)() noexcept;
inline constexpr std::size_t kMostCrashCallbacks = 8;

/// Installs the handlers and gives the calling thread an alternate stack. Installing again is no error; a
/// forked child that wants crash handling of its own does.
/// std::terminate first says what was thrown, unless the program has a terminate handler of its own.
/// @throws std::system_error when the system refuses the signals.
///
/// Threading: once at start, before other threads run.
KIO_EXPORT void InstallCrashHandling();
/// Gives the signals back to who had them before.
KIO_EXPORT void UninstallCrashHandling() noexcept;
KIO_EXPORT bool IsCrashHandlingInstalled() noexcept;

/// Registering one twice is no error.
/// @throws kio_exception (kError_BadArgument) beyond kMostCrashCallbacks.
///
/// Threading: once at start, as above.
KIO_EXPORT void AddCrashCallback(CrashCallback inCallback);
KIO_EXPORT void RemoveCrashCallback(CrashCallback inCallback) noexcept;

/// True while the calling thread runs crash callbacks.
KIO_EXPORT bool IsHandlingCrash() noexcept;

/// Software that lets the processor fault on purpose, as engines that compile scripts do, is asked before
/// guards and crash handling, on the faulting thread and its alternate stack, whoever came first. From then
/// on the signals of faults (SIGSEGV, SIGBUS) are ours, whether crash handling is installed or not.
/// @param inInfo, ioContext  the handler's siginfo_t and ucontext_t.
/// @return whether the fault was its own; the thread goes on where ioContext says then.
using FaultTaker = bool (*)(int inSignal, void* inInfo, void* ioContext) noexcept;
inline constexpr std::size_t kMostFaultTakers = 4;

/// For good. Adding one twice is no error.
/// @throws kio_exception (kError_BadArgument) beyond kMostFaultTakers; std::system_error when the system
/// refuses
///     the signals.
///
/// Threading: any thread.
KIO_EXPORT void AddFaultTaker(FaultTaker inTaker);

/// Gives the calling thread an alternate stack of the size that the system asks for and ours need, with a
/// guard page below, so that a stack overflow can be handled. Given back when the thread ends. A thread that
/// has one of its own that is large enough keeps it. Opens the signals of a crash if the thread was started
/// with them blocked. Pushing a crash context and arming a guard do this too, once for the thread.
/// @throws std::bad_alloc.
KIO_EXPORT void PrepareThreadForCrash();

} // namespace kiocore::debug
