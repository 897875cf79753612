#pragma once

#include <kiocore/Export.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kiocore::threads {

/// Threads wait at a closed gate and pass an open one. Opening lets everyone through who waits, and
/// everyone who comes later, until it is closed again.
///
/// Threading: any thread, any member, also several at once. What was written before Open is seen after
/// passing.
class KIO_EXPORT Gate {
public:
    explicit Gate(bool inIsOpen) noexcept : mState(inIsOpen ? kOpen : kClosed) {}
    /// Nobody may wait any more; share the gate among those who use it.
    ~Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    void Open() noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return mState.load(std::memory_order_acquire) == kOpen; }

    /// Waits for as long as it takes.
    void PassThrough() noexcept;
    /// Waits until the gate opens or the deadline has passed.
    /// @return whether the gate was open.
    bool PassThroughUntil(std::chrono::steady_clock::time_point inDeadline) noexcept;

private:
    static constexpr std::uint32_t kClosed = 0;
    static constexpr std::uint32_t kClosedAndAwaited = 1; // somebody sleeps, or is about to
    static constexpr std::uint32_t kOpen = 2;

    std::atomic<std::uint32_t> mState;
};

} // namespace kiocore::threads
