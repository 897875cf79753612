#include <kioscripting/GuidObject.h>

#include <kioscripting/ClassBuilder.h>

namespace kioscripting {
namespace {

ClassDefinition DefineGuid()
{
    return ClassBuilder<GuidObject>("Halcyon", "Guid", "A 16-byte identifier.")
        .Constructor("Construct an identifier of its text", &GuidObject::Initialize, {{"text", "string"}})
        .Property("text", "string", "The identifier in lower case", &GuidObject::GetText)
        .Method("equals", "Says whether two identifiers are the same", &GuidObject::Equals,
                {{"other", "Guid"}}, {"isEqual", "boolean"})
        .Method("toString", "Returns the text", &GuidObject::GetText, {}, {"text", "string"})
        .Finish();
}

const factory::ScriptObjectDefinitionInitiator sGuidDefinition(&DefineGuid);

} // namespace

bool GuidObject::CastTo(kiocore::Guid& outGuid) const
{
    outGuid = mGuid;
    return true;
}

boost::intrusive_ptr<GuidObject> CreateGuidObject(const kiocore::Guid& inGuid, int inContext)
{
    const boost::intrusive_ptr<GuidObject> object = CreateScriptObject<GuidObject>(inContext);
    if (object) {
        object->Initialize(inGuid);
    }
    return object;
}

} // namespace kioscripting
