#include "debug/CrashThread.h"

#include "platform/CrashSignals.h"
#include "platform/ThreadEnd.h"

#include <memory>

namespace kiocore::debug {

__thread CrashThread* CrashThread::sCurrent = nullptr;

CrashThread::CrashThread()
{
    platform::OpenCrashSignalsToThisThread();
}

CrashThread::~CrashThread()
{
    for (std::size_t chunk = 1; chunk < kMostChunks && mChunks[chunk]; ++chunk) {
        const std::size_t slots = kFirstChunkSlots << chunk;
        std::destroy_n(mChunks[chunk], slots);
        platform::UnmapPages(mChunks[chunk], slots * sizeof(utility::Dictionary));
    }
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
    const std::size_t slots = kFirstChunkSlots << inChunk;
    auto* const made =
        static_cast<utility::Dictionary*>(platform::MapPages(slots * sizeof(utility::Dictionary)));
    std::uninitialized_default_construct_n(made, slots);
    mChunks[inChunk] = made;
}

} // namespace kiocore::debug
