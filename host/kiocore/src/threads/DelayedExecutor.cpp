#include <kiocore/threads/DelayedExecutor.h>

#include "platform/ThreadName.h"
#include "threads/QueueBase.h"

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace kiocore::threads {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Task = AsyncExecutor::Task;

/// What the thread works on. Shared with it: the executor may go in one of its own tasks.
class Schedule {
public:
    explicit Schedule(std::string inName) : mName(std::move(inName)) {}

    const std::string& Name() const { return mName; }

    void Add(SteadyClock::duration inDelay, Task inTask)
    {
        {
            std::lock_guard lock(mLock);
            const SteadyClock::time_point now = SteadyClock::now();
            // Of those due at the same time, the one added first comes first.
            mTasks.emplace(now + std::min(inDelay, SteadyClock::time_point::max() - now), std::move(inTask));
        }
        mChanged.notify_one();
    }

    void End()
    {
        {
            std::lock_guard lock(mLock);
            mEnd = SteadyClock::now();
            mEnding = true;
        }
        mChanged.notify_one();
    }

    void Work()
    {
        for (;;) {
            std::optional<Task> task = WaitForTask();
            if (!task) {
                return;
            }
            RunTask(*task, mName);
        }
    }

private:
    /// None when it is time to end.
    std::optional<Task> WaitForTask()
    {
        std::multimap<SteadyClock::time_point, Task> dropped; // let go unlocked
        std::unique_lock lock(mLock);
        for (;;) {
            const auto first = mTasks.begin();
            if (first != mTasks.end() && first->first <= (mEnding ? mEnd : SteadyClock::now())) {
                return std::move(mTasks.extract(first).mapped());
            }
            if (mEnding) {
                dropped.swap(mTasks);
                return std::nullopt;
            }
            if (first == mTasks.end()) {
                mChanged.wait(lock);
            } else {
                const SteadyClock::time_point due = first->first; // the task may go while we wait
                mChanged.wait_until(lock, due);
            }
        }
    }

    const std::string mName;
    std::mutex mLock; // guards the members below
    std::condition_variable mChanged;
    std::multimap<SteadyClock::time_point, Task> mTasks; // by when they are due
    SteadyClock::time_point mEnd;                        // tasks due later do not run
    bool mEnding = false;
};

class OneThreadExecutor final : public DelayedExecutor {
public:
    explicit OneThreadExecutor(const char* inName) : mSchedule(std::make_shared<Schedule>(inName)) {}

    ~OneThreadExecutor() override
    {
        mSchedule->End();
        if (mThread.get_id() == std::this_thread::get_id()) {
            mThread.detach();
        } else if (mThread.joinable()) {
            mThread.join();
        }
    }

    int Submit(Task inTask) override
    {
        KIO_HOST_CALL("kiocore::threads::AsyncExecutor::Submit", mSchedule->Name());
        return Accept({}, std::move(inTask));
    }

    int SubmitAfter(std::chrono::milliseconds inDelay, Task inTask) override
    {
        KIO_HOST_CALL("kiocore::threads::DelayedExecutor::SubmitAfter", mSchedule->Name(),
                      static_cast<long long>(inDelay.count()));
        static constexpr auto kLongest =
            std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::duration::max());
        return Accept(std::clamp(inDelay, std::chrono::milliseconds::zero(), kLongest), std::move(inTask));
    }

private:
    int Accept(SteadyClock::duration inDelay, Task inTask)
    {
        if (!StartThread()) {
            return -1;
        }
        mSchedule->Add(inDelay, std::move(inTask));
        return 0;
    }

    bool StartThread()
    {
        std::lock_guard lock(mLock);
        if (mThread.joinable()) {
            return true;
        }
        try {
            mThread = std::thread([schedule = mSchedule] {
                platform::NameThisThread(schedule->Name());
                schedule->Work();
            });
        } catch (const std::system_error&) {
            return false;
        }
        return true;
    }

    const std::shared_ptr<Schedule> mSchedule;
    std::mutex mLock; // guards mThread
    std::thread mThread;
};

} // namespace

std::shared_ptr<DelayedExecutor> CreateDelayedExecutor(const char* inName)
{
    KIO_HOST_CALL("kiocore::threads::CreateDelayedExecutor", inName);
    return std::make_shared<OneThreadExecutor>(inName);
}

} // namespace kiocore::threads
