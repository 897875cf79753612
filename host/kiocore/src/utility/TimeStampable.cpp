#include <kiocore/utility/TimeStampable.h>

#include "platform/Parking.h"

#include <algorithm>

namespace kiocore::utility {

void TimeStampable::RaiseSlowly(std::int64_t inSeen, std::int64_t inTicks) noexcept
{
    static constexpr int kMostPauses = 64;
    int pauses = 1;
    while (inSeen < inTicks && !mTicks.compare_exchange_weak(inSeen, inTicks, std::memory_order_relaxed)) {
        for (int i = 0; i < pauses; ++i) {
            platform::SpinPause();
        }
        pauses = std::min(2 * pauses, kMostPauses);
    }
}

} // namespace kiocore::utility
