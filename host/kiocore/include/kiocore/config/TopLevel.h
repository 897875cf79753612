#pragma once

#include <kiocore/Export.h>

#include <exception>
#include <functional>

namespace kiocore::config {

/// Runs a function that a failure of must not go beyond: an exception is reported and stays here.
/// @param inWhere  what runs, as in "Restoring the columns"; begins the report.
/// @return whether it ran to its end.
///
/// Threading: any thread.
KIO_EXPORT bool ExecuteTopLevelFunction(const char* inWhere, const std::function<void()>& inFunction);

} // namespace kiocore::config
