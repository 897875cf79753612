#pragma once

#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

#include <string>

namespace TR {

/// What a plug-in module says of itself. All texts are UTF-8.
struct EffectPluginMetadata {
    kiocore::ImmutableString matchName; ///< never changes, for programs; display names do, and are not unique
    std::string technology;             ///< what hosts it: "frei0r", "avfilter", "ladspa"
    std::string displayName;
    std::string categoryName;
    std::string author;
    std::string version;
    bool isFirstParty = false; ///< made by the maker of the application
};

/// Media types that filters are for.
extern KIO_EXPORT const kiocore::Guid kMediaType_Video;
extern KIO_EXPORT const kiocore::Guid kMediaType_Audio;

/// A loaded effect plug-in: turns pictures or sound of one clip into others. Whoever shows it without wanting
/// to keep it loaded takes its identity's GetWeakReference().
///
/// Threading: any thread; answers never change.
class KIO_EXPORT IFilterModule : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IFilterModule() override;

    virtual kiocore::ImmutableString GetMatchName() const = 0;
    virtual EffectPluginMetadata GetMetadata() const = 0;
    /// One of the above.
    virtual kiocore::Guid GetMediaType() const = 0;
    virtual kiocore::UTF16String GetDisplayName() const = 0;
};
using IFilterModuleRef = kiocore::InterfaceRef<IFilterModule>;

/// A loaded transition plug-in: leads from one picture to another. One module may hold several transitions,
/// known to the host under match names of their own.
///
/// Threading: as above.
class KIO_EXPORT ITransitionModule : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~ITransitionModule() override;

    virtual EffectPluginMetadata GetMetadata() const = 0;
};
using ITransitionModuleRef = kiocore::InterfaceRef<ITransitionModule>;

} // namespace TR
