#pragma once

#include <kiocore/serialization/JSONConvert.h>
#include <kiomediatypes/TickTime.h>

/// A time in JSON is its number of ticks, a plain whole number: exact over the whole range, the unset value
/// -101606400000000000 included.
template <>
struct kiocore::serialization::JSONConvert<kiomediatypes::TickTime> {
    static JSON ToJSON(kiomediatypes::TickTime inTime) { return inTime.Ticks(); }
    static kiomediatypes::TickTime FromJSON(const JSON& inValue)
    {
        return kiomediatypes::TickTime::FromTicks(JSONConvert<std::int64_t>::FromJSON(inValue));
    }
};
