#include <TR/EffectEnablement.h>

#include <ZOL/RegistryBaseKey.h>
#include <kiocore/utility/RegistryKey.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace TR {
namespace {

using kiocore::utility::RegistryKey;
using kiocore::utility::ToUTF8;

constexpr std::uint32_t kFormatVersion = 3;

EffectFilter& GlobalEffectFilter()
{
    static EffectFilter filter;
    return filter;
}

bool OpenPluginRegistryKey(const ImmutableString& inCacheName, RegistryKey& outKey)
{
    std::string path = ToUTF8(ZOL::GetRegistryBaseKey());
    path += kEffectTypeCacheKeyName;
    path += '\\';
    path += inCacheName.View();
    return outKey.Open(kiocore::utility::kRegistryRoot_CurrentUser, path) >= 0 ||
           outKey.Create(kiocore::utility::kRegistryRoot_CurrentUser, path) >= 0;
}

std::string TypeValueName(std::size_t inIndex)
{
    return kEffectTypeRegistryKeyName + std::to_string(inIndex);
}

/// Empty when the name is that of no built-in type.
InterfaceRef<IEffectType> MakeBuiltInType(std::string_view inName)
{
    for (const auto make : {&GetAcceleratedTimeEffectType, &Get32BitEffectType, &GetYUVEffectType}) {
        InterfaceRef<IEffectType> type = make();
        if (ToUTF8(type->GetName()) == inName) {
            return type;
        }
    }
    return {};
}

} // namespace

bool IsEffectEnabled(const ImmutableString& inMatchName)
{
    const EffectFilter& filter = GlobalEffectFilter();
    return !filter || filter(inMatchName);
}

void SetGlobalEffectFilter(const EffectFilter& inFilter)
{
    // The old filter goes after the new one is in place: its destructor is the host's and may ask for
    // effects.
    EffectFilter filter = inFilter;
    GlobalEffectFilter().swap(filter);
}

void WriteToRegistry(const ImmutableString& inCacheName,
                     const std::vector<InterfaceRef<IEffectType>>& inTypes)
{
    // Another process must not read the version of an entry whose types are still to come.
    const kiocore::utility::ScRegistryBatch saveAtOnce(kiocore::filesupport::Durability::kNone);
    RegistryKey key;
    if (!OpenPluginRegistryKey(inCacheName, key)) {
        return;
    }
    key.SetUInt32Value(kEffectType_VersionKeyName, kFormatVersion);
    if (inTypes.empty()) {
        key.SetStringValue(TypeValueName(0), kEffectTypeNoneName);
        return;
    }
    for (std::size_t i = 0; i < inTypes.size(); ++i) {
        key.SetStringValue(TypeValueName(i), ToUTF8(inTypes[i]->GetName()));
    }
}

bool ReadFromRegistry(const ImmutableString& inCacheName, std::vector<InterfaceRef<IEffectType>>& ioTypes)
{
    RegistryKey key;
    OpenPluginRegistryKey(inCacheName, key); // without the key there is no version either
    std::uint32_t version = 0;
    if (key.GetUInt32Value(kEffectType_VersionKeyName, version) < 0 || version != kFormatVersion) {
        return false;
    }
    std::string name;
    for (std::size_t i = 0; key.GetStringValue(TypeValueName(i), name) >= 0; ++i) {
        if (InterfaceRef<IEffectType> type = MakeBuiltInType(name)) {
            ioTypes.push_back(std::move(type));
        }
    }
    return true;
}

} // namespace TR
