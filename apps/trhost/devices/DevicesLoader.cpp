#include "DevicesLoader.h"

#include "../support/ModuleLoader.h"

namespace trhost::devices {

IDevicesModule& LoadDevicesModule()
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static IDevicesModule& sModule =
        LoadModule<IDevicesModule>(kDevicesModuleFileName, kDevicesModuleFunctionName, kDevicesModuleVersion);
    return sModule;
}

} // namespace trhost::devices
