#include "StateFolders.h"

#include "Failure.h"

#include <ZOL/PathUtils.h>
#include <kiocore/filesupport/NativePath.h>

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace trhost {

namespace {

std::string HomeFolder()
{
    if (const char* home = std::getenv("HOME"); home && home[0] == '/') {
        return home;
    }
    if (const passwd* user = getpwuid(getuid()); user && user->pw_dir && user->pw_dir[0] == '/') {
        return user->pw_dir;
    }
    throw Failure(kExit_Failed,
                  Text("$$$/Halcyon/TrHost/NoHome=there is no home folder to keep state in: HOME is not "
                       "set to an absolute path; set it, or give --state DIR"));
}

/// The base directory rules: a variable that is unset, empty or relative counts as unset.
std::string BaseFolder(const char* inVariable, const char* inBelowHome)
{
    if (const char* folder = std::getenv(inVariable); folder && folder[0] == '/') {
        return folder;
    }
    return HomeFolder() + inBelowHome;
}

} // namespace

StateFolders FindStateFolders(const std::string& inStateFolder)
{
    const auto toPath = [](const std::string& inNative) {
        return ZOL::PathUtils::ToNormalizedPath(kiocore::filesupport::FromNative(inNative));
    };
    if (inStateFolder.empty()) {
        const std::string configuration = BaseFolder("XDG_CONFIG_HOME", "/.config") + "/trhost";
        return {toPath(configuration + "/preferences.xml"),
                toPath(BaseFolder("XDG_CACHE_HOME", "/.cache") + "/trhost"),
                toPath(BaseFolder("XDG_DATA_HOME", "/.local/share") + "/trhost/Shared Documents"),
                toPath(configuration + "/registry.json"),
                toPath(BaseFolder("XDG_STATE_HOME", "/.local/state") + "/trhost/crashes/")};
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(inStateFolder, error);
    const std::string root = error ? inStateFolder : absolute.native();
    return {toPath(root + "/preferences.xml"), toPath(root), toPath(root + "/Shared Documents"),
            toPath(root + "/registry.json"), toPath(root + "/crashes/")};
}

} // namespace trhost
