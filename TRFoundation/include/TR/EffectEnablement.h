#pragma once

#include <TR/EffectType.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/ImmutableString.h>

#include <functional>
#include <vector>

namespace TR {

/// Decides by an effect's match name whether it is enabled.
using EffectFilter = std::function<bool(const kiocore::ImmutableString&)>;

/// The filter's answer; true while there is none. What the filter throws passes through.
///
/// Threading: any thread, except while SetGlobalEffectFilter runs. The filter is called on the calling
/// thread, maybe on several at once, and without a lock.
KIO_EXPORT bool IsEffectEnabled(const kiocore::ImmutableString& inMatchName);
/// Replaces the process's one filter by a copy; an empty function enables all effects. The filter goes
/// when the library is unloaded.
///
/// Threading: the host's main thread, while no effect is being asked for.
KIO_EXPORT void SetGlobalEffectFilter(const EffectFilter& inFilter);

/// What the registry keeps of each plug-in, under ZOL::GetRegistryBaseKey(), kEffectTypeCacheKeyName, a
/// backslash and the cache name: the version of the format, and the Names of its built-in effect types, in
/// values numbered from 0 ("Effect Types0", "Effect Types1", ...). A plug-in without types has "None" there.
inline constexpr const char* kEffectTypeCacheKeyName = "PluginEffectTypeCache";
inline constexpr const char* kEffectType_VersionKeyName = "Version";
inline constexpr const char* kEffectTypeRegistryKeyName = "Effect Types";
inline constexpr const char* kEffectTypeNoneName = "None";

/// Keeps the effect types of one plug-in for later starts; does nothing when the registry cannot be
/// written. Saved in one go and not synced: a lost entry costs loading the plug-in once more.
/// Nothing is deleted: of a longer list that was written before, the types beyond this one's end stay, and
/// are read as part of it.
/// @param inCacheName  one for each plug-in, as the host likes; a backslash in it divides keys.
/// @throws null_reference_exception when a type is empty.
///
/// Threading: any thread.
KIO_EXPORT void WriteToRegistry(const kiocore::ImmutableString& inCacheName,
                                const std::vector<kiocore::InterfaceRef<IEffectType>>& inTypes);
/// Adds what was kept of a plug-in, as new instances, at the end of ioTypes. Names of no built-in type are
/// passed over. Makes the plug-in's key when there is none.
/// @return false, ioTypes untouched, when nothing was kept, or in another version of the format.
///
/// Threading: any thread.
KIO_EXPORT bool ReadFromRegistry(const kiocore::ImmutableString& inCacheName,
                                 std::vector<kiocore::InterfaceRef<IEffectType>>& ioTypes);

} // namespace TR
