#pragma once

// The parts that our frei0r plug-ins for tests have in common. Each notes every call with the test program.

#include <cinttypes>
#include <cstring>
#include <string>

extern "C" { // which the header does not say
#include <frei0r.h>
}

#define PLUGIN extern "C" __attribute__((visibility("default")))

extern "C" void NotePluginCall(const char* inWhat); // of the test program

namespace plugin {

struct Size {
    unsigned width;
    unsigned height;
};

inline void Note(const std::string& inWhat)
{
    NotePluginCall(inWhat.c_str());
}
inline void Describe(f0r_plugin_info_t* outInfo, const char* inName, int inType, int inColorModel,
                     int inParameters)
{
    Note("get_plugin_info");
    *outInfo = {inName,       "A. Tester",          inType,
                inColorModel, FREI0R_MAJOR_VERSION, 3,
                14,           inParameters,         "tells what\nit was given"};
}
inline f0r_instance_t Construct(unsigned inWidth, unsigned inHeight)
{
    Note("construct " + std::to_string(inWidth) + " x " + std::to_string(inHeight));
    return new Size{inWidth, inHeight};
}
inline void Destruct(f0r_instance_t inInstance)
{
    Note("destruct");
    delete static_cast<Size*>(inInstance);
}

} // namespace plugin

// For plug-ins without parameters.
#define PLUGIN_WITHOUT_PARAMETERS                                                                            \
    PLUGIN void f0r_get_param_info(f0r_param_info_t*, int) {}                                                \
    PLUGIN void f0r_set_param_value(f0r_instance_t, f0r_param_t, int) {}                                     \
    PLUGIN void f0r_get_param_value(f0r_instance_t, f0r_param_t, int) {}

#define PLUGIN_LIFE                                                                                          \
    PLUGIN int f0r_init()                                                                                    \
    {                                                                                                        \
        plugin::Note("init");                                                                                \
        return 1;                                                                                            \
    }                                                                                                        \
    PLUGIN void f0r_deinit()                                                                                 \
    {                                                                                                        \
        plugin::Note("deinit");                                                                              \
    }                                                                                                        \
    PLUGIN f0r_instance_t f0r_construct(unsigned inWidth, unsigned inHeight)                                 \
    {                                                                                                        \
        return plugin::Construct(inWidth, inHeight);                                                         \
    }                                                                                                        \
    PLUGIN void f0r_destruct(f0r_instance_t inInstance)                                                      \
    {                                                                                                        \
        plugin::Destruct(inInstance);                                                                        \
    }
