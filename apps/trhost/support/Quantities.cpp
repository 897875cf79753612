#include "Quantities.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace trhost {

namespace {

/// Splits "1.5GB" into 1.5 and "gb" (lower case).
std::optional<std::pair<double, std::string>> SplitNumber(std::string_view inText)
{
    double number = 0;
    const auto [end, error] =
        std::from_chars(inText.data(), inText.data() + inText.size(), number, std::chars_format::fixed);
    if (error != std::errc() || !std::isfinite(number) || number < 0 || std::signbit(number)) {
        return std::nullopt;
    }
    std::string unit(end, std::size_t(inText.data() + inText.size() - end));
    for (char& letter : unit) {
        letter = letter >= 'A' && letter <= 'Z' ? char(letter - 'A' + 'a') : letter;
    }
    return std::pair(number, unit);
}

} // namespace

std::optional<std::uint64_t> ParseSize(std::string_view inText)
{
    const auto split = SplitNumber(inText);
    if (!split) {
        return std::nullopt;
    }
    std::string unit = split->second;
    if (unit.ends_with("ib") && unit.size() == 3) {
        unit.resize(1);
    } else if (unit.ends_with('b')) {
        unit.pop_back();
    }
    static constexpr std::string_view kUnits = "kmgtpe";
    double factor = 1;
    if (!unit.empty()) {
        const std::size_t at = kUnits.find(unit[0]);
        if (unit.size() != 1 || at == std::string_view::npos) {
            return std::nullopt;
        }
        factor = std::ldexp(1.0, 10 * (int(at) + 1));
    }
    const double bytes = split->first * factor;
    if (bytes >= std::ldexp(1.0, 64)) {
        return std::nullopt;
    }
    return std::uint64_t(bytes);
}

std::optional<std::chrono::nanoseconds> ParseAge(std::string_view inText)
{
    const auto split = SplitNumber(inText);
    if (!split || split->second.size() != 1) {
        return std::nullopt;
    }
    double seconds = 0;
    switch (split->second[0]) {
    case 's':
        seconds = 1;
        break;
    case 'm':
        seconds = 60;
        break;
    case 'h':
        seconds = 3600;
        break;
    case 'd':
        seconds = 86400;
        break;
    case 'w':
        seconds = 7 * 86400;
        break;
    default:
        return std::nullopt;
    }
    const double nanoseconds = split->first * seconds * 1e9;
    if (nanoseconds >= std::ldexp(1.0, 63)) {
        return std::nullopt;
    }
    return std::chrono::nanoseconds(std::int64_t(nanoseconds));
}

std::string FormatSize(std::uint64_t inBytes)
{
    static constexpr const char* kUnits[] = {"B", "KB", "MB", "GB", "TB", "PB", "EB"};
    double number = double(inBytes);
    int unit = 0;
    while (number >= 999.5 && unit < 6) {
        number /= 1024;
        ++unit;
    }
    char text[40];
    const int decimals = unit == 0 || number >= 99.95 ? 0 : number >= 9.995 ? 1 : 2;
    std::snprintf(text, sizeof(text), "%.*f %s", decimals, number, kUnits[unit]);
    return text;
}

std::string FormatDuration(double inSeconds)
{
    char text[64];
    if (!(inSeconds >= 0)) {
        inSeconds = 0;
    }
    if (inSeconds < 59.95) {
        std::snprintf(text, sizeof(text), inSeconds < 0.995 ? "%.2f s" : "%.1f s", inSeconds);
        return text;
    }
    const auto seconds = static_cast<long long>(std::llround(std::min(inSeconds, 3.6e9)));
    if (seconds < 3600) {
        std::snprintf(text, sizeof(text), "%lld:%02lld", seconds / 60, seconds % 60);
    } else {
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    }
    return text;
}

std::optional<float> ParseScale(std::string_view inText)
{
    float scale = 0;
    const auto [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), scale);
    const bool isNumber = error == std::errc() && end == inText.data() + inText.size();
    return isNumber && scale >= 0.5f && scale <= 4 ? std::optional(scale) : std::nullopt;
}

} // namespace trhost
