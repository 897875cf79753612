#pragma once

#include <kiocore/Export.h>
#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Node.h>

namespace TR {

/// Why the application has to start again. Any other value is taken for kChangedInAnotherApp.
enum class PromptForRestartReason {
    kChangedInThisApp = 0,
    kChangedInAnotherApp = 1,
};

/// Asks whether to restart now, so that effects that were switched on or off are. Only asks.
/// @param inParent  takes no input meanwhile; may be empty.
/// @return whether the user wants it now. A box closed without an answer means no after changes in this
///     application, and yes after those in another, whose effects are out of step until then.
///
/// Threading: UI thread only.
KIO_EXPORT bool PromptForEffectPluginManagerRestart(PromptForRestartReason inReason,
                                                    const kioui::SupplierInterface* inSupplier,
                                                    const kioui::UI_NodePtr& inParent);

} // namespace TR
