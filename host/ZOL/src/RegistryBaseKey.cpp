#include <ZOL/RegistryBaseKey.h>

#include <kiocore/config/Client.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>

namespace ZOL {

kiocore::UTF16String GetRegistryBaseKey()
{
    KIO_HOST_CALL("ZOL::GetRegistryBaseKey");
    kiocore::UTF16String client = kiocore::config::GetClientName();
    if (client.empty()) {
        client = u"Media Host"; // a path has no empty names
    }
    std::replace(client.begin(), client.end(), u'\\', u'_');
    return u"Software\\Halcyon\\" + client + u"\\" + kiocore::config::GetSuiteClientVersion_NumberOnly() +
           u"\\";
}

} // namespace ZOL
