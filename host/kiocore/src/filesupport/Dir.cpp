#include <kiocore/filesupport/File.h>

#include "platform/ConfigFolder.h"

#include <kiocore/config/VersionInfo.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace kiocore::filesupport {
namespace {

struct Preferences {
    std::mutex lock;             // guards folder
    utility::UTF16String folder; // empty: the default
};

// Leaked on purpose: asked until the very end of the process.
Preferences& ThePreferences()
{
    static Preferences* const preferences = new Preferences;
    return *preferences;
}

utility::UTF16String DefaultFolder()
{
    const std::string config = platform::GetConfigFolder();
    if (config.empty()) {
        return {};
    }
    utility::UTF16String name = config::versioninfo::GetAppShortName();
    std::replace(name.begin(), name.end(), u'/', u'_');
    if (name.find_first_not_of(u'.') == utility::UTF16String::npos) {
        name = u"MediaHost"; // no name, or one that means a folder elsewhere
    }
    return FromNative(config) + u'/' + name;
}

} // namespace

Dir::Dir(utility::UTF16String inPath) : mPath(std::move(inPath))
{
    if (!mPath.empty() && mPath.back() != u'/') {
        mPath += u'/';
    }
}

Dir Dir::PrefDir()
{
    KIO_HOST_CALL("kiocore::filesupport::Dir::PrefDir");
    {
        Preferences& preferences = ThePreferences();
        std::lock_guard lock(preferences.lock);
        if (!preferences.folder.empty()) {
            return Dir(preferences.folder);
        }
    }
    return Dir(DefaultFolder());
}

void Dir::SetPrefDir(const utility::UTF16String& inPath)
{
    Preferences& preferences = ThePreferences();
    std::lock_guard lock(preferences.lock);
    preferences.folder = inPath;
}

} // namespace kiocore::filesupport
