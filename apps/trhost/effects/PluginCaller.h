#pragma once

#include "EffectDescription.h"
#include "PluginCalls.h"

#include <TR/PluginModules.h>

#include <functional>
#include <string_view>

namespace trhost::effects {

/// What a plug-in's module says of itself, from its description.
TR::EffectPluginMetadata MetadataOf(const EffectDescription& inDescription);
kiocore::Guid MediaTypeOf(EffectKind inKind);

/// Calls one plug-in, named by a module of its. Keeps that module.
///
/// Threading: any thread; as a value.
class PluginCaller {
public:
    PluginCaller(IPluginCalls& inCalls, TR::IFilterModuleRef inModule)
        : mCalls(&inCalls), mFilter(std::move(inModule))
    {}
    PluginCaller(IPluginCalls& inCalls, kiocore::ImmutableString inMatchName,
                 TR::ITransitionModuleRef inModule)
        : mCalls(&inCalls), mMatchName(std::move(inMatchName)), mTransition(std::move(inModule))
    {}
    /// For calls while there is no module yet, or not any more: names the plug-in by a module that can do
    /// nothing but tell its name.
    PluginCaller(IPluginCalls& inCalls, const EffectDescription& inDescription);

    template <typename Function>
    void operator()(Function&& inFunction) const
    {
        if (mFilter) {
            CallPlugin(*mCalls, mFilter, inFunction);
        } else {
            CallPlugin(*mCalls, mMatchName, mTransition, inFunction);
        }
    }
    /// For destructors: what leaves the call goes to trace channel "Effects" and no further.
    void Finally(std::string_view inWhat, const std::function<void()>& inFunction) const noexcept;

private:
    IPluginCalls* mCalls;
    TR::IFilterModuleRef mFilter;
    kiocore::ImmutableString mMatchName;
    TR::ITransitionModuleRef mTransition;
};

} // namespace trhost::effects
