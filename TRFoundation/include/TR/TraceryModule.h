#pragma once

#include <kiocore/Export.h>
#include <kiocore/platform/PlatformTypes.h>

namespace TR {

/// The host's main window, null until set. Never retained or released here.
///
/// Threading: a plain store and load; the host sets it once, before others ask.
KIO_EXPORT void SetMainWindow(NSWindow* inWindow);
KIO_EXPORT NSWindow* GetMainWindow();

} // namespace TR
