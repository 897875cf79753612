#pragma once

#include <signal.h>
#include <sys/types.h>

#include <cstddef>
#include <span>

namespace kiocore::platform {

/// What a signal handler does with signals. All of it may be done in one.

pid_t ProcessID() noexcept;
pid_t ThreadID() noexcept;

/// A fault that the processor reported, not a signal that somebody sent.
bool IsFromTheProcessor(const siginfo_t& inInfo) noexcept;

void SetDefault(int inSignal) noexcept;
void Block(int inSignal) noexcept;
void Unblock(int inSignal) noexcept;
void BlockAllBut(std::span<const int> inSignals) noexcept;

/// Sends the calling thread the signal, with what is known about it if possible, as a debugger shows it of a
/// core dump.
void SendToThisThread(int inSignal, const siginfo_t* inInfo) noexcept;

/// Another thread is about to end the process.
[[noreturn]] void WaitForEnd() noexcept;

} // namespace kiocore::platform
