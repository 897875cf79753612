#pragma once

#include "PluginCalls.h"

#include <functional>
#include <string>

namespace trhost::effects {

/// Around calls of plug-ins in a process that they may ruin: an exception that leaves one comes out as
/// kio_exception (kEffectError_PluginFailed) naming the plug-in, and whoever wants to may look at memory
/// before and after.
///
/// Threading: any thread; the watch is set while no plug-in runs, and called on each thread that calls one.
class CatchingCalls final : public IPluginCalls {
public:
    void Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall) override;
    void Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
              const std::function<void()>& inCall) override;

    /// Runs each call from now on; an empty function runs them directly.
    using Watch = std::function<void(const std::function<void()>& inCall)>;
    void SetWatch(Watch inWatch) { mWatch = std::move(inWatch); }

private:
    void Run(const std::string& inMatchName, const std::function<void()>& inCall);

    Watch mWatch;
};

} // namespace trhost::effects
