#pragma once

#include <kiocore/Export.h>

#include <atomic>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <stdexcept>

namespace kiocore::exceptions {

/// A memory-access fault (SIGSEGV, SIGBUS) that a guard turned into an exception. what() is
/// "Machine exception".
class KIO_EXPORT machine_exception : public std::runtime_error {
public:
    machine_exception(int inCode, std::uintptr_t inAddress);
    ~machine_exception() override;
    /// The signal's number.
    int Code() const noexcept { return mCode; }
    std::uintptr_t Address() const noexcept { return mAddress; }

private:
    int mCode;
    std::uintptr_t mAddress;
};

/// The code of a machine exception; empty for every other exception.
KIO_EXPORT std::optional<int> GetMachineExceptionCode(const std::exception& inException) noexcept;

namespace detail {

/// One armed guard of a thread, on its stack.
struct GuardFrame {
    sigjmp_buf jump;
    std::atomic<GuardFrame*>* innermost; // the thread's
    GuardFrame* outer;
    std::size_t contextDepth;
    int code;
    std::uintptr_t address;
};
/// @throws std::bad_alloc, and std::system_error when the signals cannot be had.
KIO_EXPORT void Arm(GuardFrame& ioFrame);
inline void Disarm(GuardFrame& inFrame) noexcept
{
    std::atomic_signal_fence(std::memory_order_acq_rel);
    inFrame.innermost->store(inFrame.outer, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_acq_rel);
}
/// After a fault: the guard is disarmed, the crash context as deep as when it was armed.
[[noreturn]] KIO_EXPORT void ThrowMachineException(GuardFrame& ioFrame);

} // namespace detail

/// Runs inFunction() and turns a memory-access fault in it into a machine_exception. Destructors of what
/// stood on the stack between here and the fault do not run: what it held is lost, locks among it stay
/// locked. So inFunction does little and owns nothing; what it wrote just before may not have reached memory.
/// Guards nest; the innermost of the faulting thread takes the fault, and crash contexts pushed since are
/// dropped. Also a stack overflow is caught.
///
/// The first guard of the process installs the signal handlers that it needs. A fault outside of guards goes
/// on to whoever had the signal before, unless crash handling is installed. A signal that was sent (kill,
/// raise) is no fault.
///
/// Threading: any thread; each has guards of its own.
template <typename Function>
void GuardMachineExceptions(Function&& inFunction)
{
    detail::GuardFrame frame;
    // No signal mask is saved: that would be a system call each time. The handler restores it.
    if (sigsetjmp(frame.jump, 0) != 0) {
        detail::ThrowMachineException(frame);
    }
    detail::Arm(frame);
    try {
        inFunction();
    } catch (...) {
        detail::Disarm(frame);
        throw;
    }
    detail::Disarm(frame);
}

} // namespace kiocore::exceptions
