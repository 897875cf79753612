#pragma once

#include <ostream>
#include <span>
#include <string_view>

/// Ways for a process to end, for programs that are started to end so. Compiled without a sanitizer's
/// instrumentation, whose allocator is in the program all the same.
namespace support {

struct CrashCase {
    const char* name;
    void (*run)();
    int signal;      ///< that the process must end with; 0: it exits
    int exitStatus;  ///< if so
    bool isReported; ///< whether crash callbacks are due

    friend std::ostream& operator<<(std::ostream& ioStream, const CrashCase& inCase)
    {
        return ioStream << inCase.name;
    }
};

/// Those that this build can show.
std::span<const CrashCase> CrashCases();
/// Ends the process with status 2 when there is none of that name. Returns when the case does.
void RunCrashCase(std::string_view inName);

} // namespace support
