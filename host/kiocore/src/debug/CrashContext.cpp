#include <kiocore/debug/CrashContext.h>

#include "debug/CrashThread.h"

namespace kiocore::debug {

void PushCrashContextForCurrentThread(utility::Dictionary inEntry)
{
    CrashThread::Demand().Push(std::move(inEntry));
}

void PopCrashContextForCurrentThread() noexcept
{
    if (CrashThread* thread = CrashThread::Current()) {
        thread->Pop();
    }
}

namespace detail {

std::size_t CrashContextStack::Depth() const noexcept
{
    return mThread ? static_cast<const CrashThread*>(mThread)->Depth() : 0;
}

const utility::Dictionary& CrashContextStack::At(std::size_t inFromInnermost) const noexcept
{
    const auto* thread = static_cast<const CrashThread*>(mThread);
    return thread->At(thread->Depth() - 1 - inFromInnermost);
}

CrashContextStack InspectCrashContextForCurrentThread() noexcept
{
    CrashContextStack stack;
    stack.mThread = CrashThread::Current();
    return stack;
}

void UnwindCrashContextForCurrentThread(std::size_t inDepth) noexcept
{
    if (CrashThread* thread = CrashThread::Current()) {
        while (thread->Depth() > inDepth) {
            thread->Pop();
        }
    }
}

} // namespace detail
} // namespace kiocore::debug
