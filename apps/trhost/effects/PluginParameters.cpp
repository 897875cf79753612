#include "PluginParameters.h"

#include "EffectEngine.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace trhost::effects {
namespace {

/// All of the text is one finite number.
std::optional<double> FiniteNumber(std::string_view inText)
{
    double value = 0;
    const char* const end = inText.data() + inText.size();
    const auto result = std::from_chars(inText.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string Join(const std::vector<std::string>& inTexts)
{
    std::string joined;
    for (const std::string& text : inTexts) {
        joined += joined.empty() ? text : ", " + text;
    }
    return joined;
}

template <typename Number>
std::string Shortest(Number inValue)
{
    std::array<char, 400> text; // fixed notation of the greatest double takes 309 digits
    return {text.data(),
            std::to_chars(text.data(), text.data() + text.size(), inValue, std::chars_format::fixed).ptr};
}

} // namespace

std::string OneLine(const char* inText)
{
    return OneLine(std::string_view(inText ? inText : ""));
}

std::string OneLine(std::string_view inText)
{
    std::string line = kiocore::utility::ToUTF8(kiocore::utility::ToUTF16(inText));
    std::replace_if(
        line.begin(), line.end(), [](unsigned char inByte) { return inByte < 0x20 || inByte == 0x7F; }, ' ');
    return line;
}

std::string TypedName(std::string_view inDisplayName)
{
    std::string name;
    for (const char character : inDisplayName) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 'A' && byte <= 'Z') {
            name.push_back(static_cast<char>(byte - 'A' + 'a'));
        } else if ((byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '_' ||
                   byte >= 0x80) {
            name.push_back(character);
        } else if (byte != '\'' && !name.empty() && name.back() != '-') {
            name.push_back('-');
        }
    }
    while (!name.empty() && name.back() == '-') {
        name.pop_back();
    }
    return name;
}

std::string UniqueName(std::string_view inDisplayName, const std::vector<std::string>& inTaken)
{
    std::string name = TypedName(inDisplayName);
    if (name.empty()) {
        name = "parameter";
    }
    const std::string first = name;
    for (int n = 2; std::find(inTaken.begin(), inTaken.end(), name) != inTaken.end(); ++n) {
        name = first + "-" + std::to_string(n);
    }
    return name;
}

std::string NumberText(double inValue)
{
    if (!std::isfinite(inValue) || inValue == 0) {
        return "0"; // minus zero too
    }
    const auto single = static_cast<float>(inValue);
    return double(single) == inValue ? Shortest(single) : Shortest(inValue);
}

double AsWritten(float inValue)
{
    return FiniteNumber(NumberText(double(inValue))).value_or(0);
}

std::string ColorText(const ColorValue& inColor)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "#";
    for (const double part : {inColor.red, inColor.green, inColor.blue}) {
        const double inRange = part >= 0 ? std::min(part, 1.0) : 0; // not-a-number too
        const auto byte = static_cast<unsigned>(std::lround(inRange * 255));
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 15]);
    }
    return text;
}

std::string PositionText(const PositionValue& inPosition)
{
    return NumberText(inPosition.x) + "," + NumberText(inPosition.y);
}

bool ParseBool(const std::string& inMatchName, const EffectParameter& inParameter, const std::string& inText)
{
    if (inText != "true" && inText != "false") {
        ThrowBadValue(inMatchName, inParameter, inText,
                      KeptText("$$$/Halcyon/TrHost/Effects/Expected/Either=@0 or @1#{@0: true, @1: false}",
                               {"true", "false"}));
    }
    return inText == "true";
}

double ParseNumber(const std::string& inMatchName, const EffectParameter& inParameter,
                   const std::string& inText)
{
    const bool isInteger = inParameter.kind == ParameterKind::kInteger;
    const auto value = FiniteNumber(inText);
    if (!value || (isInteger && *value != std::trunc(*value))) {
        std::string expected = isInteger ? "$$$/Halcyon/TrHost/Effects/Expected/WholeNumber=a whole number"
                                         : "$$$/Halcyon/TrHost/Effects/Expected/Number=a number";
        if (inParameter.hasRange) {
            expected = KeptText(
                isInteger
                    ? "$$$/Halcyon/TrHost/Effects/Expected/WholeNumberFromTo=a whole number from @0 to @1"
                    : "$$$/Halcyon/TrHost/Effects/Expected/NumberFromTo=a number from @0 to @1",
                {NumberText(inParameter.minimum), NumberText(inParameter.maximum)});
        }
        ThrowBadValue(inMatchName, inParameter, inText, expected);
    }
    // Not std::clamp: a plug-in's range may be upside down.
    return inParameter.hasRange ? std::max(inParameter.minimum, std::min(inParameter.maximum, *value))
                                : *value;
}

ColorValue ParseColor(const std::string& inMatchName, const EffectParameter& inParameter,
                      const std::string& inText)
{
    const bool isSized = (inText.size() == 7 || inText.size() == 9) && inText[0] == '#';
    std::array<double, 4> parts{0, 0, 0, 1};
    for (std::size_t i = 0; isSized && i < inText.size() / 2; ++i) {
        unsigned byte = 0;
        const char* const from = inText.data() + 1 + 2 * i;
        const auto result = std::from_chars(from, from + 2, byte, 16);
        if (result.ec != std::errc() || result.ptr != from + 2) {
            ThrowBadValue(inMatchName, inParameter, inText,
                          "$$$/Halcyon/TrHost/Effects/Expected/Color=a color as #rrggbb");
        }
        parts[i] = byte / 255.0;
    }
    if (!isSized) {
        ThrowBadValue(inMatchName, inParameter, inText,
                      "$$$/Halcyon/TrHost/Effects/Expected/Color=a color as #rrggbb");
    }
    return {parts[0], parts[1], parts[2], parts[3]};
}

PositionValue ParsePosition(const std::string& inMatchName, const EffectParameter& inParameter,
                            const std::string& inText)
{
    const std::string_view text = inText;
    const std::size_t comma = text.find(',');
    std::optional<double> x;
    std::optional<double> y;
    if (comma != std::string_view::npos) {
        x = FiniteNumber(text.substr(0, comma));
        y = FiniteNumber(text.substr(comma + 1));
    }
    if (!x || !y) {
        ThrowBadValue(inMatchName, inParameter, inText,
                      "$$$/Halcyon/TrHost/Effects/Expected/Position=a position as x,y, each from 0 to 1");
    }
    return {std::clamp(*x, 0.0, 1.0), std::clamp(*y, 0.0, 1.0)};
}

void ThrowNoSuchParameter(const std::string& inMatchName, const std::string& inName,
                          const std::vector<std::string>& inNames)
{
    throw kiocore::kio_exception(
        inNames.empty()
            ? KeptText("$$$/Halcyon/TrHost/Effects/NoParameters=@0 has no parameter @1; it has none",
                       {inMatchName, OneLine(inName)})
            : KeptText("$$$/Halcyon/TrHost/Effects/NoParameter=@0 has no parameter @1; there are: @2",
                       {inMatchName, OneLine(inName), Join(inNames)}),
        kEffectError_BadParameter);
}

void ThrowBadValue(const std::string& inMatchName, const EffectParameter& inParameter,
                   const std::string& inText, const std::string& inExpected)
{
    throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/BadValue=Parameter @0 of @1 is set to "
                                          "'@2'; expected @3#{@1: a match name, @3: a whole number}",
                                          {inParameter.name, inMatchName, OneLine(inText), inExpected}),
                                 kEffectError_BadParameter);
}

} // namespace trhost::effects
