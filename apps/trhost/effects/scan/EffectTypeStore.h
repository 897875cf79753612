#pragma once

#include "EffectDescription.h"

#include <TR/EffectType.h>

#include <string>
#include <utility>
#include <vector>

namespace trhost::effects {

using EffectTypes = std::vector<kiocore::InterfaceRef<TR::IEffectType>>;

/// The built-in types that a plug-in has by its description: accelerated, and those of its formats.
EffectTypes EffectTypesOf(const EffectDescription& inDescription);

/// Keeps the types of plug-ins, by match name, in the registry and in one go. What was kept of them before is
/// deleted first: a list that has become shorter would otherwise be read with the end of the longer one.
///
/// Threading: any thread.
void KeepEffectTypes(const std::vector<std::pair<std::string, EffectTypes>>& inTypes);
/// @return false, outTypes empty, when nothing was kept; leaves no trace of the question then.
bool ReadEffectTypes(const std::string& inMatchName, EffectTypes& outTypes);

} // namespace trhost::effects
