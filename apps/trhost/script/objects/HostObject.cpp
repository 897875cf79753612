#include "HostObject.h"

#include "../../commands/Program.h"
#include "EffectsObject.h"
#include "FilesObject.h"
#include "MediaObject.h"

#include <kioscripting/ClassBuilder.h>

namespace trhost::script {
namespace {

kioscripting::ClassDefinition DefineHost()
{
    return kioscripting::ClassBuilder<HostObject>("Halcyon.TrHost", "Host",
                                                  "The program that runs the script: the global object host.")
        .Property("arguments", "string[]", "What the command line says behind the script",
                  &HostObject::GetArguments)
        .Property("version", "string", "Of the program", &HostObject::GetVersion)
        .Property("exitStatus", "number", "What the program will end with; 0 at first",
                  &HostObject::GetExitStatus)
        .Method("setExitStatus", "Sets what the program ends with once the script is over",
                &HostObject::SetExitStatus,
                {{"status", "number", kioscripting::kParameter_Required, "0 to 255"}})
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sHostDefinition(&DefineHost);

template <typename Object>
void SetGlobal(kioscripting::IScriptEngine& ioEngine, const char* inName, const ScriptHostPtr& inHost)
{
    const auto object = kioscripting::CreateScriptObject<Object>(ioEngine.GetContextHdl());
    object->Initialize(inHost);
    ioEngine.SetGlobal(inName, kioscripting::ScriptObjectPtr(object));
}

} // namespace

const char* HostObject::GetClassname() const
{
    return "Host";
}

std::string HostObject::GetVersion() const
{
    return ProgramVersion();
}

void SetGlobals(kioscripting::IScriptEngine& ioEngine, const ScriptHostPtr& inHost)
{
    SetGlobal<HostObject>(ioEngine, "host", inHost);
    SetGlobal<MediaObject>(ioEngine, "media", inHost);
    SetGlobal<EffectsObject>(ioEngine, "effects", inHost);
    SetGlobal<FilesObject>(ioEngine, "files", inHost);
}

} // namespace trhost::script
