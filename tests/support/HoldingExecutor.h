#pragma once

#include <kiocore/threads/AsyncExecutor.h>

#include <cstddef>
#include <deque>
#include <mutex>

namespace support {

/// Holds what is submitted until the test runs it, on the test's own thread. What throws reaches the test.
///
/// Threading: any thread.
class HoldingExecutor final : public kiocore::threads::AsyncExecutor {
public:
    int Submit(Task inTask) override;

    /// Runs the task held longest. @return false when there was none.
    bool RunOne();
    /// Runs until nothing is held, also what the tasks submit. @return how many ran.
    std::size_t RunAll();
    /// Lets go of all that is held without running it.
    void DropAll();
    /// Refuses from now on, as a terminated executor does; what is held stays.
    void Refuse();

    std::size_t HeldCount() const;
    /// All that were ever accepted.
    std::size_t AcceptedCount() const;

private:
    mutable std::mutex mLock; // guards the members below
    std::deque<Task> mHeld;
    std::size_t mAccepted = 0;
    bool mRefuses = false;
};

} // namespace support
