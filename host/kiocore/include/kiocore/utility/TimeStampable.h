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

    Time GetTimeStamp() const noexcept;
    /// Raises the stamp to inTime; a stamp that is later already stays. Backs off between retries.
    void RaiseTimeStamp(Time inTime) noexcept;

protected:
    TimeStampable() noexcept = default;
    ~TimeStampable() = default;

private:
    std::atomic<std::int64_t> mTicks{INT64_MIN};
};

} // namespace kiocore::utility
