#pragma once

#include <cstddef>

#include <signal.h>

namespace kiocore::platform {

/// A stack of its own for the signal handlers of the thread that makes it, with a guard page below, so that
/// they can run when the thread's stack is used up. A thread that has a large enough one keeps that.
///
/// Threading: made and destroyed on the thread that it is for.
class AlternateStack {
public:
    /// @throws std::bad_alloc when the system has no memory for it.
    AlternateStack();
    /// The thread has again what it had before, unless somebody gave it another one since.
    ~AlternateStack();
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

private:
    void* mMapping = nullptr; // guard page first; null when the thread kept its own
    std::size_t mMappingBytes = 0;
    stack_t mOurs{};
    stack_t mBefore{};
};

} // namespace kiocore::platform
