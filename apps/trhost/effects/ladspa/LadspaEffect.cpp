#include "LadspaEffect.h"

#include "../PluginParameters.h"
#include "PluginFile.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace trhost::effects::ladspa {
namespace {

constexpr std::size_t kAlignment = alignof(float); // all that a plug-in may count on
constexpr int kMostFrames = 4096;                  // of one call: plug-ins may keep blocks on the stack

[[noreturn]] void ThrowBadForm(const std::string& inReason)
{
    throw kiocore::kio_exception(inReason, kEffectError_BadFrame);
}

int Checked(int inSampleRate, int inChannels, const std::string& inMatchName)
{
    if (inSampleRate <= 0 || inChannels <= 0) {
        ThrowBadForm(KeptText("$$$/Halcyon/TrHost/Effects/NotOnSound=@0 cannot run on @1 channels at @2 Hz; "
                              "expected both above 0",
                              {inMatchName, std::to_string(inChannels), std::to_string(inSampleRate)}));
    }
    return inSampleRate;
}

} // namespace

LadspaEffect::Instance::Instance(LadspaEffect& inEffect, int inSampleRate) : mEffect(inEffect)
{
    const LADSPA_Descriptor& plugin = mEffect.mPlugin;
    kiocore::threads::ScLock lock(LifeLock());
    mEffect.mCaller([&] { mHandle = plugin.instantiate(&plugin, static_cast<unsigned long>(inSampleRate)); });
    if (!mHandle) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/NoInstanceForRate=@0 makes no instance for @1 Hz",
                     {mEffect.mMatchName, std::to_string(inSampleRate)}),
            kEffectError_PluginFailed);
    }
}

LadspaEffect::Instance::~Instance()
{
    const LADSPA_Descriptor& plugin = mEffect.mPlugin;
    kiocore::threads::ScLock lock(LifeLock());
    mEffect.mCaller.Finally("Removing an instance of " + mEffect.mMatchName, [&] {
        if (mActive && plugin.deactivate) {
            plugin.deactivate(mHandle);
        }
        plugin.cleanup(mHandle);
    });
}

void LadspaEffect::Instance::Activate()
{
    const LADSPA_Descriptor& plugin = mEffect.mPlugin;
    const Ports& ports = mEffect.mPorts;
    kiocore::threads::ScLock lock(LifeLock());
    mEffect.mCaller([&] {
        ConnectAudio();
        for (std::size_t i = 0; i < ports.controls.size(); ++i) {
            plugin.connect_port(mHandle, ports.controls[i].index, &mEffect.mControls[i]);
        }
        for (const unsigned long port : ports.controlOutputs) {
            plugin.connect_port(mHandle, port, &mEffect.mUnread);
        }
        // Ports first: some take the size of their memory from a control when they are activated.
        mActive = true;
        if (plugin.activate) {
            plugin.activate(mHandle);
        }
    });
}

void LadspaEffect::Instance::ConnectAudio()
{
    Connect(mEffect.mPorts.audioInputs, mEffect.mInputs);
    Connect(mEffect.mPorts.audioOutputs, mEffect.mOutputs);
}

void LadspaEffect::Instance::Connect(const std::vector<unsigned long>& inPorts,
                                     const std::vector<float*>& inPlaces)
{
    for (std::size_t i = 0; i < inPorts.size(); ++i) {
        mEffect.mPlugin.connect_port(mHandle, inPorts[i], inPlaces[i]);
    }
}

LadspaEffect::LadspaEffect(const LADSPA_Descriptor& inPlugin, PluginCaller inCaller, std::string inMatchName,
                           int inSampleRate, int inChannels)
    : mPlugin(inPlugin), mCaller(std::move(inCaller)), mMatchName(std::move(inMatchName)),
      mChannels(inChannels), mPorts(ReadPorts(inPlugin, Checked(inSampleRate, inChannels, mMatchName))),
      mPlan(inChannels, static_cast<int>(mPorts.audioInputs.size()),
            static_cast<int>(mPorts.audioOutputs.size()))
{
    if (mPlan.InstanceCount() == 0) {
        const std::string most = std::to_string(mPlan.ChannelsPerInstance());
        ThrowBadForm(KeptText("$$$/Halcyon/TrHost/Effects/NotOnChannels=@0 cannot run on @1 channels; "
                              "expected fewer than @2 or a multiple of @2",
                              {mMatchName, std::to_string(inChannels), most}));
    }
    Allocate();
    for (int i = 0; i < mPlan.InstanceCount(); ++i) {
        mInstances.emplace_back(*this, inSampleRate);
    }
}

LadspaEffect::~LadspaEffect() = default;

void LadspaEffect::Allocate()
{
    const std::size_t inputs = mPorts.audioInputs.size();
    const std::size_t outputs = mPorts.audioOutputs.size();
    for (std::size_t i = 0; i < inputs + outputs; ++i) {
        mMemory.emplace_back(kMostFrames * sizeof(float), kAlignment,
                             i < inputs ? MemoryUse::kInput : MemoryUse::kOutput);
        std::memset(mMemory.back().Get(), 0, kMostFrames * sizeof(float));
    }
    mInputs.resize(inputs);
    mOutputs.resize(outputs);
    EndBuffersAfter(kMostFrames);
    for (const ControlPort& port : mPorts.controls) {
        mControls.push_back(port.defaultValue);
    }
}

/// What a plug-in reaches beyond a block is to be seen where somebody watches: so a short block ends where
/// the memory does.
void LadspaEffect::EndBuffersAfter(int inFrames)
{
    for (std::size_t i = 0; i < mMemory.size(); ++i) {
        float* const start = reinterpret_cast<float*>(mMemory[i].Get()) + (kMostFrames - inFrames);
        (i < mInputs.size() ? mInputs[i] : mOutputs[i - mInputs.size()]) = start;
    }
}

void LadspaEffect::SetParameter(const std::string& inName, const std::string& inValue)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < mPorts.controls.size(); ++i) {
        const ControlPort& port = mPorts.controls[i];
        if (port.shown.name == inName) {
            mControls[i] = ParseValue(mMatchName, port, inValue);
            return;
        }
        names.push_back(port.shown.name);
    }
    ThrowNoSuchParameter(mMatchName, inName, names);
}

void LadspaEffect::Process(const float* inSamples, float* outSamples, int inFrames)
{
    if (!mActive) {
        std::for_each(mInstances.begin(), mInstances.end(),
                      [](Instance& inInstance) { inInstance.Activate(); });
        mActive = true;
    }
    for (int done = 0; done < inFrames;) {
        const int now = std::min(kMostFrames, inFrames - done);
        const std::ptrdiff_t at = std::ptrdiff_t(done) * mChannels;
        ProcessBlock(inSamples + at, outSamples + at, now);
        done += now;
    }
}

void LadspaEffect::ProcessBlock(const float* inSamples, float* outSamples, int inFrames)
{
    if (IsPluginMemoryWatched()) {
        EndBuffersAfter(inFrames);
    }
    int index = 0;
    for (Instance& instance : mInstances) {
        if (IsPluginMemoryWatched()) {
            mCaller([&] { instance.ConnectAudio(); });
        }
        mPlan.Distribute(index, inSamples, inFrames, mInputs);
        mCaller([&] { mPlugin.run(instance.Handle(), static_cast<unsigned long>(inFrames)); });
        mPlan.Collect(index, mOutputs, inFrames, outSamples);
        ++index;
    }
}

} // namespace trhost::effects::ladspa
