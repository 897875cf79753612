#pragma once

#include <set>
#include <string>
#include <vector>

namespace trhost {

/// Which effects the user has switched off, by match name: kept in the registry, so that programs which run
/// at once lose nothing of each other.
///
/// Threading: any thread, but InstallEffectFilter: the main thread, before effects run.
std::set<std::string> ReadDisabledEffects();
/// In one change.
/// @throws Failure (kExit_Failed) when the registry cannot be written.
void SetEffectsEnabled(const std::vector<std::string>& inMatchNames, bool inEnabled);

/// Lets the library's effect filter refuse what is switched off as of now; in safe mode all effects that are
/// not our own, which are all plug-ins.
void InstallEffectFilter(bool inSafeMode);

} // namespace trhost
