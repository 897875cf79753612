#pragma once

#include "../EffectDescription.h"

#include <ladspa.h>

#include <optional>
#include <string>
#include <vector>

namespace trhost::effects::ladspa {

/// One thing to set.
struct ControlPort {
    unsigned long index = 0;
    EffectParameter shown;
    std::optional<double> lower; ///< LADSPA may bound one side only; shown.hasRange wants both
    std::optional<double> upper;
    float defaultValue = 0;
};

struct Ports {
    std::vector<unsigned long> audioInputs;
    std::vector<unsigned long> audioOutputs;
    std::vector<unsigned long> controlOutputs; ///< meters, latency: connected, and not read
    std::vector<ControlPort> controls;
};

/// The ports of a plug-in, ranges and defaults as they are at a sample rate.
Ports ReadPorts(const LADSPA_Descriptor& inPlugin, int inSampleRate);

/// @throws kio_exception (kEffectError_BadParameter).
float ParseValue(const std::string& inMatchName, const ControlPort& inPort, const std::string& inText);

} // namespace trhost::effects::ladspa
