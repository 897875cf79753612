#include "ScalarText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>

namespace BE {
namespace {

constexpr std::string_view kNotANumber = "nan:"; // and the 16 hexadecimal digits of its bits

constexpr auto kHexValues = [] {
    std::array<signed char, 256> values{};
    values.fill(-1);
    for (int digit = 0; digit < 10; ++digit) {
        values[static_cast<std::size_t>('0' + digit)] = static_cast<signed char>(digit);
    }
    for (int digit = 0; digit < 6; ++digit) {
        values[static_cast<std::size_t>('a' + digit)] = static_cast<signed char>(10 + digit);
        values[static_cast<std::size_t>('A' + digit)] = static_cast<signed char>(10 + digit);
    }
    return values;
}();

template <typename T>
const T& ValueOf(const ISerializeableValue& inValue)
{
    return *static_cast<const T*>(inValue.GetStorage());
}

template <typename T>
void AppendNumber(std::string& ioBytes, T inValue)
{
    char digits[32];
    ioBytes.append(digits, std::to_chars(digits, digits + sizeof(digits), inValue).ptr);
}

void AppendDouble(std::string& ioBytes, double inValue)
{
    if (!std::isnan(inValue)) {
        AppendNumber(ioBytes, inValue); // the shortest text that reads back as the same value; "inf", "-inf"
        return;
    }
    char digits[16];
    const auto bits = std::bit_cast<std::uint64_t>(inValue);
    for (std::size_t i = 0; i < sizeof(digits); ++i) {
        digits[i] = "0123456789abcdef"[bits >> (60 - 4 * i) & 15];
    }
    ioBytes.append(kNotANumber).append(digits, sizeof(digits));
}

template <typename T>
bool ParseWhole(std::string_view inText, T& outValue, auto... inBase)
{
    const char* end = inText.data() + inText.size();
    const auto parsed = std::from_chars(inText.data(), end, outValue, inBase...);
    return parsed.ec == std::errc() && parsed.ptr == end;
}

bool ParseDouble(std::string_view inText, double& outValue)
{
    if (!inText.starts_with(kNotANumber)) {
        return ParseWhole(inText, outValue) && !std::isnan(outValue);
    }
    inText.remove_prefix(kNotANumber.size());
    std::uint64_t bits = 0;
    if (inText.size() != 16 || !ParseWhole(inText, bits, 16)) {
        return false;
    }
    outValue = std::bit_cast<double>(bits);
    return std::isnan(outValue);
}

template <typename T>
bool StoreNumber(std::string_view inText, ISerializeableValue& ioValue)
{
    T value{};
    if (!ParseWhole(inText, value)) {
        return false;
    }
    *static_cast<T*>(ioValue.GetStorage()) = value;
    return true;
}

} // namespace

void AppendScalar(std::string& ioBytes, const ISerializeableValue& inValue)
{
    switch (inValue.GetType()) {
    case ValueType::kBool:
        ioBytes += ValueOf<bool>(inValue) ? "true" : "false";
        return;
    case ValueType::kInt32:
        return AppendNumber(ioBytes, ValueOf<std::int32_t>(inValue));
    case ValueType::kUInt32:
        return AppendNumber(ioBytes, ValueOf<std::uint32_t>(inValue));
    case ValueType::kInt64:
        return AppendNumber(ioBytes, ValueOf<std::int64_t>(inValue));
    case ValueType::kUInt64:
        return AppendNumber(ioBytes, ValueOf<std::uint64_t>(inValue));
    case ValueType::kDouble:
        return AppendDouble(ioBytes, ValueOf<double>(inValue));
    case ValueType::kGuid:
        char text[Guid::kTextLength];
        ValueOf<Guid>(inValue).WriteText(text);
        ioBytes.append(text, sizeof(text));
        return;
    }
}

bool ParseScalar(std::string_view inText, ISerializeableValue& ioValue)
{
    switch (ioValue.GetType()) {
    case ValueType::kBool:
        if (inText != "true" && inText != "false") {
            return false;
        }
        *static_cast<bool*>(ioValue.GetStorage()) = inText == "true";
        return true;
    case ValueType::kInt32:
        return StoreNumber<std::int32_t>(inText, ioValue);
    case ValueType::kUInt32:
        return StoreNumber<std::uint32_t>(inText, ioValue);
    case ValueType::kInt64:
        return StoreNumber<std::int64_t>(inText, ioValue);
    case ValueType::kUInt64:
        return StoreNumber<std::uint64_t>(inText, ioValue);
    case ValueType::kDouble: {
        double value = 0;
        if (!ParseDouble(inText, value)) {
            return false;
        }
        *static_cast<double*>(ioValue.GetStorage()) = value;
        return true;
    }
    case ValueType::kGuid: {
        const std::optional<Guid> guid = Guid::FromText(inText);
        if (!guid) {
            return false;
        }
        *static_cast<Guid*>(ioValue.GetStorage()) = *guid;
        return true;
    }
    }
    return false;
}

const char* FormOf(ValueType inType)
{
    switch (inType) {
    case ValueType::kBool:
        return "true or false";
    case ValueType::kInt32:
    case ValueType::kInt64:
        return "decimal digits, perhaps after a minus sign, within the type's range";
    case ValueType::kUInt32:
    case ValueType::kUInt64:
        return "decimal digits within the type's range";
    case ValueType::kDouble:
        return "a decimal number, inf, -inf, or nan: with 16 hexadecimal digits";
    case ValueType::kGuid:
        return "the form 102bfb4c-1980-4e77-87df-17b03d5b09db";
    }
    return "another type";
}

void AppendHex(std::string& ioBytes, const MF::BinaryData& inValue)
{
    const std::size_t start = ioBytes.size();
    ioBytes.resize(start + inValue.GetSize() * 2);
    char* out = ioBytes.data() + start;
    for (std::byte byte : inValue.AsSpan()) {
        *out++ = "0123456789abcdef"[static_cast<unsigned>(byte) >> 4];
        *out++ = "0123456789abcdef"[static_cast<unsigned>(byte) & 15];
    }
}

bool ParseHex(std::string_view inText, MF::BinaryData& ioValue)
{
    const auto digitAt = [&](std::size_t i) { return kHexValues[static_cast<unsigned char>(inText[i])]; };
    int seen = 0; // below zero once there was anything but a digit
    for (std::size_t i = 0; i < inText.size(); ++i) {
        seen |= digitAt(i);
    }
    if (inText.size() % 2 != 0 || seen < 0) {
        return false;
    }
    ioValue.SetSize(inText.size() / 2);
    std::byte* out = ioValue.GetData();
    for (std::size_t i = 0; i < inText.size(); i += 2) {
        *out++ = static_cast<std::byte>(digitAt(i) << 4 | digitAt(i + 1));
    }
    return true;
}

} // namespace BE
