#include "Describe.h"

#include "../PluginParameters.h"
#include "PluginFile.h"
#include "Ports.h"

namespace trhost::effects::ladspa {
namespace {

// Ranges that follow the sample rate are described as they are at this one.
constexpr int kDescribedRate = 48000;

} // namespace

std::string RefusalOf(const LADSPA_Descriptor& inPlugin)
{
    if (!inPlugin.instantiate || !inPlugin.connect_port || !inPlugin.run || !inPlugin.cleanup) {
        return "$$$/Halcyon/TrHost/Effects/LadspaFunctions=lacks one of the functions instantiate, "
               "connect_port, run and cleanup";
    }
    bool hasInput = false;
    bool hasOutput = false;
    for (unsigned long i = 0; i < inPlugin.PortCount; ++i) {
        const LADSPA_PortDescriptor port = inPlugin.PortDescriptors[i];
        if (LADSPA_IS_PORT_AUDIO(port)) {
            (LADSPA_IS_PORT_INPUT(port) ? hasInput : hasOutput) = true;
        }
    }
    if (!hasInput) {
        return "$$$/Halcyon/TrHost/Effects/TakesNoSound=takes no sound, it makes sound of its own";
    }
    return hasOutput ? std::string()
                     : "$$$/Halcyon/TrHost/Effects/GivesNoSound=gives no sound, it only measures";
}

EffectDescription Describe(const LADSPA_Descriptor& inPlugin, const std::string& inFile)
{
    EffectDescription description = NamePlugin(inFile, PluginNameOf(inPlugin));
    const std::string name = OneLine(inPlugin.Name);
    if (!name.empty()) {
        description.displayName = name;
    }
    description.author = OneLine(inPlugin.Maker);
    Ports ports = ReadPorts(inPlugin, kDescribedRate);
    for (ControlPort& port : ports.controls) {
        description.parameters.push_back(std::move(port.shown));
    }
    description.audioInputs = static_cast<int>(ports.audioInputs.size());
    description.audioOutputs = static_cast<int>(ports.audioOutputs.size());
    description.refusal = RefusalOf(inPlugin);
    return description;
}

} // namespace trhost::effects::ladspa
