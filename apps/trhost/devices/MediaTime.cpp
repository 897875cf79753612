#include "MediaTime.h"

#include <charconv>
#include <cmath>

namespace trhost::devices {
namespace {

constexpr double kLongestSeconds = 366.0 * 86400;

/// A number that is all of the text: digits, and a point with digits.
std::optional<double> Number(std::string_view inText, bool inWhole)
{
    double number = 0;
    if (inText.empty() || inText.find_first_not_of(inWhole ? "0123456789" : "0123456789.") != inText.npos) {
        return std::nullopt;
    }
    const char* const end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, number, std::chars_format::fixed);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<double> Seconds(std::string_view inText)
{
    if (inText.ends_with("ms")) {
        const auto number = Number(inText.substr(0, inText.size() - 2), false);
        return number ? std::optional(*number / 1000) : std::nullopt;
    }
    if (inText.ends_with('s')) {
        return Number(inText.substr(0, inText.size() - 1), false);
    }
    double seconds = 0;
    for (int places = 0; places < 3; ++places) {
        const std::size_t colon = inText.find(':');
        const bool isLast = colon == inText.npos;
        const auto number = Number(inText.substr(0, colon), !isLast);
        if (!number || (places > 0 && *number >= 60)) {
            return std::nullopt;
        }
        seconds = seconds * 60 + *number;
        if (isLast) {
            return seconds;
        }
        inText.remove_prefix(colon + 1);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::chrono::nanoseconds> ParseMediaTime(std::string_view inText)
{
    const auto seconds = Seconds(inText);
    if (!seconds || *seconds > kLongestSeconds) {
        return std::nullopt;
    }
    return std::chrono::nanoseconds(std::llround(*seconds * 1e9));
}

std::int64_t FramesOf(std::chrono::nanoseconds inTime, int inRate)
{
    const std::int64_t whole = inTime.count() / 1'000'000'000;
    const std::int64_t rest = inTime.count() % 1'000'000'000;
    return whole * inRate + (rest * inRate + 500'000'000) / 1'000'000'000;
}

} // namespace trhost::devices
