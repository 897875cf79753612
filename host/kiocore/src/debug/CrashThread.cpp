#include "debug/CrashThread.h"

#include "platform/CrashSignals.h"
#include "platform/ThreadEnd.h"

namespace kiocore::debug {

__thread CrashThread* CrashThread::sCurrent = nullptr;

CrashThread::CrashThread()
{
    AddChunk(0);
    platform::OpenCrashSignalsToThisThread();
}

CrashThread& CrashThread::Make()
{
    // Once for the process; the call reports a thread that ends with the pointer that it set.
    static const platform::ThreadEndSlot threadEnd(&CrashThread::AtThreadEnd);
    auto* made = new CrashThread;
    try {
        threadEnd.Set(made);
    } catch (...) {
        delete made;
        throw;
    }
    std::atomic_signal_fence(std::memory_order_release);
    sCurrent = made;
    return *made;
}

void CrashThread::AtThreadEnd(void* inThread) noexcept
{
    sCurrent = nullptr;
    std::atomic_signal_fence(std::memory_order_release);
    delete static_cast<CrashThread*>(inThread);
}

void CrashThread::AddChunk(std::size_t inChunk)
{
    mChunks[inChunk] = std::make_unique<utility::Dictionary[]>(kFirstChunkSlots << inChunk);
}

} // namespace kiocore::debug
