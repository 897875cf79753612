#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace TR {

/// The address of a page that leads to plug-ins for camera formats which need one: the localiser's, so that a
/// language may have its own. For hosts that tell it without a window, too.
///
/// Threading: any thread.
KIO_EXPORT kiocore::UTF16String GetPluginRedirectURL();

} // namespace TR
