#pragma once

#include <kiocore/utility/UTF16String.h>

#include <chrono>
#include <string_view>

namespace trhost {

/// Watches over plug-ins beside the library's crash detection: a black box says what ran should the process
/// be killed, a watchdog tells on standard error of a plug-in that does not come back. Both come into being
/// with the first call of a plug-in, as most commands never call one.
///
/// Threading: StartPluginWatch and StopPluginWatch on the main thread while no plug-in runs; calls on any.

/// @param inCrashFolder  where black boxes lie.
/// @param inLimit        after which a call is told of.
void StartPluginWatch(const kiocore::UTF16String& inCrashFolder, std::chrono::seconds inLimit);
void StopPluginWatch() noexcept;

/// One call into a plug-in; does nothing while no watch is kept.
class ScWatchedCall {
public:
    explicit ScWatchedCall(std::string_view inMatchName) noexcept;
    ~ScWatchedCall();
    ScWatchedCall(const ScWatchedCall&) = delete;
    ScWatchedCall& operator=(const ScWatchedCall&) = delete;

private:
    const bool mIsWatched;
};

} // namespace trhost
