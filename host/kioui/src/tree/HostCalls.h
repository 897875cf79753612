#pragma once

// Calls to functions that the tree was given. Included by sources of kioui only.

#include <kiocore/threads/AsyncExecutor.h>

namespace kioui::controls {

/// Reports an exception, since it must not go through Qt.
/// @param inWhat  names the function, for the report.
template <typename Function>
void CallHost(const char* inWhat, const Function& inFunction)
{
    try {
        inFunction();
    } catch (...) {
        kiocore::threads::ReportException(inWhat);
    }
}

} // namespace kioui::controls
