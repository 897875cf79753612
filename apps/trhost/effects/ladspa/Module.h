#pragma once

#include "../EffectEngine.h"

#include <ladspa.h>

namespace trhost::effects::ladspa {

/// A module that runs on sound: gives IAudioEffectModule when asked.
TR::IFilterModuleRef MakeModule(IPluginCalls& inCalls, const LADSPA_Descriptor& inPlugin,
                                const EffectDescription& inDescription);

} // namespace trhost::effects::ladspa
