#include "ParameterValues.h"

#include "../PluginParameters.h"

#include <algorithm>

namespace trhost::effects::frei0r {
namespace {

void Set(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance, int inIndex,
         f0r_param_t inValue)
{
    kiocore::threads::ScLock lock(inFile.Lock());
    inCaller([&] { inFile.Calls().setParameter(inInstance, inValue, inIndex); });
}

template <typename Value>
void Get(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance, int inIndex,
         Value& outValue)
{
    kiocore::threads::ScLock lock(inFile.Lock());
    inCaller([&] { inFile.Calls().getParameter(inInstance, &outValue, inIndex); });
}

// Plug-ins forget to set some of their defaults: what is no number counts as 0.
double InRange(double inValue)
{
    return inValue >= 0 ? std::min(inValue, 1.0) : 0;
}

} // namespace

void SetParameter(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance,
                  const std::string& inMatchName, const Parameter& inParameter, const std::string& inText)
{
    switch (inParameter.type) {
    case F0R_PARAM_BOOL: {
        f0r_param_bool value = ParseBool(inMatchName, inParameter.shown, inText) ? 1 : 0;
        return Set(inFile, inCaller, inInstance, inParameter.index, &value);
    }
    case F0R_PARAM_DOUBLE:
        return SetNumber(inFile, inCaller, inInstance, inParameter.index,
                         ParseNumber(inMatchName, inParameter.shown, inText));
    case F0R_PARAM_COLOR: {
        const ColorValue color = ParseColor(inMatchName, inParameter.shown, inText);
        if (color.alpha != 1) {
            ThrowBadValue(
                inMatchName, inParameter.shown, inText,
                "$$$/Halcyon/TrHost/Effects/Expected/OpaqueColor=a color without alpha, as #rrggbb");
        }
        f0r_param_color_t value{static_cast<float>(color.red), static_cast<float>(color.green),
                                static_cast<float>(color.blue)};
        return Set(inFile, inCaller, inInstance, inParameter.index, &value);
    }
    case F0R_PARAM_POSITION: {
        const PositionValue position = ParsePosition(inMatchName, inParameter.shown, inText);
        f0r_param_position_t value{position.x, position.y};
        return Set(inFile, inCaller, inInstance, inParameter.index, &value);
    }
    case F0R_PARAM_STRING: {
        if (inText.find('\0') != std::string::npos) {
            ThrowBadValue(inMatchName, inParameter.shown, inText,
                          "$$$/Halcyon/TrHost/Effects/Expected/TextWithoutZeros=a text without zero bytes");
        }
        std::string copy = inText; // plug-ins take it as writable
        f0r_param_string value = copy.data();
        return Set(inFile, inCaller, inInstance, inParameter.index, &value);
    }
    }
}

void SetNumber(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance, int inIndex,
               double inValue)
{
    f0r_param_double value = InRange(inValue);
    Set(inFile, inCaller, inInstance, inIndex, &value);
}

std::string ReadParameter(PluginFile& inFile, const PluginCaller& inCaller, f0r_instance_t inInstance,
                          const Parameter& inParameter)
{
    switch (inParameter.type) {
    case F0R_PARAM_BOOL: {
        f0r_param_bool value = 0;
        Get(inFile, inCaller, inInstance, inParameter.index, value);
        return value >= 0.5 ? "true" : "false";
    }
    case F0R_PARAM_DOUBLE: {
        f0r_param_double value = 0;
        Get(inFile, inCaller, inInstance, inParameter.index, value);
        return NumberText(InRange(value));
    }
    case F0R_PARAM_COLOR: {
        f0r_param_color_t value{};
        Get(inFile, inCaller, inInstance, inParameter.index, value);
        return ColorText({value.r, value.g, value.b});
    }
    case F0R_PARAM_POSITION: {
        f0r_param_position_t value{};
        Get(inFile, inCaller, inInstance, inParameter.index, value);
        return PositionText({InRange(value.x), InRange(value.y)});
    }
    case F0R_PARAM_STRING: {
        f0r_param_string value = nullptr;
        kiocore::threads::ScLock lock(inFile.Lock()); // until copied: another instance may free it
        Get(inFile, inCaller, inInstance, inParameter.index, value);
        return OneLine(value);
    }
    }
    return {};
}

} // namespace trhost::effects::frei0r
