// A frei0r filter that never comes back from its work.
extern "C" { // which the header does not say
#include <frei0r.h>
}

#include <unistd.h>

#define PLUGIN extern "C" __attribute__((visibility("default")))

PLUGIN int f0r_init()
{
    return 1;
}
PLUGIN void f0r_deinit() {}
PLUGIN void f0r_get_plugin_info(f0r_plugin_info_t* outInfo)
{
    *outInfo = {
        "Hanger", "A. Tester", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, FREI0R_MAJOR_VERSION, 1,
        0,        0,           "never comes back"};
}
PLUGIN void f0r_get_param_info(f0r_param_info_t*, int) {}
PLUGIN f0r_instance_t f0r_construct(unsigned, unsigned)
{
    static int instance;
    return &instance;
}
PLUGIN void f0r_destruct(f0r_instance_t) {}
PLUGIN void f0r_set_param_value(f0r_instance_t, f0r_param_t, int) {}
PLUGIN void f0r_get_param_value(f0r_instance_t, f0r_param_t, int) {}
PLUGIN void f0r_update(f0r_instance_t, double, const uint32_t*, uint32_t*)
{
    for (;;) {
        pause();
    }
}
