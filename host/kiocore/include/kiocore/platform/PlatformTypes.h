#pragma once

#include <compare>
#include <cstdint>

/// The platform's window object. Only its address is passed around; on Linux it is whatever the
/// host's toolkit uses as a window handle.
#ifdef __OBJC__
@class NSWindow;
#else
class NSWindow;
#endif

#if !defined(__APPLE__)
/// An interface identifier in the form that interface queries use: the 16 bytes of a UUID in the
/// order in which its text is written.
struct CFUUIDBytes {
    std::uint8_t bytes[16];

    friend bool operator==(const CFUUIDBytes&, const CFUUIDBytes&) = default;
};
#else
#include <CoreFoundation/CFUUID.h>
#endif
