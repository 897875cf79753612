#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Dictionary.h>

#include <exception>
#include <string_view>
#include <vector>

namespace kiocore::exceptions {

/// Whether a machine exception that somebody caught ends the process all the same, so that its crash handling
/// sees it. False until set.
///
/// Threading: any thread.
KIO_EXPORT bool GetShouldCrashOnMachineException() noexcept;
KIO_EXPORT void SetShouldCrashOnMachineException(bool inShouldCrash) noexcept;

/// Writes the dictionary to trace channel "Panic" at level 1 and to standard error in one line, and ends the
/// process with SIGABRT, so that crash handling runs on this thread.
[[noreturn]] KIO_EXPORT void Panic(const utility::Dictionary& inWhy);

/// Notes something that went wrong and was survived: on trace channel "Trail" at level 1, and among the last
/// kTrailLength entries, which a report may show.
///
/// Threading: any thread.
KIO_EXPORT void LeaveTrail(const utility::Dictionary& inEntry);
inline constexpr std::size_t kTrailLength = 64;
/// The newest last.
KIO_EXPORT std::vector<utility::Dictionary> GetTrail();

/// Notes an exception on trace channel "Exceptions" at level 1 with its type, text, code and place.
KIO_EXPORT void LogException(const std::exception& inException, std::string_view inWhere) noexcept;

} // namespace kiocore::exceptions
