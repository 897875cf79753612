#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace kiocore::config {

/// What the host application says of itself at start, before it brings any library up.
///
/// Threading: setters before other threads run; getters from any thread.

/// Display name of the host application; "Media Host" until set.
KIO_EXPORT utility::UTF16String GetClientName();
KIO_EXPORT void SetClientName(const utility::UTF16String& inName);

/// Version of the suite as digits and dots only, as in "14.0" (the initial value) or "13.5.2".
KIO_EXPORT utility::UTF16String GetSuiteClientVersion_NumberOnly();
/// @throws kio_exception (kError_BadArgument) when it is anything but numbers joined by single dots.
KIO_EXPORT void SetSuiteClientVersion(const utility::UTF16String& inVersion);
/// Changes whenever the version is set, so that callers on hot paths can keep what they made of it.
KIO_EXPORT unsigned GetClientChangeCount();

} // namespace kiocore::config
