#include "UserInterfaceLoader.h"

#include "Interrupt.h"
#include "ModuleLoader.h"
#include "ThemePreference.h"

#include <kiocore/config/VersionInfo.h>
#include <kiocore/filesupport/NativePath.h>

namespace trhost {

std::unique_ptr<ui::IUserInterface> OpenUserInterface(const Context& inContext,
                                                      const DialogOptions& inOptions)
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static ui::IUserInterfaceModule& sModule = LoadModule<ui::IUserInterfaceModule>(
        ui::kUserInterfaceModuleFileName, ui::kUserInterfaceModuleFunctionName,
        ui::kUserInterfaceModuleVersion);

    const kiocore::UTF16String& preferences = inContext.folders.preferencesFile;
    ui::UserInterfaceSettings settings;
    settings.applicationName = kiocore::config::versioninfo::GetAppShortName();
    if (inOptions.attendance == ui::Attendance::kPerson || inOptions.attendance == ui::Attendance::kScript) {
        settings.windowSizesFile = kiocore::filesupport::ToNative(
            preferences.substr(0, preferences.find_last_of(u'/') + 1) + u"windows.ini");
    } // pictures and descriptions are of what everybody sees at first
    settings.isLight = (inOptions.theme.empty() ? GetThemePreference() : inOptions.theme) == "light";
    settings.scale = inOptions.scale;
    settings.attendance = inOptions.attendance;
    settings.file = inOptions.file;
    settings.interruptFile = GetInterruptFile();
    return sModule.Open(settings);
}

} // namespace trhost
