#pragma once

#include <kiocore/utility/Dictionary.h>

#include "platform/AlternateStack.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>

namespace kiocore::exceptions::detail {
struct GuardFrame;
}

namespace kiocore::debug {

/// What crash handling knows about one thread. Lies on the heap; a signal handler reaches it through a
/// thread-local pointer and reads it between any two instructions of its thread, and of no other.
class CrashThread {
public:
    /// The calling thread's; null when there is none. One load.
    static CrashThread* Current() noexcept { return sCurrent; }
    /// Made now if there is none. Ends with the thread.
    static CrashThread& Demand() { return sCurrent ? *sCurrent : Make(); }

    std::size_t Depth() const noexcept
    {
        const std::size_t depth = mDepth.load(std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_acquire);
        return depth;
    }
    /// @param inIndex  0 is the outermost; below Depth().
    const utility::Dictionary& At(std::size_t inIndex) const noexcept { return *Slot(Locate(inIndex)); }
    void Push(utility::Dictionary&& inEntry);
    void Pop() noexcept;

    /// The armed guards of the thread, innermost first.
    exceptions::detail::GuardFrame* Guard() const noexcept { return mGuard.load(std::memory_order_relaxed); }
    void SetGuard(exceptions::detail::GuardFrame* inGuard) noexcept
    {
        // What the frame tells must be there before the handler can see it.
        std::atomic_signal_fence(std::memory_order_release);
        mGuard.store(inGuard, std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_release);
    }

private:
    /// Slots lie in chunks, each twice the size of the one before, so that none ever moves and a slot is
    /// found by arithmetic.
    static constexpr std::size_t kFirstChunkBits = 3;
    static constexpr std::size_t kFirstChunkSlots = std::size_t(1) << kFirstChunkBits;
    static constexpr std::size_t kMostChunks = 40;

    struct Place {
        std::size_t chunk;
        std::size_t slot;
    };
    static Place Locate(std::size_t inIndex) noexcept
    {
        const std::size_t number = inIndex + kFirstChunkSlots;
        const std::size_t top = static_cast<std::size_t>(std::bit_width(number)) - 1;
        return {top - kFirstChunkBits, number - (std::size_t(1) << top)};
    }
    utility::Dictionary* Slot(Place inPlace) const noexcept { return mChunks[inPlace.chunk] + inPlace.slot; }

    CrashThread();
    ~CrashThread();
    static CrashThread& Make();
    static void AtThreadEnd(void* inThread) noexcept;
    void AddChunk(std::size_t inChunk);

    // Initial-exec: reading it is one instruction relative to the thread's register. The usual model may
    // allocate on a thread's first access, which would be in the signal handler.
    static __thread CrashThread* sCurrent __attribute__((tls_model("initial-exec")));

    std::atomic<std::size_t> mDepth{0};
    std::atomic<exceptions::detail::GuardFrame*> mGuard{nullptr};
    std::array<utility::Dictionary*, kMostChunks> mChunks{}; // memory without objects beyond mDepth
    platform::AlternateStack mAlternateStack;
};

inline void CrashThread::Push(utility::Dictionary&& inEntry)
{
    const std::size_t depth = mDepth.load(std::memory_order_relaxed);
    const Place place = Locate(depth);
    if (!mChunks[place.chunk]) [[unlikely]] {
        AddChunk(place.chunk);
    }
    new (Slot(place)) utility::Dictionary(std::move(inEntry));
    std::atomic_signal_fence(std::memory_order_release); // complete before it can be seen
    mDepth.store(depth + 1, std::memory_order_relaxed);
}

inline void CrashThread::Pop() noexcept
{
    const std::size_t depth = mDepth.load(std::memory_order_relaxed);
    if (depth == 0) {
        return;
    }
    mDepth.store(depth - 1, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_acq_rel); // out of sight before it is destroyed
    Slot(Locate(depth - 1))->~Dictionary();
}

} // namespace kiocore::debug
