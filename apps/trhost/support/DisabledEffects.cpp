#include "DisabledEffects.h"

#include "Failure.h"

#include <TR/EffectEnablement.h>
#include <ZOL/RegistryBaseKey.h>
#include <kiocore/utility/RegistryKey.h>

#include <memory>

namespace trhost {

namespace {

using kiocore::utility::RegistryKey;

/// Each effect that is switched off is a value of this name here.
std::string DisabledEffectsPath()
{
    return kiocore::utility::ToUTF8(ZOL::GetRegistryBaseKey()) + "DisabledEffects";
}

} // namespace

std::set<std::string> ReadDisabledEffects()
{
    RegistryKey key;
    std::vector<std::string> names;
    if (key.Open(kiocore::utility::kRegistryRoot_CurrentUser, DisabledEffectsPath()) < 0) {
        return {};
    }
    key.GetValueNames(names);
    return {names.begin(), names.end()};
}

void SetEffectsEnabled(const std::vector<std::string>& inMatchNames, bool inEnabled)
{
    kiocore::utility::ScRegistryBatch batch;
    RegistryKey key;
    bool saved = key.Create(kiocore::utility::kRegistryRoot_CurrentUser, DisabledEffectsPath()) >= 0;
    for (const std::string& matchName : inMatchNames) {
        if (inEnabled) {
            key.DeleteValue(matchName); // one that is not there is enabled already
        } else {
            saved = saved && key.SetUInt32Value(matchName, 1) >= 0;
        }
    }
    if (batch.Finish() < 0 || !saved) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/EffectsNotSaved=the registry file @0 could not be written; "
                           "--trace Registry tells why",
                           {kiocore::utility::GetRegistryFile()}));
    }
}

void InstallEffectFilter(bool inSafeMode)
{
    if (inSafeMode) {
        TR::SetGlobalEffectFilter([](const kiocore::ImmutableString&) { return false; });
        return;
    }
    const auto disabled = std::make_shared<const std::set<std::string>>(ReadDisabledEffects());
    TR::SetGlobalEffectFilter([disabled](const kiocore::ImmutableString& inMatchName) {
        return disabled->count(inMatchName.AsString()) == 0;
    });
}

} // namespace trhost
