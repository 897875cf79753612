#pragma once

#include <kiocore/serialization/JSON.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>

#include <concepts>
#include <cstddef>
#include <limits>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kiocore::serialization {

/// How a type looks as a JSON value. A type becomes serializable with a specialisation beside it:
///
///     static JSON ToJSON(const T& inValue);
///     static T FromJSON(const JSON& inValue);  // throws bad_cast_exception
///
/// Threading: plain functions of their arguments.
template <typename T>
struct JSONConvert;

template <>
struct JSONConvert<JSON> {
    static JSON ToJSON(const JSON& inValue) { return inValue; }
    static JSON FromJSON(const JSON& inValue) { return inValue; }
};

template <>
struct JSONConvert<bool> {
    static JSON ToJSON(bool inValue) { return inValue; }
    static bool FromJSON(const JSON& inValue) { return AsBool(inValue); }
};

template <typename T>
concept JSONInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// What does not fit the type is refused.
template <JSONInteger T>
struct JSONConvert<T> {
    using Limits = std::numeric_limits<T>;
    using Widest = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;

    static JSON ToJSON(T inValue) { return static_cast<Widest>(inValue); }
    static T FromJSON(const JSON& inValue)
    {
        if constexpr (std::is_signed_v<T>) {
            return static_cast<T>(AsInt64(inValue, Limits::min(), Limits::max()));
        } else {
            return static_cast<T>(AsUInt64(inValue, Limits::max()));
        }
    }
};

template <>
struct JSONConvert<double> {
    static JSON ToJSON(double inValue) { return inValue; }
    static double FromJSON(const JSON& inValue) { return AsDouble(inValue); }
};

/// Stored as a double, so that it comes back exactly; what is beyond a float is refused.
template <>
struct JSONConvert<float> {
    static JSON ToJSON(float inValue) { return static_cast<double>(inValue); }
    static float FromJSON(const JSON& inValue)
    {
        const double value = AsDouble(inValue);
        constexpr double kHighest = std::numeric_limits<float>::max();
        if (value > kHighest || value < -kHighest) {
            throw bad_cast_exception(Describe(inValue), "a number within the range of a float");
        }
        return static_cast<float>(value);
    }
};

template <>
struct JSONConvert<std::string> {
    static JSON ToJSON(const std::string& inValue) { return inValue; }
    static std::string FromJSON(const JSON& inValue) { return AsText(inValue); }
};

template <>
struct JSONConvert<utility::ImmutableString> {
    static JSON ToJSON(const utility::ImmutableString& inValue) { return inValue.AsString(); }
    static utility::ImmutableString FromJSON(const JSON& inValue) { return AsText(inValue); }
};

template <>
struct JSONConvert<utility::UTF16String> {
    static JSON ToJSON(const utility::UTF16String& inValue) { return TextFromUTF16(inValue); }
    static utility::UTF16String FromJSON(const JSON& inValue) { return TextToUTF16(AsText(inValue)); }
};

template <>
struct JSONConvert<utility::Guid> {
    static JSON ToJSON(const utility::Guid& inValue) { return inValue.AsUTF8(); }
    static utility::Guid FromJSON(const JSON& inValue)
    {
        const auto guid = utility::Guid::FromText(AsText(inValue));
        if (!guid) {
            throw bad_cast_exception(Describe(inValue), "an identifier of 8-4-4-4-12 hexadecimal digits");
        }
        return *guid;
    }
};

/// Reads an element of an array, so that a failure names its place.
template <typename T>
T FromElement(const JSON& inElement, std::size_t inIndex)
{
    try {
        return JSONConvert<T>::FromJSON(inElement);
    } catch (bad_cast_exception& problem) {
        problem.IsWithinElement(inIndex);
        throw;
    }
}

/// Reads a member of an object, so that a failure names its place.
template <typename T>
T FromMember(const JSON& inMember, std::string_view inName)
{
    try {
        return JSONConvert<T>::FromJSON(inMember);
    } catch (bad_cast_exception& problem) {
        problem.IsWithinMember(inName);
        throw;
    }
}

/// Reads a member that may be absent; ioValue then stays.
/// @return whether it was there.
template <typename T>
bool ReadMember(const JSONObject& inObject, const std::string& inName, T& ioValue)
{
    const auto found = inObject.find(inName);
    if (found == inObject.end()) {
        return false;
    }
    ioValue = FromMember<T>(found->second, inName);
    return true;
}

/// Reads a member that must be there.
template <typename T>
T GetMember(const JSONObject& inObject, const std::string& inName)
{
    const auto found = inObject.find(inName);
    if (found == inObject.end()) {
        throw bad_cast_exception("no member " + inName, "one");
    }
    return FromMember<T>(found->second, inName);
}

template <typename T>
void AddMember(JSONObject& ioObject, const std::string& inName, const T& inValue)
{
    ioObject[inName] = JSONConvert<T>::ToJSON(inValue);
}

template <typename T>
struct JSONConvert<std::vector<T>> {
    static JSON ToJSON(const std::vector<T>& inValues)
    {
        JSONArray array;
        array.reserve(inValues.size());
        for (const auto& value : inValues) {
            array.push_back(JSONConvert<T>::ToJSON(value));
        }
        return array;
    }
    static std::vector<T> FromJSON(const JSON& inValue)
    {
        const JSONArray& array = AsArray(inValue);
        std::vector<T> values;
        values.reserve(array.size());
        for (const JSON& element : array) {
            values.push_back(FromElement<T>(element, values.size()));
        }
        return values;
    }
};

template <typename T>
struct JSONConvert<std::map<std::string, T>> {
    static JSON ToJSON(const std::map<std::string, T>& inValues)
    {
        JSONObject object;
        for (const auto& [name, value] : inValues) {
            AddMember(object, name, value);
        }
        return object;
    }
    static std::map<std::string, T> FromJSON(const JSON& inValue)
    {
        std::map<std::string, T> values;
        for (const auto& [name, member] : AsObject(inValue)) {
            values.emplace(name, FromMember<T>(member, name));
        }
        return values;
    }
};

} // namespace kiocore::serialization
