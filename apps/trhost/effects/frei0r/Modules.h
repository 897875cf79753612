#pragma once

#include "../EffectEngine.h"
#include "PluginFile.h"

namespace trhost::effects::frei0r {

/// Modules that run pictures: both also give IVideoEffectModule when asked.
TR::IFilterModuleRef MakeFilterModule(IPluginCalls& inCalls, PluginUseRef inUse,
                                      const EffectDescription& inDescription);
TR::ITransitionModuleRef MakeTransitionModule(IPluginCalls& inCalls, PluginUseRef inUse,
                                              const EffectDescription& inDescription);

} // namespace trhost::effects::frei0r
