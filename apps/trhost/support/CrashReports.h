#pragma once

#include "Output.h"
#include "StateFolders.h"

#include <effects/run/CrashHistory.h>

namespace trhost {

/// Which plug-ins took trhost down, now or ever.
effects::CrashHistory OpenCrashHistory(const StateFolders& inFolders, Output& ioOutput);

/// Takes over what earlier runs left about their end: the library's crash file, as a crash, and the black
/// boxes of processes that were killed, as suspects. Then says one line for each plug-in that the user has
/// not been shown in a crash report yet. Failures are told and end nothing: whoever starts the program wants
/// something else.
///
/// Threading: main thread, while the library is up.
void TakeOverCrashReports(const StateFolders& inFolders, Output& ioOutput);

} // namespace trhost
