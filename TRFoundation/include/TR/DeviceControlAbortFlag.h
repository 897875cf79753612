#pragma once

#include <kiocore/Export.h>

namespace TR {

/// Carries the user's request to abort a device-control operation from the user interface to the code
/// that polls it. False until set; holds the last value set.
///
/// Threading: a plain store and load without a lock.
KIO_EXPORT void SetDeviceControlAbortFlag(bool inAbort);
KIO_EXPORT bool GetDeviceControlAbortFlag();

} // namespace TR
