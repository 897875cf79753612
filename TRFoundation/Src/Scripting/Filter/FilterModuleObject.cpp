#include <TR/FilterModuleObject.h>

#include <kioscripting/ClassBuilder.h>

namespace TRFoundation::Scripting {
namespace {

kioscripting::ClassDefinition DefineFilterModule()
{
    return kioscripting::ClassBuilder<FilterModuleObject>("Halcyon.TRFoundation", "FilterModule",
                                                          "A filter (audio/video) of a project")
        .Property("mediaType", "object", "Returns the media type guid for the filter object",
                  &FilterModuleObject::GetMediaType, kioscripting::kProperty_Object)
        .Property("displayName", "string", "Returns the display name for the filter",
                  &FilterModuleObject::GetDisplayName)
        .Property("matchName", "string", "Returns the internal matchname for the filter",
                  &FilterModuleObject::GetMatchName)
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionRegistrar
    sFilterModuleObjectReg(&DefineFilterModule,
                           kioscripting::factory::MakeTransformation(&CreateFilterModuleObject));

} // namespace

const char* FilterModuleObject::GetClassname() const
{
    return "FilterModule";
}

boost::intrusive_ptr<kioscripting::GuidObject> FilterModuleObject::GetMediaType() const
{
    return kioscripting::CreateGuidObject(Module()->GetMediaType(), GetContextHdl());
}

std::string FilterModuleObject::GetDisplayName() const
{
    return kiocore::utility::ToUTF8(Module()->GetDisplayName());
}

std::string FilterModuleObject::GetMatchName() const
{
    return Module()->GetMatchName().AsString();
}

bool FilterModuleObject::CastTo(TR::IFilterModuleRef& outModule) const
{
    outModule = Module();
    return static_cast<bool>(outModule);
}

TR::IFilterModuleRef FilterModuleObject::Module() const
{
    std::shared_ptr<kiocore::classref::UnknownBase> module = mModule.lock();
    kiocore::classref::UnknownBase* const identity = module.get();
    return kiocore::InterfaceRef<kiocore::classref::UnknownBase>(identity, std::move(module));
}

kioscripting::ScriptObjectPtr CreateFilterModuleObject(const TR::IFilterModuleRef& inModule, int inContext)
{
    const auto object = kioscripting::CreateScriptObject<FilterModuleObject>(inContext);
    if (object && inModule) {
        object->mModule = inModule.Identity()->GetWeakReference();
    }
    return object;
}

} // namespace TRFoundation::Scripting
