#include <TR/PluginRedirect.h>

#include <kiocore/config/Localizer.h>

namespace TR {

kiocore::UTF16String GetPluginRedirectURL()
{
    return kiocore::config::Localizer::GetText(
        "$$$/Halcyon/Tracery/TRFoundation/FindPluginsHere="
        "https://example.org/plugins/blackmagic-raw#{comment}Do not translate");
}

} // namespace TR
