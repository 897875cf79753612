#pragma once

#include <kiocore/utility/Dictionary.h>

#include "platform/AlternateStack.h"
#include "platform/Pages.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <memory>

namespace kiocore::exceptions::detail {
struct GuardFrame;
}

namespace kiocore::debug {

/// What crash handling knows about one thread. Lies in pages of its own, out of the reach of who runs over
/// the end of a block of the heap; a signal handler reaches it through a thread-local pointer and reads it
/// between any two instructions of its thread, and of no other.
class CrashThread {
public:
    static void* operator new(std::size_t inBytes) { return platform::MapPages(inBytes); }
    static void operator delete(void* inThread, std::size_t inBytes) noexcept
    {
        platform::UnmapPages(inThread, inBytes);
    }

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
    const utility::Dictionary& At(std::size_t inIndex) const noexcept { return Slot(inIndex); }
    void Push(utility::Dictionary&& inEntry);
    void Push(const ImmutableString& inKey, const ImmutableString& inText);
    /// Drops entries until inDepth are left. Touches nothing but the depth.
    void Unwind(std::size_t inDepth) noexcept
    {
        std::atomic_signal_fence(std::memory_order_release);
        mDepth.store(inDepth, std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_acq_rel); // out of sight before its slot is used again
    }
    void Pop() noexcept
    {
        if (const std::size_t depth = mDepth.load(std::memory_order_relaxed)) {
            Unwind(depth - 1);
        }
    }

    /// The innermost armed guard of the thread.
    std::atomic<exceptions::detail::GuardFrame*>& Guard() noexcept { return mGuard; }

private:
    /// Slots lie in chunks, each twice the size of the one before, so that none ever moves and a slot is
    /// found by arithmetic. A popped entry stays in its slot until the next one comes: who pushes the same
    /// again, as a plug-in that is called for every frame does, then counts no references, which threads
    /// would contend for; and unwinding after a fault frees no memory, whose books may be open.
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
        const std::size_t top = static_cast<std::size_t>(std::bit_width(number | 1)) - 1;
        return {top - kFirstChunkBits, number - (std::size_t(1) << top)};
    }
    utility::Dictionary& Slot(std::size_t inIndex) const noexcept
    {
        const Place place = Locate(inIndex);
        return mChunks[place.chunk][place.slot];
    }
    /// The slot for the next entry.
    utility::Dictionary& FreeSlot(std::size_t inDepth)
    {
        const Place place = Locate(inDepth);
        if (!mChunks[place.chunk]) [[unlikely]] {
            AddChunk(place.chunk);
        }
        return mChunks[place.chunk][place.slot];
    }
    void Show(std::size_t inDepth) noexcept
    {
        std::atomic_signal_fence(std::memory_order_release); // complete before it can be seen
        mDepth.store(inDepth, std::memory_order_relaxed);
    }

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
    std::array<utility::Dictionary, kFirstChunkSlots> mFirstChunk;
    std::array<utility::Dictionary*, kMostChunks> mChunks{mFirstChunk.data()};
    platform::AlternateStack mAlternateStack;
};

inline void CrashThread::Push(utility::Dictionary&& inEntry)
{
    const std::size_t depth = mDepth.load(std::memory_order_relaxed);
    FreeSlot(depth) = std::move(inEntry);
    Show(depth + 1);
}

inline void CrashThread::Push(const ImmutableString& inKey, const ImmutableString& inText)
{
    const std::size_t depth = mDepth.load(std::memory_order_relaxed);
    utility::Dictionary& slot = FreeSlot(depth);
    if (!slot.IsCopyOf(inKey, inText)) [[unlikely]] {
        slot = utility::Dictionary(inKey, inText);
    }
    Show(depth + 1);
}

} // namespace kiocore::debug
