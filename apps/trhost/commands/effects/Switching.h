#pragma once

#include "../../support/Context.h"

#include <string>
#include <vector>

namespace trhost {

/// @throws Failure (kExit_Usage): in safe mode nothing is changed.
void RefuseInSafeMode(const Context& inContext);
/// Switches effects on or off for later runs, and says so of each.
/// @throws Failure (kExit_Failed) when that cannot be kept.
void SwitchEffects(Context& ioContext, const std::vector<std::string>& inMatchNames, bool inEnabled);

} // namespace trhost
