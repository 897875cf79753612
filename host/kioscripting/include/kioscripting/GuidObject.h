#pragma once

#include <kiocore/utility/Guid.h>
#include <kioscripting/ScriptObject.h>

namespace kioscripting {

/// An identifier as scripts see it: class "Guid" of namespace "Halcyon", with the property "text"
/// ("102bfb4c-1980-4e77-87df-17b03d5b09db") and the methods "equals" and "toString". Scripts make one of such
/// a text, in either case.
class KIO_EXPORT GuidObject final : public ScriptObject, public ICast<kiocore::Guid> {
public:
    const char* GetClassname() const override { return "Guid"; }
    void Initialize(const kiocore::Guid& inGuid) { mGuid = inGuid; }
    const kiocore::Guid& GetGuid() const { return mGuid; }
    std::string GetText() const { return mGuid.AsUTF8(); }
    bool Equals(const kiocore::Guid& inOther) const { return mGuid == inOther; }
    bool CastTo(kiocore::Guid& outGuid) const override;

private:
    kiocore::Guid mGuid;
};

/// @return empty when the context is not open.
KIO_EXPORT boost::intrusive_ptr<GuidObject> CreateGuidObject(const kiocore::Guid& inGuid, int inContext);

} // namespace kioscripting
