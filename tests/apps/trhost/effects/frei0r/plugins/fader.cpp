// A mixer that shows its second picture from the middle of its fader on, with only the newer of the updates.
#include "Watcher.h"

#include <algorithm>

namespace {

struct Instance : plugin::Size {
    double fader = 0;
};

} // namespace

PLUGIN int f0r_init()
{
    return 1;
}
PLUGIN void f0r_deinit() {}
PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Fader", F0R_PLUGIN_TYPE_MIXER2, F0R_COLOR_MODEL_RGBA8888, 1);
}
PLUGIN void f0r_get_param_info(f0r_param_info_t* outInfo, int)
{
    *outInfo = {"Fader", F0R_PARAM_DOUBLE, "part of the second picture"};
}
PLUGIN f0r_instance_t f0r_construct(unsigned inWidth, unsigned inHeight)
{
    auto* const instance = new Instance;
    instance->width = inWidth;
    instance->height = inHeight;
    return instance;
}
PLUGIN void f0r_destruct(f0r_instance_t inInstance)
{
    delete static_cast<Instance*>(inInstance);
}
PLUGIN void f0r_set_param_value(f0r_instance_t inInstance, f0r_param_t inValue, int)
{
    static_cast<Instance*>(inInstance)->fader = *static_cast<double*>(inValue);
}
PLUGIN void f0r_get_param_value(f0r_instance_t inInstance, f0r_param_t outValue, int)
{
    *static_cast<double*>(outValue) = static_cast<Instance*>(inInstance)->fader;
}
PLUGIN void f0r_update2(f0r_instance_t inInstance, double, const uint32_t* inFirst, const uint32_t* inSecond,
                        const uint32_t*, uint32_t* outFrame)
{
    const auto& instance = *static_cast<Instance*>(inInstance);
    const uint32_t* const shown = instance.fader < 0.5 ? inFirst : inSecond;
    std::copy_n(shown, std::size_t(instance.width) * instance.height, outFrame);
}
