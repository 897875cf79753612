#pragma once

#include "threads/QueueBase.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace kiocore::threads {

/// A queue with threads of its own, started when there is work and none is idle.
///
/// Threading: any thread.
class ThreadPool final : public QueueBase {
public:
    /// @param inThreadName  with a number behind it names the threads.
    ThreadPool(std::string inName, std::string inThreadName, std::size_t inMostThreads);
    /// Needs to have been terminated when threads may have been started.
    ~ThreadPool() override;

    int Accept(Task inTask) override;
    bool IsOpen() const override;

    /// Refuses from now on; does not wait.
    void Close();
    /// Waits until nothing is left to run, and refuses from that moment on: a task may still submit what
    /// follows from it. On one of its own threads it closes at once, as there is always something running.
    void CloseWhenDry();
    /// Closes, then waits until all that was accepted has run, and joins the threads. On one of its own
    /// threads (a task called exit) it runs the rest itself once the others are done.
    void Terminate();
    /// Whether the caller runs on a thread of any pool.
    static bool IsPoolThread();

private:
    void StartThread();
    void Work();

    const std::string mThreadName;
    const std::size_t mMostThreads;
    mutable std::mutex mLock; // guards the members below
    std::condition_variable mChanged;
    std::condition_variable mDry;
    std::deque<Task> mTasks;
    std::vector<std::thread> mThreads;
    std::size_t mIdle = 0;
    std::size_t mRunning = 0; // tasks
    bool mOpen = true;
};

} // namespace kiocore::threads
