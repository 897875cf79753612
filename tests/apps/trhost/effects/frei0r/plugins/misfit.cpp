// A plug-in that can be loaded and not be run, each time for another reason.
#include "Watcher.h"

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Misfit", MISFIT_TYPE, MISFIT_COLOR_MODEL, MISFIT_PARAMETERS);
    outInfo->frei0r_version = MISFIT_VERSION;
}
PLUGIN void f0r_update(f0r_instance_t, double, const uint32_t*, uint32_t*) {}
