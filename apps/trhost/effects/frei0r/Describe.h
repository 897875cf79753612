#pragma once

#include "PluginFile.h"

#include <string>

namespace trhost::effects::frei0r {

EffectKind KindOf(const PluginInfo& inInfo);

/// Why a plug-in that can be loaded is not run; empty when it is.
std::string RefusalOf(const PluginInfo& inInfo, const Functions& inFunctions);

/// As IEffectEngine::Describe.
EffectDescription Describe(IPluginCalls& inCalls, const std::string& inFile);

} // namespace trhost::effects::frei0r
