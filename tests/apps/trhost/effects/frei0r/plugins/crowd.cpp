// A filter that notes when two of its updates run at once.
#include "Watcher.h"

#include <atomic>
#include <thread>

PLUGIN_LIFE
PLUGIN_WITHOUT_PARAMETERS

namespace {
std::atomic<int> sInside{0};
} // namespace

PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    plugin::Describe(outInfo, "Crowd", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, 0);
}
PLUGIN void f0r_update(f0r_instance_t, double, const uint32_t*, uint32_t*)
{
    if (++sInside > 1) {
        plugin::Note("two at once");
    }
    for (int i = 0; i < 50; ++i) {
        std::this_thread::yield();
    }
    --sInside;
}
