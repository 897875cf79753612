#include "support/HoldingExecutor.h"

namespace support {

int HoldingExecutor::Submit(Task inTask)
{
    std::lock_guard lock(mLock);
    if (mRefuses) {
        return -1;
    }
    mHeld.push_back(std::move(inTask));
    ++mAccepted;
    return 0;
}

bool HoldingExecutor::RunOne()
{
    Task task;
    {
        std::lock_guard lock(mLock);
        if (mHeld.empty()) {
            return false;
        }
        task = std::move(mHeld.front());
        mHeld.pop_front();
    }
    task();
    return true;
}

std::size_t HoldingExecutor::RunAll()
{
    std::size_t ran = 0;
    while (RunOne()) {
        ++ran;
    }
    return ran;
}

void HoldingExecutor::DropAll()
{
    std::deque<Task> dropped; // let go unlocked
    std::lock_guard lock(mLock);
    dropped.swap(mHeld);
}

void HoldingExecutor::Refuse()
{
    std::lock_guard lock(mLock);
    mRefuses = true;
}

std::size_t HoldingExecutor::HeldCount() const
{
    std::lock_guard lock(mLock);
    return mHeld.size();
}

std::size_t HoldingExecutor::AcceptedCount() const
{
    std::lock_guard lock(mLock);
    return mAccepted;
}

} // namespace support
