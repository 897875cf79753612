// A filter that throws when it works, but not the first time.
#include "Watcher.h"

#include <algorithm>
#include <stdexcept>

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Thrower", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, 0);
}
PLUGIN void f0r_update(f0r_instance_t, double inTime, const uint32_t*, uint32_t*)
{
    if (inTime > 0) {
        throw std::runtime_error("cannot go on");
    }
}
