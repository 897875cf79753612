#include "threads/ThreadPool.h"

#include "platform/ThreadName.h"

#include <system_error>

namespace kiocore::threads {
namespace {

thread_local const ThreadPool* sPoolOfThisThread = nullptr;

} // namespace

ThreadPool::ThreadPool(std::string inName, std::string inThreadName, std::size_t inMostThreads)
    : QueueBase(std::move(inName)), mThreadName(std::move(inThreadName)), mMostThreads(inMostThreads)
{}

ThreadPool::~ThreadPool() = default;

int ThreadPool::Accept(Task inTask)
{
    {
        std::lock_guard lock(mLock);
        if (!mOpen) {
            return -1;
        }
        if (mTasks.size() >= mIdle && mThreads.size() < mMostThreads) {
            try {
                StartThread();
            } catch (const std::system_error&) {
                if (mThreads.empty()) {
                    throw; // nobody would ever run it
                }
            }
        }
        mTasks.push_back(std::move(inTask));
    }
    mChanged.notify_one();
    return 0;
}

bool ThreadPool::IsOpen() const
{
    std::lock_guard lock(mLock);
    return mOpen;
}

void ThreadPool::Close()
{
    {
        std::lock_guard lock(mLock);
        mOpen = false;
    }
    mChanged.notify_all();
}

void ThreadPool::CloseWhenDry()
{
    {
        std::unique_lock lock(mLock);
        if (sPoolOfThisThread != this) {
            mDry.wait(lock, [this] { return mTasks.empty() && mRunning == 0; });
        }
        mOpen = false;
    }
    mChanged.notify_all();
}

void ThreadPool::Terminate()
{
    Close();
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(mLock);
        threads.swap(mThreads);
    }
    bool onOwnThread = false;
    for (std::thread& thread : threads) {
        if (thread.get_id() == std::this_thread::get_id()) {
            onOwnThread = true;
            thread.detach();
        } else {
            thread.join();
        }
    }
    if (onOwnThread) {
        Work();
    }
}

bool ThreadPool::IsPoolThread()
{
    return sPoolOfThisThread != nullptr;
}

void ThreadPool::StartThread()
{
    mThreads.emplace_back([this, number = mThreads.size() + 1] {
        sPoolOfThisThread = this;
        platform::NameThisThread(mThreadName + ' ' + std::to_string(number));
        Work();
    });
}

void ThreadPool::Work()
{
    std::unique_lock lock(mLock);
    for (;;) {
        ++mIdle;
        mChanged.wait(lock, [this] { return !mTasks.empty() || !mOpen; });
        --mIdle;
        if (mTasks.empty()) {
            return;
        }
        Task task = std::move(mTasks.front());
        mTasks.pop_front();
        ++mRunning;
        lock.unlock();
        Run(task);
        lock.lock();
        if (--mRunning == 0 && mTasks.empty()) {
            mDry.notify_all();
        }
    }
}

} // namespace kiocore::threads
