#include "../ScriptModule.h"

#include "LineEditor.h"

#include <kioscripting_jsc/JSCEngine.h>

namespace trhost::script {
namespace {

class ScriptModule final : public IScriptModule {
public:
    std::unique_ptr<kioscripting::IScriptEngine> MakeEngine(kioscripting::EngineSettings inSettings) override
    {
        return kioscripting_jsc::MakeEngine(std::move(inSettings));
    }
    std::unique_ptr<ILineEditor> MakeLineEditor(LineEditorSettings inSettings) override
    {
        return script::MakeLineEditor(std::move(inSettings));
    }
    std::string EngineVersion() const override { return kioscripting_jsc::EngineVersion(); }
};

} // namespace
} // namespace trhost::script

trhost::script::IScriptModule* trhost_script_module(int inVersion)
{
    static trhost::script::ScriptModule sModule;
    return inVersion == trhost::script::kScriptModuleVersion ? &sModule : nullptr;
}
