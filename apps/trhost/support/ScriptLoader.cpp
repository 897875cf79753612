#include "ScriptLoader.h"

#include "ModuleLoader.h"

namespace trhost {

script::IScriptModule& LoadScriptModule()
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static script::IScriptModule& sModule = LoadModule<script::IScriptModule>(
        script::kScriptModuleFileName, script::kScriptModuleFunctionName, script::kScriptModuleVersion);
    return sModule;
}

} // namespace trhost
