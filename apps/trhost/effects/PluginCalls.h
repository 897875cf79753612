#pragma once

#include <TR/PluginModules.h>

#include <functional>
#include <utility>

namespace trhost::effects {

/// What stands around every call into a plug-in, handed down to the engines: in trhost the sentinel that
/// names the plug-in should the process die, the black box and the watchdog; in a child that tries plug-ins
/// out, nothing.
///
/// Threading: any thread; calls nest.
class IPluginCalls {
public:
    virtual ~IPluginCalls() = default;
    /// Runs inCall. An exception that leaves it is caught while the plug-in is still named, and comes out as
    /// Failure naming the plug-in, once it is not.
    virtual void Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall) = 0;
    virtual void Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
                      const std::function<void()>& inCall) = 0;
};

/// The one way into a plug-in.
/// @param inModule  IFilterModuleRef.
template <typename Function>
void CallPlugin(IPluginCalls& inCalls, const TR::IFilterModuleRef& inModule, Function&& inFunction)
{
    inCalls.Call(inModule, std::ref(inFunction));
}
template <typename Function>
void CallPlugin(IPluginCalls& inCalls, const kiocore::ImmutableString& inMatchName,
                const TR::ITransitionModuleRef& inModule, Function&& inFunction)
{
    inCalls.Call(inMatchName, inModule, std::ref(inFunction));
}

} // namespace trhost::effects
