// A filter with parameters of all kinds that notes what it is given, and turns the picture by half a turn, so
// that what lies beyond the right and bottom edges is seen.
#include "Watcher.h"

#include <algorithm>
#include <limits>

namespace {

struct Instance : plugin::Size {
    double flag = 1;
    double amount = 0.30000001192092896; // 0.3f
    f0r_param_color_t color{1, 0.5f, 0};
    f0r_param_position_t position{0.25, 1};
    std::string text = "as is";
    double again = std::numeric_limits<double>::quiet_NaN();
};

constexpr f0r_param_info_t kParameters[] = {
    {"Don't Flip", F0R_PARAM_BOOL, "a flag"},   {"Amount (%)", F0R_PARAM_DOUBLE, nullptr},
    {"Key=Color", F0R_PARAM_COLOR, "a color"},  {"Place", F0R_PARAM_POSITION, "a place"},
    {"Text", F0R_PARAM_STRING, "a text"},       {"amount", F0R_PARAM_DOUBLE, "named alike"},
    {"Later", 17, "of a kind that came later"}, {"  ", F0R_PARAM_BOOL, nullptr},
};

std::string Text(double inValue)
{
    return std::to_string(inValue);
}

} // namespace

PLUGIN int f0r_init()
{
    plugin::Note("init");
    return 1;
}
PLUGIN void f0r_deinit()
{
    plugin::Note("deinit");
}
PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Watcher", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888,
                     static_cast<int>(std::size(kParameters)));
}
PLUGIN void f0r_get_param_info(f0r_param_info_t* outInfo, int inIndex)
{
    *outInfo = kParameters[inIndex];
}
PLUGIN f0r_instance_t f0r_construct(unsigned inWidth, unsigned inHeight)
{
    plugin::Note("construct " + std::to_string(inWidth) + " x " + std::to_string(inHeight));
    auto* const instance = new Instance;
    instance->width = inWidth;
    instance->height = inHeight;
    return instance;
}
PLUGIN void f0r_destruct(f0r_instance_t inInstance)
{
    plugin::Note("destruct");
    delete static_cast<Instance*>(inInstance);
}

PLUGIN void f0r_set_param_value(f0r_instance_t, f0r_param_t inValue, int inIndex)
{
    const std::string name = std::to_string(inIndex) + " = ";
    switch (inIndex) {
    case 2: {
        const auto& color = *static_cast<f0r_param_color_t*>(inValue);
        return plugin::Note(name + Text(color.r) + " " + Text(color.g) + " " + Text(color.b));
    }
    case 3: {
        const auto& position = *static_cast<f0r_param_position_t*>(inValue);
        return plugin::Note(name + Text(position.x) + " " + Text(position.y));
    }
    case 4:
        return plugin::Note(name + *static_cast<f0r_param_string*>(inValue));
    default:
        return plugin::Note(name + Text(*static_cast<double*>(inValue)));
    }
}

PLUGIN void f0r_get_param_value(f0r_instance_t inInstance, f0r_param_t outValue, int inIndex)
{
    auto& instance = *static_cast<Instance*>(inInstance);
    switch (inIndex) {
    case 0:
        *static_cast<double*>(outValue) = instance.flag;
        break;
    case 1:
        *static_cast<double*>(outValue) = instance.amount;
        break;
    case 2:
        *static_cast<f0r_param_color_t*>(outValue) = instance.color;
        break;
    case 3:
        *static_cast<f0r_param_position_t*>(outValue) = instance.position;
        break;
    case 4:
        *static_cast<f0r_param_string*>(outValue) = instance.text.data();
        break;
    case 5:
        *static_cast<double*>(outValue) = instance.again;
        break;
    default:
        break;
    }
}

PLUGIN void f0r_update(f0r_instance_t inInstance, double inTime, const uint32_t* inFrame, uint32_t* outFrame)
{
    const auto& instance = *static_cast<Instance*>(inInstance);
    const auto misalignment = [](const uint32_t* inPixels) {
        return std::to_string(reinterpret_cast<std::uintptr_t>(inPixels) % 64);
    };
    plugin::Note("update at " + Text(inTime) + ", off by " + misalignment(inFrame) + " and " +
                 misalignment(outFrame));
    std::reverse_copy(inFrame, inFrame + std::size_t(instance.width) * instance.height, outFrame);
}
