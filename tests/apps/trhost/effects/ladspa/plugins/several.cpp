// Several plug-ins in one file, which note every call with the test program.
#include <ladspa.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

extern "C" void NotePluginCall(const char* inWhat); // of the test program
extern "C" __attribute__((visibility("default"))) const LADSPA_Descriptor*
ladspa_descriptor(unsigned long inIndex);

namespace {

constexpr int kIn = LADSPA_PORT_AUDIO | LADSPA_PORT_INPUT;
constexpr int kOut = LADSPA_PORT_AUDIO | LADSPA_PORT_OUTPUT;
constexpr int kSet = LADSPA_PORT_CONTROL | LADSPA_PORT_INPUT;
constexpr int kRead = LADSPA_PORT_CONTROL | LADSPA_PORT_OUTPUT;
constexpr int kBounded = LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE;

void Note(const std::string& inWhat)
{
    NotePluginCall(inWhat.c_str());
}

struct Instance {
    std::array<float*, 16> ports{};
};

LADSPA_Handle Instantiate(const LADSPA_Descriptor*, unsigned long inRate)
{
    Note("instantiate " + std::to_string(inRate));
    return inRate == 1 ? nullptr : new Instance;
}
void Connect(LADSPA_Handle inHandle, unsigned long inPort, float* inPlace)
{
    static_cast<Instance*>(inHandle)->ports.at(inPort) = inPlace;
}
void Deactivate(LADSPA_Handle)
{
    Note("deactivate");
}
void Cleanup(LADSPA_Handle inHandle)
{
    Note("cleanup");
    delete static_cast<Instance*>(inHandle);
}

/// Multiplies by its first control; half of what it gives tells whether in and out lie apart.
void ActivateGain(LADSPA_Handle inHandle)
{
    auto& ports = static_cast<Instance*>(inHandle)->ports;
    Note("activate with " + std::to_string(*ports[2]));
}
void RunGain(LADSPA_Handle inHandle, unsigned long inFrames)
{
    auto& ports = static_cast<Instance*>(inHandle)->ports;
    Note("run " + std::to_string(inFrames));
    std::fill_n(ports[1], inFrames, -1.0f); // would spoil the input, were it the same memory
    for (unsigned long n = 0; n < inFrames; ++n) {
        ports[1][n] = ports[0][n] * *ports[2];
    }
    *ports[3] = 5; // latency
}
constexpr std::array kGainPorts{kIn, kOut, kSet, kRead};
constexpr std::array kGainNames{"In", "Out", "Gain", "latency"};
constexpr std::array<LADSPA_PortRangeHint, 4> kGainHints{
    {{0, 0, 0}, {0, 0, 0}, {kBounded | LADSPA_HINT_DEFAULT_1, 0, 2}, {0, 0, 0}}};

void RunSwap(LADSPA_Handle inHandle, unsigned long inFrames)
{
    auto& ports = static_cast<Instance*>(inHandle)->ports;
    std::copy_n(ports[0], inFrames, ports[3]);
    std::copy_n(ports[1], inFrames, ports[2]);
}
constexpr std::array kSwapPorts{kIn, kIn, kOut, kOut};

void RunSpread(LADSPA_Handle inHandle, unsigned long inFrames)
{
    auto& ports = static_cast<Instance*>(inHandle)->ports;
    std::copy_n(ports[0], inFrames, ports[1]);
    std::transform(ports[0], ports[0] + inFrames, ports[2], [](float inValue) { return 3 * inValue; });
}
constexpr std::array kSpreadPorts{kIn, kOut, kOut};

void RunMerge(LADSPA_Handle inHandle, unsigned long inFrames)
{
    auto& ports = static_cast<Instance*>(inHandle)->ports;
    std::transform(ports[0], ports[0] + inFrames, ports[1], ports[2],
                   [](float inOne, float inOther) { return inOne - inOther; });
}
constexpr std::array kMergePorts{kIn, kIn, kOut};
constexpr std::array kNames{"a", "b", "c", "d"};
constexpr std::array<LADSPA_PortRangeHint, 4> kNoHints{};

// All that may be said of a control.
struct Control {
    const char* name;
    LADSPA_PortRangeHint hint;
};
constexpr int kRate = LADSPA_HINT_SAMPLE_RATE;
constexpr int kLog = LADSPA_HINT_LOGARITHMIC;
constexpr Control kControls[] = {
    {"Toggled On", {LADSPA_HINT_TOGGLED | LADSPA_HINT_DEFAULT_1, 0, 0}},
    {"Whole", {kBounded | LADSPA_HINT_INTEGER | LADSPA_HINT_DEFAULT_MIDDLE, -0.1f, 5.1f}},
    {"Cutoff (Hz)", {kBounded | kRate | LADSPA_HINT_DEFAULT_MAXIMUM, 0, 0.5f}},
    {"Cutoff (Hz)", {kBounded | kLog | LADSPA_HINT_DEFAULT_MIDDLE, 10, 1000}},
    {"Low", {kBounded | LADSPA_HINT_DEFAULT_LOW, -1, 3}},
    {"High log", {kBounded | kLog | LADSPA_HINT_DEFAULT_HIGH, 1, 16}},
    {"Above", {LADSPA_HINT_BOUNDED_BELOW, 0.1f, 0}},
    {"Below", {LADSPA_HINT_BOUNDED_ABOVE | LADSPA_HINT_DEFAULT_100, 0, 50}},
    {"Pitch", {LADSPA_HINT_DEFAULT_440, 0, 0}},
    {"No upper for a middle", {LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_DEFAULT_MIDDLE, 7, 0}},
};

struct ControlPorts {
    std::vector<int> ports{kIn, kOut};
    std::vector<const char*> names{"In", "Out"};
    std::vector<LADSPA_PortRangeHint> hints{{0, 0, 0}, {0, 0, 0}};
    ControlPorts()
    {
        for (const Control& control : kControls) {
            ports.push_back(kSet);
            names.push_back(control.name);
            hints.push_back(control.hint);
        }
    }
};

void RunNothing(LADSPA_Handle, unsigned long) {}

template <typename Ports, typename Names, typename Hints>
LADSPA_Descriptor Make(unsigned long inID, const char* inLabel, const Ports& inPorts, const Names& inNames,
                       const Hints& inHints, void (*inRun)(LADSPA_Handle, unsigned long))
{
    LADSPA_Descriptor made{};
    made.UniqueID = inID;
    made.Label = inLabel;
    made.Name = "A plug-in\nfor tests";
    made.Maker = "A. Tester";
    made.Copyright = "None";
    made.PortCount = inPorts.size();
    made.PortDescriptors = inPorts.data();
    made.PortNames = inNames.data();
    made.PortRangeHints = inHints.data();
    made.instantiate = Instantiate;
    made.connect_port = Connect;
    made.run = inRun;
    made.cleanup = Cleanup;
    return made;
}

} // namespace

const LADSPA_Descriptor* ladspa_descriptor(unsigned long inIndex)
{
    static constexpr std::array kTonePorts{kOut};
    static constexpr std::array kMeterPorts{kIn};
    static const ControlPorts kControlPorts;
    static const std::vector<LADSPA_Descriptor> kPlugins = [] {
        std::vector<LADSPA_Descriptor> plugins{
            Make(900001, "gain", kGainPorts, kGainNames, kGainHints, RunGain),
            Make(900002, "swap", kSwapPorts, kNames, kNoHints, RunSwap),
            Make(900003, "spread", kSpreadPorts, kNames, kNoHints, RunSpread),
            Make(900004, "merge", kMergePorts, kNames, kNoHints, RunMerge),
            Make(900005, "tone", kTonePorts, kNames, kNoHints, RunNothing),
            Make(900006, "meter", kMeterPorts, kNames, kNoHints, RunNothing),
            Make(900007, "gain", kMergePorts, kNames, kNoHints, nullptr),
            Make(900008, "controls", kControlPorts.ports, kControlPorts.names, kControlPorts.hints,
                 RunNothing),
        };
        plugins[0].activate = ActivateGain;
        plugins[0].deactivate = Deactivate;
        return plugins;
    }();
    return inIndex < kPlugins.size() ? &kPlugins[inIndex] : nullptr;
}
