#include "Watchdog.h"

#include <kiocore/utility/ExpiringEntryMap.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace trhost::effects {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;
using kiocore::threads::DelayedExecutor;
using kiocore::utility::CoarseSteadyTime;

SteadyTime TimeFrom(std::int64_t inTicks)
{
    return SteadyTime(SteadyTime::duration(inTicks));
}

} // namespace

/// What a queued look needs. It may find that the watchdog has gone.
class Watchdog::Looking : public std::enable_shared_from_this<Looking> {
public:
    Looking(Callback inCallback, std::chrono::milliseconds inLimit, std::shared_ptr<CallTable> inTable)
        : mCallback(std::move(inCallback)), mLimit(inLimit), mTable(std::move(inTable))
    {}

    /// @return false when the executor refused.
    bool QueueLook(DelayedExecutor& inExecutor, SteadyTime::duration inDelay)
    {
        const auto delay = std::chrono::ceil<std::chrono::milliseconds>(inDelay);
        return inExecutor.SubmitAfter(
                   delay, [self = shared_from_this(), &inExecutor] { self->Look(inExecutor); }) >= 0;
    }
    std::chrono::milliseconds Limit() const { return mLimit; }

    void End()
    {
        std::lock_guard lock(mLock);
        mHasEnded = true;
    }

private:
    // The lock is held throughout, so that nothing of this happens once the watchdog has gone.
    void Look(DelayedExecutor& inExecutor)
    {
        std::lock_guard lock(mLock);
        if (mHasEnded) {
            return;
        }
        SteadyTime::duration nextLook = mLimit;
        for (std::size_t i = 0; i < CallTable::kSlotCount; ++i) {
            nextLook = std::min(nextLook, LookAt(i));
        }
        QueueLook(inExecutor, nextLook);
    }

    /// @return after what time to look again.
    SteadyTime::duration LookAt(std::size_t inSlot)
    {
        CallSeen call;
        if (ReadInnermostCall(mTable->slots[inSlot], call) != SlotState::kInCall ||
            call.number == mTold[inSlot]) {
            return mLimit;
        }
        const SteadyTime::duration running = CoarseSteadyTime() - TimeFrom(call.startTicks);
        if (running < mLimit) {
            return std::max<SteadyTime::duration>(mLimit - running, std::chrono::milliseconds(1));
        }
        mTold[inSlot] = call.number;
        try {
            mCallback(call.name, std::chrono::duration_cast<std::chrono::seconds>(running));
        } catch (...) {
            kiocore::threads::ReportException("Telling of a plug-in that does not return");
        }
        return mLimit;
    }

    const Callback mCallback;
    const std::chrono::milliseconds mLimit;
    const std::shared_ptr<CallTable> mTable;
    std::mutex mLock; // guards the members below
    bool mHasEnded = false;
    std::array<std::uint32_t, CallTable::kSlotCount> mTold{}; // the number of the call last told of
};

namespace {

std::shared_ptr<DelayedExecutor> OrOwnThread(std::shared_ptr<DelayedExecutor> inExecutor)
{
    return inExecutor ? std::move(inExecutor) : kiocore::threads::CreateDelayedExecutor("Plug-in watch");
}

} // namespace

Watchdog::Watchdog(Callback inCallback, std::chrono::milliseconds inLimit,
                   std::shared_ptr<DelayedExecutor> inExecutor)
    : Watchdog(std::move(inCallback), inLimit, std::move(inExecutor), std::make_shared<CallTable>())
{}

Watchdog::Watchdog(Callback inCallback, std::chrono::milliseconds inLimit,
                   std::shared_ptr<DelayedExecutor> inExecutor, const std::shared_ptr<CallTable>& inTable)
    : mCalls(CallKeeper::kWatchdog, inTable),
      mLooking(std::make_shared<Looking>(std::move(inCallback), inLimit, inTable)),
      mExecutor(OrOwnThread(std::move(inExecutor)))
{}

Watchdog::~Watchdog()
{
    mLooking->End();
}

void Watchdog::Enter(std::string_view inMatchName) noexcept
{
    mCalls.Enter(inMatchName, CoarseSteadyTime().time_since_epoch().count());
    if (!mHasBegun.load(std::memory_order_relaxed) && !mHasBegun.exchange(true)) [[unlikely]] {
        try {
            mHasBegun = mLooking->QueueLook(*mExecutor, mLooking->Limit());
        } catch (...) {
            mHasBegun = false; // no memory, or no thread: the next call tries again
        }
    }
}

} // namespace trhost::effects
