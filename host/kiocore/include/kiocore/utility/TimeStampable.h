#pragma once

#include <kiocore/Export.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kiocore::utility {

/// Something that knows when it was used last.
///
/// Threading: any thread; the stamp only ever rises.
class KIO_EXPORT TimeStampable {
public:
    using Time = std::chrono::steady_clock::time_point;

    Time GetTimeStamp() const noexcept
    {
        return Time(Time::duration(mTicks.load(std::memory_order_relaxed)));
    }
    /// Raises the stamp to inTime; a stamp that is later already stays. Backs off between retries. Writes
    /// nothing when the stamp is inTime already, so that many who use one thing at once share its memory.
    void RaiseTimeStamp(Time inTime) noexcept
    {
        const std::int64_t ticks = inTime.time_since_epoch().count();
        if (const std::int64_t seen = mTicks.load(std::memory_order_relaxed); seen < ticks) {
            RaiseSlowly(seen, ticks);
        }
    }

protected:
    TimeStampable() noexcept = default;
    ~TimeStampable() = default;

private:
    void RaiseSlowly(std::int64_t inSeen, std::int64_t inTicks) noexcept;

    std::atomic<std::int64_t> mTicks{INT64_MIN};
};

} // namespace kiocore::utility
