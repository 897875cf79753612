#pragma once

#include <kiocore/serialization/JSONConvert.h>

#include <string>
#include <string_view>

namespace kiocore::serialization {

/// Between values and JSON texts, in one step.
///
/// Threading: plain functions of their arguments.
template <typename T>
struct Serializer {
    /// @throws not_well_formed_exception, bad_cast_exception.
    static T FromUTF8String(std::string_view inText)
    {
        return JSONConvert<T>::FromJSON(GetJSONFromUTF8String(inText));
    }
    /// @throws bad_cast_exception (see GetJSONUTF8String).
    static std::string ToUTF8String(const T& inValue, bool inPretty = false)
    {
        return GetJSONUTF8String(JSONConvert<T>::ToJSON(inValue), inPretty);
    }
};

} // namespace kiocore::serialization
