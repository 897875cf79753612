#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trhost::devices {

/// A time in media or a length of it: "12.5", "12.5s", "200ms", "1:05.5", "1:02:03". Numbers without a unit
/// are seconds. Empty when it is none, is negative or longer than a year.
std::optional<std::chrono::nanoseconds> ParseMediaTime(std::string_view inText);

/// The nearest sample frame.
std::int64_t FramesOf(std::chrono::nanoseconds inTime, int inRate);

} // namespace trhost::devices
