#pragma once

#include <TR/PluginModules.h>
#include <kioscripting/GuidObject.h>
#include <kioscripting/ScriptObject.h>

#include <memory>
#include <string>

namespace TRFoundation::Scripting {

/// Shows a loaded filter to scripts, without keeping it loaded: class "FilterModule". The bridge makes one
/// wherever a native returns a reference on a filter to a script, and takes the filter out of it where a
/// native wants one.
///
/// Threading: that of its script context.
class KIO_EXPORT FilterModuleObject final : public kioscripting::ScriptObject,
                                            public kioscripting::ICast<TR::IFilterModuleRef> {
public:
    const char* GetClassname() const override;

    /// @throws null_reference_exception, all three, once the filter is gone.
    boost::intrusive_ptr<kioscripting::GuidObject> GetMediaType() const;
    std::string GetDisplayName() const;
    std::string GetMatchName() const;

    bool CastTo(TR::IFilterModuleRef& outModule) const override;

private:
    friend KIO_EXPORT kioscripting::ScriptObjectPtr
    CreateFilterModuleObject(const TR::IFilterModuleRef& inModule, int inContext);
    TR::IFilterModuleRef Module() const;

    std::weak_ptr<kiocore::classref::UnknownBase> mModule;
};

/// @param inModule  may be empty: the object is as if the filter were gone.
/// @return empty when the context is not open.
KIO_EXPORT kioscripting::ScriptObjectPtr CreateFilterModuleObject(const TR::IFilterModuleRef& inModule,
                                                                  int inContext);

} // namespace TRFoundation::Scripting
