#include "HostSession.h"

#include "CacheFileKinds.h"
#include "CopyHandler.h"
#include "DocumentIdentity.h"
#include "Failure.h"
#include "ThemePreference.h"

#include <PRQ/ApplicationType.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <TR/TRDisplaySettings.h>
#include <TR/TRFoundation.h>
#include <ZOL/DirectoryRegistry.h>
#include <ZOL/File.h>
#include <kiocore/config/Client.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/FileUtils.h>

#include <exception>

namespace trhost {

using kiocore::utility::ToUTF16;

HostSession::HostSession(const GlobalOptions& inOptions, const StateFolders& inFolders)
    : mMainThread(kiocore::threads::RegisterMainThread())
{
    try {
        StartUp(inOptions, inFolders);
    } catch (...) {
        Close();
        throw;
    }
}

HostSession::~HostSession()
{
    Close();
}

void HostSession::StartUp(const GlobalOptions& inOptions, const StateFolders& inFolders)
{
    kiocore::config::SetClientName(ToUTF16(inOptions.applicationName));
    try {
        kiocore::config::SetSuiteClientVersion(ToUTF16(inOptions.suiteVersion));
    } catch (const kiocore::kio_exception&) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/BadSuiteVersion=--suite-version @0: expected digits and "
                           "single dots, as in 14.0",
                           {ToUTF16(inOptions.suiteVersion)}));
    }
    PRQ::SetApplicationType(inOptions.applicationType);

    if (Preferences()->Load(inFolders.preferencesFile) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/BadPreferences=the preferences file @0 cannot be read; "
                           "repair it or move it away",
                           {inFolders.preferencesFile}));
    }
    Preferences()->SetDefaultsBelow(inFolders.cacheRoot);
    ZOL::DirectoryRegistry::RegisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments,
                                              inFolders.sharedDocuments);

    TR::TRFoundation::Initialize();
    mLibraryIsUp = true;
    ApplyThemePreference();
    TR::RegisterTRDisplaySettingsClass();
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(&ResolveDocument);
    for (const char16_t* key : {kKey_ConformedAudio, kKey_PeakFile, kKey_VideoIndex, kKey_MediaSummary}) {
        TR::MediaAcceleratorDatabase::RegisterAcceleratorHandler(key, CreateCopyHandler());
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
