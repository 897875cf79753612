#pragma once

#include <kiocore/Export.h>

#include <memory>
#include <string>
#include <string_view>

namespace kiocore::utility {

/// Notes what the application is used for, under an identifier of the run, so that reports of one run can be
/// told to belong together. Notes go to trace channel "Usage" at level 1 and nowhere else: nothing leaves the
/// machine.
///
/// Threading: any thread.
class KIO_EXPORT UsageLogger {
public:
    /// With a new random session identifier.
    UsageLogger();
    explicit UsageLogger(std::string inSessionID);

    /// The process's logger; empty until the host has set one.
    static std::shared_ptr<UsageLogger> Get();
    /// An empty one takes it away.
    static void Set(std::shared_ptr<UsageLogger> inLogger);

    const std::string& GetSessionID() const noexcept { return mSessionID; }
    void Log(std::string_view inEvent);

private:
    const std::string mSessionID;
};

} // namespace kiocore::utility
