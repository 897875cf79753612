#pragma once

#include <kiocore/threads/MainThread.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace kiocore::threads {

/// The queue behind MainThread. Tasks are numbered in order of posting.
class MainThreadQueue final : public MainThread {
public:
    int Post(Task inTask) override;
    bool IsCurrentThread() const override { return std::this_thread::get_id() == mThread; }
    int RunPosted() override;
    bool RunUntil(const std::function<bool()>& inDone,
                  std::chrono::steady_clock::time_point inDeadline) override;
    bool WaitForPostedWork(std::chrono::steady_clock::time_point inDeadline) override;
    void SetWakeUp(std::function<void()> inWakeUp) override;

    /// Refuses posts from now on and runs what was accepted.
    void Close();

private:
    struct Posted {
        std::uint64_t number;
        Task task;
    };
    void RequireCurrentThread(const char* inOperation) const;
    bool RunNext(std::uint64_t inLastNumber);
    int RunBatch(std::chrono::steady_clock::time_point inDeadline);
    std::uint64_t LastNumber() const;
    bool HaveAllRun(std::uint64_t inLastNumber) const;
    void WakeUpIfWorkIsLeft();

    const std::thread::id mThread = std::this_thread::get_id();
    mutable std::mutex mLock; // guards the members below; not held while a task or the wake-up runs
    std::condition_variable mArrived;
    std::condition_variable mRan;
    std::deque<Posted> mPosted;
    std::vector<std::uint64_t> mRunning; // a task that runs posted work itself has others above it
    std::uint64_t mLastNumber = 0;
    std::function<void()> mWakeUp;
    bool mWokenUp = false; // since the queue was last seen empty
    bool mOpen = true;
};

/// The registered main thread, without a trace line.
std::shared_ptr<MainThreadQueue> TheMainThread();

} // namespace kiocore::threads
