#pragma once

#include "../../EffectEngine.h"
#include "AvfilterSupport.h"

namespace trhost::effects::avfilter {

/// Modules of filters that run, as trhost keeps them.
TR::IFilterModuleRef MakeFilterModule(const EffectDescription& inDescription, const AVFilter& inFilter,
                                      IPluginCalls& inCalls);
TR::ITransitionModuleRef MakeTransitionModule(const EffectDescription& inDescription,
                                              const AVFilter& inFilter, IPluginCalls& inCalls);

} // namespace trhost::effects::avfilter
