#include <kiocore/serialization/JSON.h>

#include "JSONText.h"
#include "debug/TypeName.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace kiocore::serialization {
namespace {

/// Up to here a double counts in ones.
constexpr double kExactIntegers = 9007199254740992.0;

/// A whole number as sign and magnitude, so that both 64-bit ranges fit.
struct Whole {
    bool negative;
    std::uint64_t magnitude;
};

template <std::integral T>
bool TakeWhole(const JSON& inValue, std::optional<Whole>& outWhole)
{
    const T* number = boost::any_cast<T>(&inValue);
    if (number) {
        const bool negative = *number < T(0);
        const auto magnitude = static_cast<std::uint64_t>(*number);
        outWhole = {negative, negative ? 0 - magnitude : magnitude};
    }
    return number != nullptr;
}

/// The types of numbers that a value may have been made with.
std::optional<Whole> FindWhole(const JSON& inValue)
{
    std::optional<Whole> whole;
    (void)(TakeWhole<std::int64_t>(inValue, whole) || TakeWhole<std::uint64_t>(inValue, whole) ||
           TakeWhole<int>(inValue, whole) || TakeWhole<unsigned>(inValue, whole) ||
           TakeWhole<long long>(inValue, whole) || TakeWhole<unsigned long long>(inValue, whole));
    return whole;
}

std::optional<double> FindDouble(const JSON& inValue)
{
    if (const auto* number = boost::any_cast<double>(&inValue)) {
        return *number;
    }
    if (const auto* number = boost::any_cast<float>(&inValue)) {
        return *number;
    }
    return std::nullopt;
}

std::optional<Whole> FindExactWhole(const JSON& inValue)
{
    if (const auto whole = FindWhole(inValue)) {
        return whole;
    }
    const auto number = FindDouble(inValue);
    if (!number || std::abs(*number) > kExactIntegers || *number != std::trunc(*number)) {
        return std::nullopt; // not-a-number compares unequal to its own whole part
    }
    return Whole{*number < 0, static_cast<std::uint64_t>(std::abs(*number))};
}

std::string RangeText(const std::string& inLowest, const std::string& inHighest)
{
    return "a whole number from " + inLowest + " to " + inHighest;
}

template <typename T>
const T& Get(const JSON& inValue, const char* inExpected)
{
    if (const T* value = boost::any_cast<T>(&inValue)) {
        return *value;
    }
    throw bad_cast_exception(Describe(inValue), inExpected);
}

} // namespace

not_well_formed_exception::not_well_formed_exception(std::size_t inLine, std::size_t inColumn,
                                                     const std::string& inProblem)
    : std::runtime_error("JSON not well-formed: line " + std::to_string(inLine) + ", column " +
                         std::to_string(inColumn) + ": " + inProblem),
      mLine(inLine), mColumn(inColumn)
{}
not_well_formed_exception::~not_well_formed_exception() = default;

bad_cast_exception::bad_cast_exception(std::string inFound, std::string inExpected)
    : mFound(std::move(inFound)), mExpected(std::move(inExpected))
{
    Compose();
}
bad_cast_exception::~bad_cast_exception() = default;

void bad_cast_exception::IsWithinMember(std::string_view inName)
{
    mPlace.insert(0, "." + std::string(inName));
    Compose();
}

void bad_cast_exception::IsWithinElement(std::size_t inIndex)
{
    mPlace.insert(0, "[" + std::to_string(inIndex) + "]");
    Compose();
}

void bad_cast_exception::Compose()
{
    mText = "JSON value $" + mPlace + ": found " + mFound + ", expected " + mExpected;
}

bool AsBool(const JSON& inValue)
{
    return Get<bool>(inValue, "true or false");
}

std::int64_t AsInt64(const JSON& inValue, std::int64_t inLowest, std::int64_t inHighest)
{
    constexpr std::uint64_t kLowestMagnitude = std::uint64_t(1) << 63;
    if (const auto whole = FindExactWhole(inValue)) {
        const bool fits =
            whole->negative ? whole->magnitude <= kLowestMagnitude : whole->magnitude < kLowestMagnitude;
        const auto value =
            static_cast<std::int64_t>(whole->negative ? 0 - whole->magnitude : whole->magnitude);
        if (fits && value >= inLowest && value <= inHighest) {
            return value;
        }
    }
    throw bad_cast_exception(Describe(inValue),
                             RangeText(std::to_string(inLowest), std::to_string(inHighest)));
}

std::uint64_t AsUInt64(const JSON& inValue, std::uint64_t inHighest)
{
    const auto whole = FindExactWhole(inValue);
    if (whole && !whole->negative && whole->magnitude <= inHighest) {
        return whole->magnitude;
    }
    throw bad_cast_exception(Describe(inValue), RangeText("0", std::to_string(inHighest)));
}

double AsDouble(const JSON& inValue)
{
    if (const auto number = FindDouble(inValue)) {
        return *number;
    }
    if (const auto whole = FindWhole(inValue)) {
        const auto magnitude = static_cast<double>(whole->magnitude);
        return whole->negative ? -magnitude : magnitude;
    }
    throw bad_cast_exception(Describe(inValue), "a number");
}

const std::string& AsText(const JSON& inValue)
{
    return Get<std::string>(inValue, "a text");
}

const JSONArray& AsArray(const JSON& inValue)
{
    return Get<JSONArray>(inValue, "an array");
}

const JSONObject& AsObject(const JSON& inValue)
{
    return Get<JSONObject>(inValue, "an object");
}

std::string Describe(const JSON& inValue)
{
    if (inValue.empty()) {
        return "null";
    }
    if (const auto* text = boost::any_cast<std::string>(&inValue)) {
        return "the text " + Quoted(*text);
    }
    if (const auto* value = boost::any_cast<bool>(&inValue)) {
        return *value ? "true" : "false";
    }
    if (const auto whole = FindWhole(inValue)) {
        return "the number " + std::string(whole->negative ? "-" : "") + std::to_string(whole->magnitude);
    }
    if (const auto number = FindDouble(inValue)) {
        char digits[32];
        return "the number " +
               std::string(digits, std::to_chars(digits, digits + sizeof(digits), *number).ptr);
    }
    if (boost::any_cast<JSONArray>(&inValue)) {
        return "an array";
    }
    if (boost::any_cast<JSONObject>(&inValue)) {
        return "an object";
    }
    return "a value of C++ type " + debug::TypeName(inValue.type());
}

} // namespace kiocore::serialization
