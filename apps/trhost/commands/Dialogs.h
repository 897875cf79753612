#pragma once

#include "../support/UserInterfaceLoader.h"
#include "EffectOptions.h"

/// Commands that show windows; see Commands.h.
namespace trhost {

int EffectsManage(Context& ioContext, const EffectSearch& inSearch, const DialogOptions& inOptions);

/// Shows one of the dialogs for whoever attends to it.
struct ShowDialogOptions {
    std::string name; ///< "effects-manage", "restart-prompt", "progress" or "redirect"
    EffectSearch search;
    bool changedInAnotherApp = false; ///< wording of the restart prompt
    DialogOptions dialog;
};
int ShowDialog(Context& ioContext, const ShowDialogOptions& inOptions);

/// OpenUserInterface, where a script that is wrong is wrong usage.
std::unique_ptr<ui::IUserInterface> OpenUserInterfaceForCommand(const Context& inContext,
                                                                const DialogOptions& inOptions);
/// Prints what attending to the dialogs came to.
/// @throws Failure (kExit_Usage) for a script that is wrong, kExit_Negative for an expectation that was not
/// met.
void FinishAttending(Context& ioContext, ui::IUserInterface& inUserInterface);

} // namespace trhost
