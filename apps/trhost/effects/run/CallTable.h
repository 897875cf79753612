#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trhost::effects {

/// The plug-in calls that the threads of a process are in, each thread with a slot of its own that only it
/// writes. Plain memory without pointers: it may lie in a file, be read by another thread or, after the end
/// of the process, by another process.
///
/// A call becomes visible by the last store of writing it, the new depth, and goes with one store. So whoever
/// reads the memory at whatever moment finds whole calls only.

struct CallEntry {
    static constexpr std::size_t kLongestName = 104; // bytes; longer names are cut

    /// A new one for each call of the slot, stored before the rest: tells a reader that the entry changed.
    std::atomic<std::uint32_t> number;
    std::atomic<std::uint32_t> nameSize;
    std::atomic<std::int64_t> startTicks; // of the steady clock, 0 when nobody asked for it
    std::array<std::atomic<std::uint64_t>, kLongestName / 8> name;
};

struct CallSlot {
    static constexpr std::uint32_t kMostNested = 4; // calls that are named; deeper ones are only counted

    std::atomic<std::uint32_t> depth;
    std::atomic<std::uint32_t> lastNumber;
    std::array<std::uint64_t, 3> unused;
    std::array<CallEntry, kMostNested> calls;

    /// @param inDepth  how many calls the thread is in already.
    void Push(std::uint32_t inDepth, std::string_view inName, std::int64_t inStartTicks) noexcept;
    /// @param inDepth  how many calls are left.
    void Pop(std::uint32_t inDepth) noexcept { depth.store(inDepth, std::memory_order_release); }
};

/// Zero bytes are an empty table.
struct CallTable {
    static constexpr std::size_t kSlotCount = 64;
    std::array<CallSlot, kSlotCount> slots;
};

static_assert(sizeof(CallSlot) == 512 && std::atomic<std::uint64_t>::is_always_lock_free);

/// One call as it was read.
struct CallSeen {
    std::string name;
    std::uint32_t number;
    std::int64_t startTicks;
};

enum class SlotState { kIdle, kInCall, kChanging, kDamaged };

/// The innermost named call of a slot.
/// @return kChanging when the thread began or ended calls meanwhile; kDamaged when no thread of ours can have
///     written what is there. outCall is set with kInCall.
SlotState ReadInnermostCall(const CallSlot& inSlot, CallSeen& outCall);

} // namespace trhost::effects
