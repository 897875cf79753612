#include "threads/MainThreadQueue.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <limits>
#include <utility>

namespace kiocore::threads {
namespace {

constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

struct Registration {
    std::mutex lock; // guards queue
    std::shared_ptr<MainThreadQueue> queue;
};

// Leaked on purpose: asked until the very end of the process.
Registration& TheRegistration()
{
    static Registration* const registration = new Registration;
    return *registration;
}

[[noreturn]] void ThrowWrongThread(const char* inOperation)
{
    throw kio_exception(std::string(inOperation) +
                            " was called on another thread than the registered main thread",
                        kError_BadArgument);
}

} // namespace

MainThread::~MainThread() = default;

int MainThreadQueue::Post(Task inTask)
{
    std::function<void()> wakeUp;
    {
        std::lock_guard lock(mLock);
        if (!mOpen) {
            return -1;
        }
        mPosted.push_back({++mLastNumber, std::move(inTask)});
        if (!mWokenUp) {
            mWokenUp = true;
            wakeUp = mWakeUp;
        }
    }
    mArrived.notify_one();
    if (wakeUp) {
        wakeUp();
    }
    return 0;
}

void MainThreadQueue::RequireCurrentThread(const char* inOperation) const
{
    if (!IsCurrentThread()) {
        ThrowWrongThread(inOperation);
    }
}

// Runs the first task unless it was posted after the given one.
bool MainThreadQueue::RunNext(std::uint64_t inLastNumber)
{
    Posted next;
    {
        std::lock_guard lock(mLock);
        if (mPosted.empty()) {
            mWokenUp = false; // the next post finds us asleep
            return false;
        }
        if (mPosted.front().number > inLastNumber) {
            return false;
        }
        mRunning.push_back(mPosted.front().number);
        next = std::move(mPosted.front());
        mPosted.pop_front();
    }
    try {
        next.task();
    } catch (...) {
        ReportException("A task posted to the main thread");
    }
    next.task = nullptr;
    {
        std::lock_guard lock(mLock);
        mRunning.pop_back();
    }
    mRan.notify_all();
    return true;
}

int MainThreadQueue::RunPosted()
{
    RequireCurrentThread("MainThread::RunPosted");
    int ran = 0;
    while (RunNext(kAll)) {
        ++ran;
    }
    return ran;
}

std::uint64_t MainThreadQueue::LastNumber() const
{
    std::lock_guard lock(mLock);
    return mLastNumber;
}

// Only what is there at the start: tasks that post their successors do not keep the caller from looking
// at its condition and its deadline.
int MainThreadQueue::RunBatch(std::chrono::steady_clock::time_point inDeadline)
{
    const std::uint64_t last = LastNumber();
    int ran = 0;
    while (std::chrono::steady_clock::now() < inDeadline && RunNext(last)) {
        ++ran;
    }
    return ran;
}

bool MainThreadQueue::RunUntil(const std::function<bool()>& inDone,
                               std::chrono::steady_clock::time_point inDeadline)
{
    RequireCurrentThread("MainThread::RunUntil");
    bool done = inDone();
    while (!done && std::chrono::steady_clock::now() < inDeadline) {
        if (RunBatch(inDeadline) == 0) {
            std::unique_lock lock(mLock);
            mArrived.wait_until(lock, inDeadline, [this] { return !mPosted.empty(); });
        }
        done = inDone();
    }
    WakeUpIfWorkIsLeft();
    return done;
}

// The host's own loop was told of this work once, and may have found us busy with it.
void MainThreadQueue::WakeUpIfWorkIsLeft()
{
    std::function<void()> wakeUp;
    {
        std::lock_guard lock(mLock);
        if (!mPosted.empty()) {
            mWokenUp = true;
            wakeUp = mWakeUp;
        }
    }
    if (wakeUp) {
        wakeUp();
    }
}

// Called under the lock.
bool MainThreadQueue::HaveAllRun(std::uint64_t inLastNumber) const
{
    return (mRunning.empty() || mRunning.front() > inLastNumber) &&
           (mPosted.empty() || mPosted.front().number > inLastNumber);
}

bool MainThreadQueue::WaitForPostedWork(std::chrono::steady_clock::time_point inDeadline)
{
    KIO_HOST_CALL("kiocore::threads::MainThread::WaitForPostedWork");
    const std::uint64_t last = LastNumber();
    if (IsCurrentThread()) {
        while (std::chrono::steady_clock::now() < inDeadline && RunNext(last)) {
        }
        std::lock_guard lock(mLock);
        return mPosted.empty() || mPosted.front().number > last;
    }
    std::unique_lock lock(mLock);
    return mRan.wait_until(lock, inDeadline, [this, last] { return HaveAllRun(last); });
}

void MainThreadQueue::SetWakeUp(std::function<void()> inWakeUp)
{
    {
        std::lock_guard lock(mLock);
        mWakeUp = std::move(inWakeUp);
    }
    WakeUpIfWorkIsLeft();
}

void MainThreadQueue::Close()
{
    {
        std::lock_guard lock(mLock);
        mOpen = false;
    }
    RunPosted();
}

std::shared_ptr<MainThreadQueue> TheMainThread()
{
    Registration& registration = TheRegistration();
    std::lock_guard lock(registration.lock);
    return registration.queue;
}

std::shared_ptr<MainThread> RegisterMainThread()
{
    KIO_HOST_CALL("kiocore::threads::RegisterMainThread");
    Registration& registration = TheRegistration();
    std::lock_guard lock(registration.lock);
    if (!registration.queue) {
        registration.queue = std::make_shared<MainThreadQueue>();
    } else if (!registration.queue->IsCurrentThread()) {
        throw kio_exception(
            "Another thread is registered as the main thread; it has to be unregistered first",
            kError_BadArgument);
    }
    return registration.queue;
}

void UnregisterMainThread()
{
    KIO_HOST_CALL("kiocore::threads::UnregisterMainThread");
    std::shared_ptr<MainThreadQueue> queue;
    {
        Registration& registration = TheRegistration();
        std::lock_guard lock(registration.lock);
        if (registration.queue && !registration.queue->IsCurrentThread()) {
            ThrowWrongThread("UnregisterMainThread");
        }
        queue = std::exchange(registration.queue, nullptr);
    }
    if (queue) {
        queue->Close();
    }
}

std::shared_ptr<MainThread> GetRegisteredMainThread()
{
    KIO_HOST_CALL("kiocore::threads::GetRegisteredMainThread");
    return TheMainThread();
}

} // namespace kiocore::threads
