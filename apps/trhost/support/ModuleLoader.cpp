#include "ModuleLoader.h"

#include "Failure.h"

#include <kiocore/platform/Modules.h>

namespace trhost {

std::string ModulePath(const char* inFileName)
{
    const std::string program = kiocore::platform::ProgramPath();
    return program.substr(0, program.find_last_of('/')) + "/" TRHOST_MODULE_FOLDER "/" + inFileName;
}

void* LoadModuleByName(const char* inFileName, const char* inFunctionName)
{
    return kiocore::platform::LoadModuleFunction(ModulePath(inFileName), inFunctionName);
}

void ThrowWrongModule(const char* inFileName)
{
    throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/WrongModule=@0 was built for another version of "
                                     "trhost; install both from one build",
                                     {kiocore::utility::ToUTF16(ModulePath(inFileName))}));
}

} // namespace trhost
