#include <kiocore/debug/CrashContext.h>

#include "debug/CrashThread.h"

#include <algorithm>

namespace kiocore::debug {

void PushCrashContextForCurrentThread(utility::Dictionary inEntry)
{
    CrashThread::Demand().Push(std::move(inEntry));
}

void PushCrashContextForCurrentThread(const utility::ImmutableString& inKey,
                                      const utility::ImmutableString& inText)
{
    CrashThread::Demand().Push(inKey, inText);
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
        thread->Unwind(std::min(inDepth, thread->Depth()));
    }
}

} // namespace detail
} // namespace kiocore::debug
