#include <TR/EffectPluginManagerRestart.h>

#include <kiocore/config/Localizer.h>
#include <kiocore/config/VersionInfo.h>
#include <kioui/dialogs/MessageBox.h>

namespace TR {

using kiocore::UTF16String;
using kiocore::config::Localizer;

namespace {

constexpr int kPlain = 0;
constexpr int kFirstButton = 1;

bool Ask(const char* inTitle, const char* inMessage, const char* inFirst, const char* inSecond,
         const kioui::SupplierInterface* inSupplier, const kioui::UI_NodePtr& inParent, bool inFirstMeans)
{
    const UTF16String message =
        Localizer::Format(Localizer::GetText(inMessage), {kiocore::config::versioninfo::GetAppShortName()});
    const int answer = kioui::dialogs::messagebox::LatticeDialog(
        inSupplier, Localizer::GetText(inTitle), message, inParent, kPlain, Localizer::GetText(inFirst),
        Localizer::GetText(inSecond), {});
    return (answer == kFirstButton) == inFirstMeans;
}

} // namespace

bool PromptForEffectPluginManagerRestart(PromptForRestartReason inReason,
                                         const kioui::SupplierInterface* inSupplier,
                                         const kioui::UI_NodePtr& inParent)
{
    if (inReason == PromptForRestartReason::kChangedInThisApp) {
        return Ask("$$$/Halcyon/PluginManager/RestartDialog/ChangedInThisAppMessage/Title="
                   "Restart to apply changes",
                   "$$$/Halcyon/PluginManager/RestartDialog/ChangedInThisAppMessage="
                   "You will need to restart @0 for the changes to take place.",
                   "$$$/Halcyon/PluginManager/RestartDialog/RestartNow=Restart now",
                   "$$$/Halcyon/PluginManager/RestartDialog/Cancel=Cancel", inSupplier, inParent, true);
    }
    // Effects are out of step with those of the other application until the restart: anything but a clear
    // "later" means now.
    return Ask(
        "$$$/Halcyon/PluginManager/RestartDialog/ChangedInAnotherAppMessage/Title="
        "Effects modified in another app",
        "$$$/Halcyon/PluginManager/RestartDialog/ChangedInAnotherAppMessage="
        "You have enabled or disabled effects in another app. Please restart @0 to sync these changes.",
        "$$$/Halcyon/PluginManager/RestartDialog/RestartLater=Restart later",
        "$$$/Halcyon/PluginManager/RestartDialog/RestartNow=Restart now", inSupplier, inParent, false);
}

} // namespace TR
