#include <kiocore/config/Client.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <atomic>
#include <mutex>

namespace kiocore::config {
namespace {

struct Client {
    std::mutex lock; // guards the members below
    utility::UTF16String name = u"Media Host";
    utility::UTF16String version = u"14.0";
};

// Leaked on purpose: asked until the very end of the process.
Client& TheClient()
{
    static Client* const client = new Client;
    return *client;
}

std::atomic<unsigned> sChangeCount{1};

bool IsDigit(char16_t inUnit)
{
    return inUnit >= u'0' && inUnit <= u'9';
}

bool IsVersion(utility::UTF16View inText)
{
    bool afterDigit = false;
    for (char16_t unit : inText) {
        if (!IsDigit(unit) && !(unit == u'.' && afterDigit)) {
            return false;
        }
        afterDigit = IsDigit(unit);
    }
    return afterDigit;
}

} // namespace

utility::UTF16String GetClientName()
{
    KIO_HOST_CALL("kiocore::config::GetClientName");
    Client& client = TheClient();
    std::lock_guard lock(client.lock);
    return client.name;
}

void SetClientName(const utility::UTF16String& inName)
{
    KIO_HOST_CALL("kiocore::config::SetClientName", inName);
    Client& client = TheClient();
    std::lock_guard lock(client.lock);
    client.name = inName;
}

utility::UTF16String GetSuiteClientVersion_NumberOnly()
{
    KIO_HOST_CALL("kiocore::config::GetSuiteClientVersion_NumberOnly");
    Client& client = TheClient();
    std::lock_guard lock(client.lock);
    return client.version;
}

void SetSuiteClientVersion(const utility::UTF16String& inVersion)
{
    KIO_HOST_CALL("kiocore::config::SetSuiteClientVersion", inVersion);
    if (!IsVersion(inVersion)) {
        throw kio_exception("\"" + utility::ToUTF8(inVersion) +
                                "\" is no version; expected numbers joined by single dots, as in 14.0",
                            kError_BadArgument);
    }
    {
        Client& client = TheClient();
        std::lock_guard lock(client.lock);
        client.version = inVersion;
    }
    // After the version, so that whoever sees the new count reads the new version.
    sChangeCount.fetch_add(1, std::memory_order_release);
}

unsigned GetClientChangeCount()
{
    return sChangeCount.load(std::memory_order_acquire);
}

} // namespace kiocore::config
