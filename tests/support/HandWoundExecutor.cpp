#include "support/HandWoundExecutor.h"

#include <algorithm>
#include <utility>

namespace support {

int HandWoundExecutor::Submit(Task inTask)
{
    return SubmitAfter({}, std::move(inTask));
}

int HandWoundExecutor::SubmitAfter(std::chrono::milliseconds inDelay, Task inTask)
{
    const Time due = mClock.SteadyTime() + inDelay;
    std::lock_guard lock(mLock);
    if (mRefuses) {
        return -1;
    }
    mHeld.emplace(due, std::move(inTask));
    return 0;
}

bool HandWoundExecutor::RunNextDue(Time inUntil)
{
    Task task;
    Time due;
    {
        std::lock_guard lock(mLock);
        if (mHeld.empty() || mHeld.begin()->first > inUntil) {
            return false;
        }
        due = mHeld.begin()->first;
        task = std::move(mHeld.extract(mHeld.begin()).mapped());
    }
    mClock.Advance(std::max(due - mClock.SteadyTime(), Time::duration::zero()));
    task();
    return true;
}

std::size_t HandWoundExecutor::Advance(std::chrono::milliseconds inDuration)
{
    const Time until = mClock.SteadyTime() + inDuration;
    std::size_t ran = 0;
    while (RunNextDue(until)) {
        ++ran;
    }
    mClock.Advance(until - mClock.SteadyTime());
    return ran;
}

void HandWoundExecutor::Refuse(bool inRefuses)
{
    std::lock_guard lock(mLock);
    mRefuses = inRefuses;
}

std::size_t HandWoundExecutor::HeldCount() const
{
    std::lock_guard lock(mLock);
    return mHeld.size();
}

} // namespace support
