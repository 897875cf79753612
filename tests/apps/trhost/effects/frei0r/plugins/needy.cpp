// A filter that needs a library which will not be there.
#include "Watcher.h"

extern "C" int NeededByNeedy();

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Needy", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, NeededByNeedy());
}
PLUGIN void f0r_update(f0r_instance_t, double, const uint32_t*, uint32_t*) {}
