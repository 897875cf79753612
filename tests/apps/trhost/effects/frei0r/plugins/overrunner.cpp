// A filter that writes a pixel before or behind its picture, from a second on.
#include "Watcher.h"

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Overrunner", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, 0);
}
PLUGIN void f0r_update(f0r_instance_t inInstance, double inTime, const uint32_t* inFrame, uint32_t* outFrame)
{
    const auto& size = *static_cast<plugin::Size*>(inInstance);
    if (inTime == 1) {
        outFrame[std::size_t(size.width) * size.height] = 0;
    } else if (inTime == 2) {
        const_cast<uint32_t*>(inFrame)[-1] = 0;
    }
}
