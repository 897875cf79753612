#include "Ports.h"

#include "../PluginParameters.h"

#include <algorithm>
#include <cmath>

namespace trhost::effects::ladspa {
namespace {

double InBounds(const ControlPort& inPort, double inValue)
{
    const double above = inPort.lower ? std::max(*inPort.lower, inValue) : inValue;
    return inPort.upper ? std::min(*inPort.upper, above) : above;
}

void ReadBounds(const LADSPA_PortRangeHint& inHint, int inSampleRate, ControlPort& ioPort)
{
    const int hint = inHint.HintDescriptor;
    const double unit = LADSPA_IS_HINT_SAMPLE_RATE(hint) ? inSampleRate : 1;
    const bool isInteger = LADSPA_IS_HINT_INTEGER(hint) != 0;
    // Bounds of integers are set a little too wide on purpose, against rounding.
    if (LADSPA_IS_HINT_BOUNDED_BELOW(hint) && std::isfinite(inHint.LowerBound)) {
        const double bound = AsWritten(inHint.LowerBound) * unit;
        ioPort.lower = isInteger ? std::ceil(bound) + 0.0 : bound; // no minus zero
    }
    if (LADSPA_IS_HINT_BOUNDED_ABOVE(hint) && std::isfinite(inHint.UpperBound)) {
        const double bound = AsWritten(inHint.UpperBound) * unit;
        ioPort.upper = isInteger ? std::floor(bound) : bound;
    }
}

/// Between the bounds, by the part that the upper has in it.
std::optional<double> Between(const ControlPort& inPort, double inUpperPart, bool inLogarithmic)
{
    if (!inPort.lower || !inPort.upper) {
        return std::nullopt;
    }
    const double lower = *inPort.lower;
    const double upper = *inPort.upper;
    if (inLogarithmic && lower > 0 && upper > 0) {
        return std::exp(std::log(lower) * (1 - inUpperPart) + std::log(upper) * inUpperPart);
    }
    return lower * (1 - inUpperPart) + upper * inUpperPart;
}

std::optional<double> HintedDefault(int inHint, const ControlPort& inPort)
{
    const bool logarithmic = LADSPA_IS_HINT_LOGARITHMIC(inHint) != 0;
    switch (inHint & LADSPA_HINT_DEFAULT_MASK) {
    case LADSPA_HINT_DEFAULT_MINIMUM:
        return inPort.lower;
    case LADSPA_HINT_DEFAULT_LOW:
        return Between(inPort, 0.25, logarithmic);
    case LADSPA_HINT_DEFAULT_MIDDLE:
        return Between(inPort, 0.5, logarithmic);
    case LADSPA_HINT_DEFAULT_HIGH:
        return Between(inPort, 0.75, logarithmic);
    case LADSPA_HINT_DEFAULT_MAXIMUM:
        return inPort.upper;
    case LADSPA_HINT_DEFAULT_0:
        return 0;
    case LADSPA_HINT_DEFAULT_1:
        return 1;
    case LADSPA_HINT_DEFAULT_100:
        return 100;
    case LADSPA_HINT_DEFAULT_440:
        return 440;
    default:
        return std::nullopt;
    }
}

float DefaultOf(int inHint, const ControlPort& inPort)
{
    // Without a hint: nothing, or as little as the bounds allow.
    double value = HintedDefault(inHint, inPort).value_or(0);
    if (LADSPA_IS_HINT_INTEGER(inHint)) {
        value = std::round(value);
    }
    return static_cast<float>(InBounds(inPort, value));
}

ParameterKind KindOf(int inHint)
{
    if (LADSPA_IS_HINT_TOGGLED(inHint)) {
        return ParameterKind::kBool;
    }
    return LADSPA_IS_HINT_INTEGER(inHint) ? ParameterKind::kInteger : ParameterKind::kNumber;
}

std::string Explain(int inHint, const ControlPort& inPort, int inSampleRate)
{
    std::vector<std::string> parts;
    if (LADSPA_IS_HINT_LOGARITHMIC(inHint)) {
        parts.emplace_back("best set in steps of equal ratio");
    }
    if (inPort.lower && !inPort.upper) {
        parts.push_back(NumberText(*inPort.lower) + " or more");
    }
    if (inPort.upper && !inPort.lower) {
        parts.push_back(NumberText(*inPort.upper) + " or less");
    }
    if (LADSPA_IS_HINT_SAMPLE_RATE(inHint) && (inPort.lower || inPort.upper)) {
        parts.push_back("the range is that at " + std::to_string(inSampleRate) +
                        " Hz and follows the sample rate");
    }
    std::string text;
    for (const std::string& part : parts) {
        text += text.empty() ? part : "; " + part;
    }
    return text;
}

ControlPort ReadControl(const LADSPA_Descriptor& inPlugin, unsigned long inIndex, int inSampleRate,
                        const std::vector<std::string>& inNames)
{
    const LADSPA_PortRangeHint& hint = inPlugin.PortRangeHints[inIndex];
    ControlPort port;
    port.index = inIndex;
    port.shown.displayName = OneLine(inPlugin.PortNames[inIndex]);
    port.shown.name = UniqueName(port.shown.displayName, inNames);
    port.shown.kind = KindOf(hint.HintDescriptor);
    if (port.shown.kind != ParameterKind::kBool) {
        ReadBounds(hint, inSampleRate, port);
    }
    port.shown.hasRange = port.lower && port.upper;
    port.shown.minimum = port.shown.hasRange ? *port.lower : 0;
    port.shown.maximum = port.shown.hasRange ? *port.upper : 0;
    port.shown.explanation = Explain(hint.HintDescriptor, port, inSampleRate);
    port.defaultValue = DefaultOf(hint.HintDescriptor, port);
    port.shown.defaultValue = port.shown.kind == ParameterKind::kBool
                                  ? (port.defaultValue > 0 ? "true" : "false")
                                  : NumberText(port.defaultValue);
    return port;
}

} // namespace

Ports ReadPorts(const LADSPA_Descriptor& inPlugin, int inSampleRate)
{
    Ports ports;
    std::vector<std::string> names;
    for (unsigned long i = 0; i < inPlugin.PortCount; ++i) {
        const LADSPA_PortDescriptor port = inPlugin.PortDescriptors[i];
        const bool isInput = LADSPA_IS_PORT_INPUT(port) != 0;
        if (LADSPA_IS_PORT_AUDIO(port)) {
            (isInput ? ports.audioInputs : ports.audioOutputs).push_back(i);
        } else if (isInput) {
            ports.controls.push_back(ReadControl(inPlugin, i, inSampleRate, names));
            names.push_back(ports.controls.back().shown.name);
        } else {
            ports.controlOutputs.push_back(i);
        }
    }
    return ports;
}

float ParseValue(const std::string& inMatchName, const ControlPort& inPort, const std::string& inText)
{
    if (inPort.shown.kind == ParameterKind::kBool) {
        return ParseBool(inMatchName, inPort.shown, inText) ? 1.0f : 0.0f;
    }
    return static_cast<float>(InBounds(inPort, ParseNumber(inMatchName, inPort.shown, inText)));
}

} // namespace trhost::effects::ladspa
