#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace support {

/// Plays a schedule of calls by four devices on two threads, one running at a time, against a manager and
/// against a small model of what it should do.
/// @param inSteps  any bytes; what a byte means depends on where things stand, so that only overlaps come up
///     that the manager provides for.
/// @return empty when manager and model agreed throughout; else what was called, expected and found.
std::string PlaySchedule(std::span<const std::uint8_t> inSteps);

} // namespace support
