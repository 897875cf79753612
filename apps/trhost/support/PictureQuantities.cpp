#include "PictureQuantities.h"

#include <VF/VideoFrames.h>

#include <charconv>
#include <cmath>
#include <string>

namespace trhost {

namespace {

using kiomediatypes::TickTime;

/// A whole number that is all of the text.
template <typename T>
std::optional<T> ParseWhole(std::string_view inText)
{
    T number = 0;
    const char* const end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, number);
    if (inText.empty() || inText[0] == '-' || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::pair<std::uint32_t, std::uint32_t>> ParsePair(std::string_view inText, char inBetween)
{
    const std::size_t at = inText.find(inBetween);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const auto first = ParseWhole<std::uint32_t>(inText.substr(0, at));
    const auto second = ParseWhole<std::uint32_t>(inText.substr(at + 1));
    if (!first || !second || *first == 0 || *second == 0) {
        return std::nullopt;
    }
    return std::pair(*first, *second);
}

/// "1.5" units of so many seconds (or so many to the second): through no floating-point number, as frames
/// start at the very tick.
std::optional<TickTime> ParseDecimal(std::string_view inText, std::int64_t inUnitSeconds,
                                     std::int64_t inUnitsPerSecond = 1)
{
    constexpr std::size_t kMostDigits = 9; // on either side of the point
    const std::size_t point = inText.find('.');
    const std::string_view whole = inText.substr(0, point);
    std::string fraction(point == std::string_view::npos ? "0" : inText.substr(point + 1));
    if (whole.size() > kMostDigits || fraction.empty() || fraction.size() > kMostDigits) {
        return std::nullopt;
    }
    fraction.resize(kMostDigits, '0');
    const auto units = ParseWhole<std::int64_t>(whole);
    const auto billionths = ParseWhole<std::int64_t>(fraction);
    if (!units || !billionths) {
        return std::nullopt;
    }
    constexpr std::int64_t kBillion = 1'000'000'000;
    return TickTime::FromTimeBase((*units * kBillion + *billionths) * inUnitSeconds, 1,
                                  kBillion * inUnitsPerSecond);
}

/// "1:30", "00:00:01.5".
std::optional<TickTime> ParseClock(std::string_view inText)
{
    TickTime time = TickTime::Zero();
    std::int64_t unitSeconds = 1;
    for (int part = 0; part < 3; ++part) {
        const std::size_t colon = inText.rfind(':');
        const std::string_view digits = colon == std::string_view::npos ? inText : inText.substr(colon + 1);
        const auto value = ParseDecimal(digits, unitSeconds);
        const bool isFirst = colon == std::string_view::npos;
        if (!value || (part > 0 && digits.find('.') != std::string_view::npos) ||
            (!isFirst && *value >= TickTime::FromCount(60 * unitSeconds, {1, 1}))) {
            return std::nullopt;
        }
        time = time + *value;
        if (isFirst) {
            return part > 0 ? std::optional(time) : std::nullopt;
        }
        inText = inText.substr(0, colon);
        unitSeconds *= 60;
    }
    return std::nullopt;
}

} // namespace

std::optional<PictureSize> ParsePictureSize(std::string_view inText)
{
    const auto sides = ParsePair(inText, 'x');
    if (!sides || sides->first > VF::kMostPixelsPerSide || sides->second > VF::kMostPixelsPerSide) {
        return std::nullopt;
    }
    return PictureSize{sides->first, sides->second};
}

std::optional<kiomediatypes::PixelAspectRatio> ParsePixelAspectRatio(std::string_view inText)
{
    const auto sides = ParsePair(inText, ':');
    return sides ? std::optional(kiomediatypes::PixelAspectRatio{sides->first, sides->second}) : std::nullopt;
}

std::optional<kiomediatypes::RenderQuality> ParseRenderQuality(std::string_view inText)
{
    return inText == "draft"    ? std::optional(kiomediatypes::kRenderQuality_Draft)
           : inText == "medium" ? std::optional(kiomediatypes::kRenderQuality_Medium)
           : inText == "high"   ? std::optional(kiomediatypes::kRenderQuality_High)
                                : std::nullopt;
}

std::optional<float> ParseTolerance(std::string_view inText)
{
    double divisor = 1;
    if (inText.ends_with('%')) {
        divisor = 100;
        inText.remove_suffix(1);
    } else if (const std::size_t slash = inText.find('/'); slash != std::string_view::npos) {
        const auto steps = ParseWhole<std::uint32_t>(inText.substr(slash + 1));
        if (!steps || *steps == 0) {
            return std::nullopt;
        }
        divisor = *steps;
        inText = inText.substr(0, slash);
    }
    double number = 0;
    const char* const end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, number, std::chars_format::fixed);
    const double part = number / divisor;
    if (error != std::errc() || stop != end || !(part >= 0 && part <= 1)) {
        return std::nullopt;
    }
    const auto rounded = float(part);
    return double(rounded) < part ? std::nextafter(rounded, 1.0f) : rounded;
}

std::optional<MediaTime> ParseMediaTime(std::string_view inText)
{
    const auto timeOf = [](std::optional<TickTime> inTime) {
        return inTime ? std::optional(MediaTime{*inTime, std::nullopt}) : std::nullopt;
    };
    if (inText.find(':') != std::string_view::npos) {
        return timeOf(ParseClock(inText));
    }
    const std::size_t end = inText.find_last_of("0123456789.");
    const std::string_view unit = inText.substr(end == std::string_view::npos ? 0 : end + 1);
    const std::string_view number = inText.substr(0, inText.size() - unit.size());
    if (unit == "f") {
        const auto frame = ParseWhole<std::int64_t>(number);
        return frame ? std::optional(MediaTime{TickTime::Zero(), frame}) : std::nullopt;
    }
    return timeOf(unit.empty() || unit == "s" ? ParseDecimal(number, 1)
                  : unit == "ms"              ? ParseDecimal(number, 1, 1000)
                  : unit == "m"               ? ParseDecimal(number, 60)
                  : unit == "h"               ? ParseDecimal(number, 3600)
                                              : std::nullopt);
}

} // namespace trhost
