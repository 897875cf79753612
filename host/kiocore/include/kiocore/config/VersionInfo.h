#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace kiocore::config::versioninfo {

/// The application's name without maker and version, as file names begin with it: "MediaHost" until set.
///
/// Threading: set before other threads run.
KIO_EXPORT utility::UTF16String GetAppShortName();
KIO_EXPORT void SetAppShortName(const utility::UTF16String& inName);

} // namespace kiocore::config::versioninfo
