#include "DevicesLoader.h"

#include "../support/Failure.h"

#include <kiocore/platform/Modules.h>

#include <string>

namespace trhost::devices {

IDevicesModule& LoadDevicesModule()
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static IDevicesModule& sModule = []() -> IDevicesModule& {
        const std::string program = kiocore::platform::ProgramPath();
        const std::string path = program.substr(0, program.find_last_of('/')) + "/" TRHOST_MODULE_FOLDER "/" +
                                 kDevicesModuleFileName;
        const auto function = reinterpret_cast<DevicesModuleFunction>(
            kiocore::platform::LoadModuleFunction(path, kDevicesModuleFunctionName));
        IDevicesModule* const module = function(kDevicesModuleVersion);
        if (!module) {
            throw Failure(kExit_Failed,
                          Text("$$$/Halcyon/TrHost/WrongModule=@0 was built for another version of "
                               "trhost; install both from one build",
                               {kiocore::utility::ToUTF16(path)}));
        }
        return *module;
    }();
    return sModule;
}

} // namespace trhost::devices
