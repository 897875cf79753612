#include <kiocore/config/VersionInfo.h>

#include <kiocore/debug/Trace.h>

#include <mutex>

namespace kiocore::config::versioninfo {
namespace {

struct ShortName {
    std::mutex lock; // guards name
    utility::UTF16String name = u"MediaHost";
};

// Leaked on purpose: asked until the very end of the process.
ShortName& TheShortName()
{
    static ShortName* const shortName = new ShortName;
    return *shortName;
}

} // namespace

utility::UTF16String GetAppShortName()
{
    KIO_HOST_CALL("kiocore::config::versioninfo::GetAppShortName");
    ShortName& shortName = TheShortName();
    std::lock_guard lock(shortName.lock);
    return shortName.name;
}

void SetAppShortName(const utility::UTF16String& inName)
{
    ShortName& shortName = TheShortName();
    std::lock_guard lock(shortName.lock);
    shortName.name = inName;
}

} // namespace kiocore::config::versioninfo
