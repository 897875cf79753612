#pragma once

#include <cstdint>
#include <ctime>

namespace kiocore::filesupport {

/// A point in a file's life: unsigned nanoseconds since the start of the year 1601, so that times
/// before 1970 are ordinary numbers and no real file has time 0, which means "unknown". Times beyond
/// the year 2185 wrap around; equality, which decides whether a record is trusted, survives that.
using FileTime = std::uint64_t;
inline constexpr FileTime kNoFileTime = 0;
inline constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
/// From 1601 to 1970: 369 years with 89 leap days.
inline constexpr std::uint64_t kSecondsFrom1601To1970 = (369ull * 365 + 89) * 86400;

constexpr FileTime ToFileTime(const timespec& inTime)
{
    const FileTime time =
        (static_cast<std::uint64_t>(inTime.tv_sec) + kSecondsFrom1601To1970) * kNanosecondsPerSecond +
        static_cast<std::uint64_t>(inTime.tv_nsec);
    return time == kNoFileTime ? 1 : time;
}

constexpr timespec FromFileTime(FileTime inTime)
{
    timespec time{};
    time.tv_sec = static_cast<std::time_t>(inTime / kNanosecondsPerSecond) -
                  static_cast<std::time_t>(kSecondsFrom1601To1970);
    time.tv_nsec = static_cast<long>(inTime % kNanosecondsPerSecond);
    return time;
}

} // namespace kiocore::filesupport
