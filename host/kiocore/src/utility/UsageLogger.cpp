#include <kiocore/utility/UsageLogger.h>

#include <kiocore/debug/Trace.h>
#include <kiocore/utility/Guid.h>

#include <mutex>
#include <utility>

namespace kiocore::utility {
namespace {

struct Current {
    std::mutex lock; // guards logger
    std::shared_ptr<UsageLogger> logger;
};

// Leaked on purpose: asked until the very end of the process.
Current& TheCurrent()
{
    static Current* const current = new Current;
    return *current;
}

} // namespace

UsageLogger::UsageLogger() : UsageLogger(Guid::CreateUnique().AsUTF8()) {}
UsageLogger::UsageLogger(std::string inSessionID) : mSessionID(std::move(inSessionID)) {}

std::shared_ptr<UsageLogger> UsageLogger::Get()
{
    KIO_HOST_CALL("kiocore::utility::UsageLogger::Get");
    Current& current = TheCurrent();
    std::lock_guard lock(current.lock);
    return current.logger;
}

void UsageLogger::Set(std::shared_ptr<UsageLogger> inLogger)
{
    Current& current = TheCurrent();
    std::lock_guard lock(current.lock);
    current.logger.swap(inLogger); // the previous one is let go unlocked, with the argument
}

void UsageLogger::Log(std::string_view inEvent)
{
    KIO_HOST_CALL("kiocore::utility::UsageLogger::Log", inEvent);
    debug::Trace(1, "Usage", mSessionID + ' ' + std::string(inEvent));
}

} // namespace kiocore::utility
