// The user's preferences.
#include "Commands.h"

#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Quantities.h"
#include "../support/ThemePreference.h"

#include <BE/Backend.h>
#include <ZOL/PathUtils.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>

namespace trhost {

namespace {

using kiocore::filesupport::Durability;
using kiocore::utility::ToUTF16;

struct FolderPreference {
    const char* key;
    FolderGetter get;
    void (BE::IPreferences::*set)(const UTF16String&);
};

constexpr FolderPreference kFolders[] = {
    {"database-folder", &BE::IPreferences::GetMediaCacheDatabaseFolder,
     &BE::IPreferences::SetMediaCacheDatabaseFolder},
    {"cache-folder", &BE::IPreferences::GetMediaCacheFilesFolder,
     &BE::IPreferences::SetMediaCacheFilesFolder},
    {"metadata-folder", &BE::IPreferences::GetFirstMetadataCacheFolder,
     &BE::IPreferences::SetFirstMetadataCacheFolder},
    {"metadata-folder-2", &BE::IPreferences::GetSecondMetadataCacheFolder,
     &BE::IPreferences::SetSecondMetadataCacheFolder},
    {"peak-folder", &BE::IPreferences::GetPeakFilesFolder, &BE::IPreferences::SetPeakFilesFolder},
};
/// Switches whose default depends on more than these preferences.
struct SwitchPreference {
    const char* key;
    const BE::ImmutableString& stored;
};
const SwitchPreference kSwitches[] = {
    {"extended-dynamic-range", BE::kPrefsEnableExtendedDynamicRangeMonitoring},
    {"display-color-management", BE::kPrefsEnableDisplayColorManagement},
};

constexpr const char* kTheme = "theme";
constexpr const char* kSideBySide = "side-by-side";
constexpr const char* kDurability = "durability";
constexpr const char* kMemoryBudget = "memory-budget";
constexpr const char* kAllKeys =
    "database-folder, cache-folder, metadata-folder, metadata-folder-2, peak-folder, "
    "side-by-side, durability, memory-budget, extended-dynamic-range, display-color-management, theme";

const char* NameOf(Durability inDurability)
{
    switch (inDurability) {
    case Durability::kFull:
        return "full";
    case Durability::kFile:
        return "file";
    case Durability::kNone:
        return "none";
    }
    return "";
}

[[noreturn]] void ThrowBadValue(const PrefsSetOptions& inOptions, const char* inExpected)
{
    throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/BadPreference=prefs set @0: found @1, expected @2",
                                    {ToUTF16(inOptions.key), ToUTF16(inOptions.value), Text(inExpected)}));
}

UTF16String FolderFrom(const PrefsSetOptions& inOptions)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(inOptions.value, error);
    if (inOptions.value.empty() || error) {
        ThrowBadValue(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/Folder=a folder");
    }
    if (std::filesystem::exists(folder, error) && !std::filesystem::is_directory(folder, error)) {
        ThrowBadValue(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/FolderNotFile=a folder; this is a file");
    }
    return ZOL::PathUtils::ToNormalizedPath(kiocore::filesupport::FromNative(folder.native()));
}

bool BoolFrom(const PrefsSetOptions& inOptions, const char* inExpected)
{
    if (inOptions.value == "on" || inOptions.value == "true" || inOptions.value == "yes") {
        return true;
    }
    if (inOptions.value == "off" || inOptions.value == "false" || inOptions.value == "no") {
        return false;
    }
    ThrowBadValue(inOptions, inExpected);
}

void SetSwitch(const SwitchPreference& inSwitch, const PrefsSetOptions& inOptions)
{
    const auto properties = BE::GetBackend()->GetProperties();
    if (inOptions.value == "default") {
        properties->Remove(inSwitch.stored);
    } else {
        properties->SetBool(
            inSwitch.stored,
            BoolFrom(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/OnOffDefault=on, off or default#{words to "
                                "be typed: not to be translated, but for or}"));
    }
}

UTF16String ShownSwitch(const SwitchPreference& inSwitch)
{
    BE::SerializeableValue<bool> value;
    if (Preferences()->GetValue(inSwitch.stored, value) < 0) {
        return u"default";
    }
    return value.Get() ? u"on" : u"off";
}

void Set(const PrefsSetOptions& inOptions)
{
    for (const SwitchPreference& one : kSwitches) {
        if (inOptions.key == one.key) {
            SetSwitch(one, inOptions);
            return;
        }
    }
    for (const FolderPreference& folder : kFolders) {
        if (inOptions.key == folder.key) {
            (Preferences().Get()->*folder.set)(FolderFrom(inOptions));
            return;
        }
    }
    if (inOptions.key == kSideBySide) {
        BE::GetBackend()->GetProperties()->SetBool(
            BE::kPrefsMediaCacheFilesSideBySide,
            BoolFrom(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/OnOff=on or off#{words to be typed: not "
                                "to be translated, but for or}"));
    } else if (inOptions.key == kDurability) {
        for (Durability durability : {Durability::kFull, Durability::kFile, Durability::kNone}) {
            if (inOptions.value == NameOf(durability)) {
                Preferences()->SetDurability(durability);
                return;
            }
        }
        ThrowBadValue(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/Durability=full, file or none#{words to "
                                 "be typed: not to be translated, but for or}");
    } else if (inOptions.key == kTheme) {
        if (!SetThemePreference(inOptions.value)) {
            ThrowBadValue(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/Theme=dark or light#{words to be "
                                     "typed: not to be translated, but for or}");
        }
    } else if (inOptions.key == kMemoryBudget) {
        const auto bytes = ParseSize(inOptions.value);
        if (!bytes) {
            ThrowBadValue(inOptions, "$$$/Halcyon/TrHost/Prefs/Expected/Size=a size such as 64M");
        }
        Preferences()->SetRecordMemoryBudget(*bytes);
    } else {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/NoPreference=there is no preference @0; expected one of @1",
                           {ToUTF16(inOptions.key), ToUTF16(kAllKeys)}));
    }
}

void ShowOne(Context& ioContext, const char* inKey, const UTF16String& inValue)
{
    ioContext.output.Result(ToUTF16(inKey) + u" = " + inValue,
                            JsonLine().Add("key", inKey).Add("value", inValue));
}

} // namespace

int PrefsShow(Context& ioContext)
{
    for (const FolderPreference& folder : kFolders) {
        ShowOne(ioContext, folder.key, PreferredFolder(folder.get));
    }
    const bool sideBySide =
        BE::GetBackend()->GetProperties()->GetBool(BE::kPrefsMediaCacheFilesSideBySide, false);
    ShowOne(ioContext, kSideBySide, sideBySide ? u"on" : u"off");
    ShowOne(ioContext, kDurability, ToUTF16(NameOf(Preferences()->GetDurability())));
    ShowOne(ioContext, kMemoryBudget, kiocore::utility::DecimalText(Preferences()->GetRecordMemoryBudget()));
    for (const SwitchPreference& one : kSwitches) {
        ShowOne(ioContext, one.key, ShownSwitch(one));
    }
    ShowOne(ioContext, kTheme, ToUTF16(GetThemePreference()));
    return kExit_Done;
}

int PrefsSet(Context& ioContext, const PrefsSetOptions& inOptions)
{
    Set(inOptions);
    MakeFolder(ZOL::PathUtils::GetFullDirectoryPart(ioContext.folders.preferencesFile));
    if (Preferences()->Save() < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/PreferencesNotSaved=the preferences file @0 could not be "
                           "saved",
                           {ioContext.folders.preferencesFile}));
    }
    return kExit_Done;
}

} // namespace trhost
