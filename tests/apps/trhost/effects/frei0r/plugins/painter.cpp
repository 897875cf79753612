// A source that paints the upper half of its picture, in RGBA.
#include "Watcher.h"

#include <algorithm>

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "", F0R_PLUGIN_TYPE_SOURCE, F0R_COLOR_MODEL_RGBA8888, 0);
}
PLUGIN void f0r_update(f0r_instance_t inInstance, double, const uint32_t* inFrame, uint32_t* outFrame)
{
    const auto& size = *static_cast<plugin::Size*>(inInstance);
    if (!inFrame) {
        std::fill_n(outFrame, std::size_t(size.width) * size.height / 2, 0x80030201u); // R 1, G 2, B 3
    }
}
