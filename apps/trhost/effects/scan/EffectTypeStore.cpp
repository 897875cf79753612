#include "EffectTypeStore.h"

#include <TR/EffectEnablement.h>
#include <ZOL/RegistryBaseKey.h>
#include <kiocore/utility/RegistryKey.h>

#include <algorithm>

namespace trhost::effects {

namespace {

using kiocore::utility::RegistryKey;

/// A backslash divides keys; none may lie below that of another plug-in, which is deleted now and then. A
/// match name never has a slash, as it is made of file names.
std::string CacheNameOf(const std::string& inMatchName)
{
    std::string name = inMatchName;
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

std::string CacheKeyPath()
{
    return kiocore::utility::ToUTF8(ZOL::GetRegistryBaseKey()) + TR::kEffectTypeCacheKeyName;
}

} // namespace

EffectTypes EffectTypesOf(const EffectDescription& inDescription)
{
    EffectTypes types;
    if (inDescription.isAccelerated) {
        types.push_back(TR::GetAcceleratedTimeEffectType());
    }
    TR::AddPixelFormatEffects(inDescription.formats, types);
    return types;
}

void KeepEffectTypes(const std::vector<std::pair<std::string, EffectTypes>>& inTypes)
{
    if (inTypes.empty()) {
        return;
    }
    const kiocore::utility::ScRegistryBatch saveAtOnce(kiocore::filesupport::Durability::kNone);
    RegistryKey cache;
    const bool isThere = cache.Open(kiocore::utility::kRegistryRoot_CurrentUser, CacheKeyPath()) >= 0;
    for (const auto& [matchName, types] : inTypes) {
        const std::string name = CacheNameOf(matchName);
        if (isThere) {
            cache.DeleteKey(name);
        }
        TR::WriteToRegistry(name, types);
    }
}

bool ReadEffectTypes(const std::string& inMatchName, EffectTypes& outTypes)
{
    outTypes.clear();
    const std::string name = CacheNameOf(inMatchName);
    RegistryKey key; // reading would make it
    return key.Open(kiocore::utility::kRegistryRoot_CurrentUser, CacheKeyPath() + '\\' + name) >= 0 &&
           TR::ReadFromRegistry(name, outTypes);
}

} // namespace trhost::effects
