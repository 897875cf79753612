#include "HostSession.h"

#include "CacheFileKinds.h"
#include "CopyHandler.h"
#include "CrashReports.h"
#include "DisabledEffects.h"
#include "DocumentIdentity.h"
#include "Failure.h"
#include "PluginWatch.h"
#include "ThemePreference.h"

#include <PRQ/ApplicationType.h>
#include <TR/EffectEnablement.h>
#include <TR/EffectPluginManagerCrashDetection.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <TR/TRDisplaySettings.h>
#include <TR/TRFoundation.h>
#include <ZOL/DirectoryRegistry.h>
#include <ZOL/File.h>
#include <effects/run/BlackBox.h>
#include <effects/run/Watchdog.h>
#include <kioappsupport/Feature.h>
#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/debug/DebugDatabase.h>
#include <kiocore/exceptions/Trail.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/FileUtils.h>
#include <kiocore/utility/RegistryKey.h>
#include <kiocore/utility/UsageLogger.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace trhost {

using kiocore::utility::ToUTF16;

HostSession::HostSession(const GlobalOptions& inOptions, const StateFolders& inFolders, Output& ioOutput)
    : mMainThread(kiocore::threads::RegisterMainThread())
{
    try {
        StartUp(inOptions, inFolders, ioOutput);
    } catch (...) {
        Close();
        throw;
    }
}

HostSession::~HostSession()
{
    Close();
}

namespace {

void NameTheClient(const GlobalOptions& inOptions)
{
    kiocore::config::SetClientName(ToUTF16(inOptions.applicationName));
    kiocore::config::versioninfo::SetAppShortName(ToUTF16(inOptions.applicationName));
    try {
        kiocore::config::SetSuiteClientVersion(ToUTF16(inOptions.suiteVersion));
    } catch (const kiocore::kio_exception&) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/BadSuiteVersion=--suite-version @0: expected digits and "
                           "single dots, as in 14.0",
                           {ToUTF16(inOptions.suiteVersion)}));
    }
    PRQ::SetApplicationType(inOptions.applicationType);
    kiocore::utility::UsageLogger::Set(std::make_shared<kiocore::utility::UsageLogger>());
}

void LoadPreferences(const StateFolders& inFolders)
{
    if (Preferences()->Load(inFolders.preferencesFile) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/BadPreferences=the preferences file @0 cannot be read; "
                           "repair it or move it away",
                           {inFolders.preferencesFile}));
    }
    Preferences()->SetDefaultsBelow(inFolders.cacheRoot);
    const std::size_t slash = inFolders.preferencesFile.find_last_of(u'/');
    kiocore::filesupport::Dir::SetPrefDir(inFolders.preferencesFile.substr(0, slash + 1));
    kiocore::utility::SetRegistryFile(inFolders.registryFile);
    ZOL::DirectoryRegistry::RegisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments,
                                              inFolders.sharedDocuments);
}

/// The two halves of "NAME=VALUE".
std::pair<std::string, std::string> Halves(const std::string& inText, const char* inOption)
{
    const std::size_t equals = inText.find('=');
    if (equals == 0 || equals == std::string::npos) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/BadPair=@0 @1: expected a name, \"=\" and a value",
                           {ToUTF16(inOption), ToUTF16(inText)}));
    }
    return {inText.substr(0, equals), inText.substr(equals + 1)};
}

void SwitchFeatures(const GlobalOptions& inOptions)
{
    using kioappsupport::feature::SetFeatureEnabled;
    // Ours: the library leaves it off for hosts that have no crash handling.
    SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, !inOptions.safeMode);
    for (const std::string& feature : inOptions.features) {
        const auto [name, state] = Halves(feature, "--feature");
        if (state != "on" && state != "off") {
            throw Failure(kExit_Usage,
                          Text("$$$/Halcyon/TrHost/BadFeature=--feature @0: found @1, expected on or "
                               "off",
                               {ToUTF16(name), ToUTF16(state)}));
        }
        const auto features = kioappsupport::feature::GetFeatures();
        if (std::none_of(features.begin(), features.end(),
                         [&name = name](const auto& inFeature) { return inFeature.name == name; })) {
            throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/NoSuchFeature=--feature @0: there is no such "
                                            "feature",
                                            {ToUTF16(name)}));
        }
        SetFeatureEnabled(name, state == "on");
    }
}

void SetDebugValues(const GlobalOptions& inOptions)
{
    using kiocore::debug::DebugDatabase;
    for (const std::string& value : inOptions.debugValues) {
        const auto [key, text] = Halves(value, "--debug-db");
        DebugDatabase::SetFromText(key, text);
    }
    kiocore::exceptions::SetShouldCrashOnMachineException(
        DebugDatabase::GetBool("Host.CrashOnMachineException", false));
}

/// In safe mode nothing is written, so nobody asks what crashed either.
void WatchForCrashes(const StateFolders& inFolders)
{
    using kiocore::debug::AddCrashCallback;
    kiocore::debug::InstallCrashHandling();
    AddCrashCallback(&TR::WriteCrashedEffectPluginFile);
    if (kioappsupport::feature::IsFeatureEnabled(TR::kPluginManagerCrashDetectionFeature)) {
        // Reported already, so the black box makes nobody a suspect.
        AddCrashCallback(&effects::BlackBox::MarkCrashReported);
    }
    const std::int64_t seconds = kiocore::debug::DebugDatabase::GetInteger(
        "Host.WatchdogSeconds", effects::Watchdog::kDefaultLimit.count());
    StartPluginWatch(inFolders.crashFolder, std::chrono::seconds(seconds));
}

} // namespace

void HostSession::StartUp(const GlobalOptions& inOptions, const StateFolders& inFolders, Output& ioOutput)
{
    NameTheClient(inOptions);
    LoadPreferences(inFolders);
    SwitchFeatures(inOptions);
    SetDebugValues(inOptions);
    if (!inOptions.safeMode) {
        WatchForCrashes(inFolders);
    }

    TR::TRFoundation::Initialize();
    mLibraryIsUp = true;
    ApplyThemePreference();
    InstallEffectFilter(inOptions.safeMode);
    TR::RegisterTRDisplaySettingsClass();
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(&ResolveDocument);
    for (const char16_t* key : {kKey_ConformedAudio, kKey_PeakFile, kKey_VideoIndex, kKey_MediaSummary}) {
        TR::MediaAcceleratorDatabase::RegisterAcceleratorHandler(key, CreateCopyHandler());
    }
    if (!inOptions.safeMode) {
        TakeOverCrashReports(inFolders, ioOutput);
    }
}

void HostSession::Close() noexcept
{
    try {
        if (mLibraryIsUp) {
            mLibraryIsUp = false;
            TR::TRFoundation::Shutdown();
            TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(nullptr);
        }
    } catch (const std::exception&) {
        // The command's own outcome is what the user asked for; the library has counted itself down.
    }
    TR::SetGlobalEffectFilter({});
    StopPluginWatch();
    kiocore::debug::RemoveCrashCallback(&effects::BlackBox::MarkCrashReported);
    kiocore::threads::UnregisterMainThread();
}

kiocore::InterfaceRef<BE::IPreferences> Preferences()
{
    return BE::GetBackend()->GetPreferences();
}

kiocore::UTF16String PreferredFolder(FolderGetter inGetter)
{
    kiocore::UTF16String folder;
    if ((Preferences().Get()->*inGetter)(folder) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoFolder=the preferences name no folder for the media "
                           "cache; see trhost prefs show"));
    }
    return kiocore::utility::FileUtils::AddTrailingSlash(folder);
}

kiocore::UTF16String PeakFilesFolder()
{
    return PreferredFolder(&BE::IPreferences::GetPeakFilesFolder) + u"Peak Files/";
}

void MakeFolder(const kiocore::UTF16String& inFolder)
{
    if (ZOL::Directory::CreateOnDisk(inFolder, true) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoMakeFolder=the folder @0 cannot be made", {inFolder}));
    }
}

} // namespace trhost
