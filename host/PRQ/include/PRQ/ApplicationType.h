#pragma once

#include <kiocore/Export.h>

namespace PRQ {

/// Which kind of application the host is; the numbers are the suite's own and are passed through.
/// 0 until the host says otherwise.
///
/// Threading: set at start, read from any thread.
KIO_EXPORT int GetApplicationType();
KIO_EXPORT void SetApplicationType(int inType);

} // namespace PRQ
