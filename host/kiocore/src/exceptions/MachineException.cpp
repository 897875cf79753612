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

void Arm(GuardFrame& ioFrame)
{
    debug::CrashThread& thread = debug::CrashThread::Demand();
    platform::TakeFaultSignals();
    ioFrame.outer = thread.Guard();
    ioFrame.contextDepth = thread.Depth();
    thread.SetGuard(&ioFrame);
}

void Disarm(GuardFrame& inFrame) noexcept
{
    debug::CrashThread::Current()->SetGuard(inFrame.outer);
}

void ThrowMachineException(GuardFrame& ioFrame)
{
    debug::detail::UnwindCrashContextForCurrentThread(ioFrame.contextDepth);
    throw machine_exception(ioFrame.code, ioFrame.address);
}

} // namespace detail
} // namespace kiocore::exceptions
