#pragma once

#include "../EffectDescription.h"

#include <ladspa.h>

#include <string>

namespace trhost::effects::ladspa {

/// Why a plug-in that can be loaded is not run; empty when it is.
std::string RefusalOf(const LADSPA_Descriptor& inPlugin);

EffectDescription Describe(const LADSPA_Descriptor& inPlugin, const std::string& inFile);

} // namespace trhost::effects::ladspa
