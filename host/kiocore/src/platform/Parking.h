#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kiocore::platform {

/// Sleeps while ioWord holds inExpected, until UnparkOne, UnparkAll or until the limit passes. May return
/// early without a reason, so callers look at the word again.
void Park(std::atomic<std::uint32_t>& ioWord, std::uint32_t inExpected,
          std::chrono::nanoseconds inLimit) noexcept;

/// Wakes one thread that sleeps on the word. The word may be gone already: only its address is used.
void UnparkOne(std::atomic<std::uint32_t>& ioWord) noexcept;
/// Wakes all threads that sleep on the word, which may be gone likewise.
void UnparkAll(std::atomic<std::uint32_t>& ioWord) noexcept;

/// Tells the processor that this is a loop that waits for another thread.
void SpinPause() noexcept;

} // namespace kiocore::platform
