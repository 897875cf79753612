#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trhost {

/// "50G", "1.5M", "200k", "4096", also "50GB" and "50GiB": bytes, factors of 1024, letters of either case.
/// Empty when it is no size, is negative or does not fit.
std::optional<std::uint64_t> ParseSize(std::string_view inText);
/// "90d", "12h", "30m", "45s", "2w", "1.5d". A number without unit is refused: nobody should delete by
/// seconds who meant days. Empty when it is no age.
std::optional<std::chrono::nanoseconds> ParseAge(std::string_view inText);
/// How large things are shown: a number from 0.5 to 4.
std::optional<float> ParseScale(std::string_view inText);

/// "1.4 MB", "312 B": three significant digits, factors of 1024.
std::string FormatSize(std::uint64_t inBytes);
/// "0.02 s", "4.2 s", "1:05", "2:03:07".
std::string FormatDuration(double inSeconds);

} // namespace trhost
