#pragma once

#include <cstdint>

/// Real faults of the processor. Compiled without instrumentation, so that a sanitizer leaves them to the
/// signal.
namespace support {

void StoreThroughNull();

inline constexpr std::uintptr_t kNowhere = 0x5000; // below what the system maps
void ReadNowhere();

/// Where a mapping goes on beyond its file.
std::uintptr_t EndOfFileAddress();
void ReadPastEndOfFile();

void OverflowStack();

} // namespace support
