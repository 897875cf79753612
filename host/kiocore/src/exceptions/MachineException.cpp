#include <kiocore/exceptions/MachineException.h>

#include <kiocore/debug/CrashContext.h>

#include "debug/CrashThread.h"
#include "platform/CrashSignals.h"

namespace kiocore::exceptions {

machine_exception::machine_exception(int inCode, std::uintptr_t inAddress)
    : std::runtime_error("Machine exception"), mCode(inCode), mAddress(inAddress)
{}
machine_exception::~machine_exception() = default;

std::optional<int> GetMachineExceptionCode(const std::exception& inException) noexcept
{
    if (const auto* machineException = dynamic_cast<const machine_exception*>(&inException)) {
        return machineException->Code();
    }
    return std::nullopt;
}

namespace detail {

namespace {

void ArmOn(debug::CrashThread& ioThread, GuardFrame& ioFrame) noexcept
{
    ioFrame.innermost = &ioThread.Guard();
    ioFrame.outer = ioFrame.innermost->load(std::memory_order_relaxed);
    ioFrame.contextDepth = ioThread.Depth();
    std::atomic_signal_fence(std::memory_order_release); // complete before the handler can see it
    ioFrame.innermost->store(&ioFrame, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_acq_rel);
}

/// Kept apart, so that the usual way through Arm saves no registers.
[[gnu::noinline]] void ArmFirst(GuardFrame& ioFrame)
{
    platform::TakeFaultSignals();
    ArmOn(debug::CrashThread::Demand(), ioFrame);
}

} // namespace

void Arm(GuardFrame& ioFrame)
{
    debug::CrashThread* thread = debug::CrashThread::Current();
    if (!thread || !platform::AreFaultSignalsTaken()) [[unlikely]] {
        return ArmFirst(ioFrame);
    }
    ArmOn(*thread, ioFrame);
}

void ThrowMachineException(GuardFrame& ioFrame)
{
    debug::detail::UnwindCrashContextForCurrentThread(ioFrame.contextDepth);
    throw machine_exception(ioFrame.code, ioFrame.address);
}

} // namespace detail
} // namespace kiocore::exceptions
