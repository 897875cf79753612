#include <kioscripting_jsc/JSCEngine.h>

#include <jsc/jsc.h>

namespace kioscripting_jsc {

std::string EngineVersion()
{
    return "JavaScriptCore " + std::to_string(jsc_get_major_version()) + "." +
           std::to_string(jsc_get_minor_version()) + "." + std::to_string(jsc_get_micro_version());
}

} // namespace kioscripting_jsc
