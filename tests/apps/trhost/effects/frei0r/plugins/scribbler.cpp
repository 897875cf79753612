// A filter that writes into the picture it is given, and into half of its output only.
#include "Watcher.h"

#include <algorithm>

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Scribbler", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_PACKED32, 0);
}
PLUGIN void f0r_update(f0r_instance_t inInstance, double, const uint32_t* inFrame, uint32_t* outFrame)
{
    const auto& size = *static_cast<plugin::Size*>(inInstance);
    const std::size_t pixels = std::size_t(size.width) * size.height;
    std::fill_n(const_cast<uint32_t*>(inFrame), pixels, 0x12345678u);
    std::fill_n(outFrame, pixels / 2, 0x9ABCDEF0u);
}
