#pragma once

#include "../../support/EffectHost.h"
#include "../../support/StateFolders.h"

#include <map>
#include <string>
#include <vector>

/// How effects read in answers, for people and for programs.
namespace trhost {

/// How often each effect crashed, by match name.
using EffectCrashes = std::map<std::string, int>;
EffectCrashes ReadEffectCrashes(const StateFolders& inFolders);
int CrashesOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes);

/// What people call it: "video filter".
kiocore::UTF16String KindText(effects::EffectKind inKind);

/// "YUV, 32BitColor".
kiocore::UTF16String TypeNames(const CatalogueEffect& inEffect);
/// "switched off, crashed 2 times, cannot run: ..."; empty for a good one.
kiocore::UTF16String StateOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes);
/// An effect on one line.
kiocore::UTF16String LineOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes);
JsonLine AsJson(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes);

/// The shortest decimal form.
kiocore::UTF16String NumberText(double inNumber);
std::vector<kiocore::UTF16String> TextsOf(const std::vector<std::string>& inTexts);

} // namespace trhost
