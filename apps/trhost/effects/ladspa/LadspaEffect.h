#pragma once

#include "../EffectEngine.h"
#include "../PluginCaller.h"
#include "../PluginMemory.h"
#include "ChannelPlan.h"
#include "Ports.h"

#include <ladspa.h>

#include <deque>
#include <string>
#include <vector>

namespace trhost::effects::ladspa {

/// A LADSPA plug-in at work, on as many instances as the channels need (see ChannelPlan). Inputs and outputs
/// have memory of their own, so a plug-in that cannot work in place runs like any other.
class LadspaEffect final : public IAudioEffect {
public:
    /// @throws kio_exception (kEffectError_BadFrame, kEffectError_PluginFailed).
    LadspaEffect(const LADSPA_Descriptor& inPlugin, PluginCaller inCaller, std::string inMatchName,
                 int inSampleRate, int inChannels);
    ~LadspaEffect() override;
    LadspaEffect(const LadspaEffect&) = delete;
    LadspaEffect& operator=(const LadspaEffect&) = delete;

    void SetParameter(const std::string& inName, const std::string& inValue) override;
    void Process(const float* inSamples, float* outSamples, int inFrames) override;

private:
    /// One after the other, so that an instance is removed also when a later one fails.
    class Instance {
    public:
        Instance(LadspaEffect& inEffect, int inSampleRate);
        ~Instance();
        Instance(const Instance&) = delete;
        Instance& operator=(const Instance&) = delete;
        void Activate();
        void ConnectAudio();
        LADSPA_Handle Handle() const { return mHandle; }

    private:
        void Connect(const std::vector<unsigned long>& inPorts, const std::vector<float*>& inPlaces);
        LadspaEffect& mEffect;
        LADSPA_Handle mHandle = nullptr;
        bool mActive = false;
    };

    void Allocate();
    void EndBuffersAfter(int inFrames);
    void ProcessBlock(const float* inSamples, float* outSamples, int inFrames);

    const LADSPA_Descriptor& mPlugin;
    const PluginCaller mCaller;
    const std::string mMatchName;
    const int mChannels;
    const Ports mPorts;
    const ChannelPlan mPlan;
    // Shared by all instances: they run one after the other.
    std::vector<PluginBuffer> mMemory;
    std::vector<float*> mInputs;
    std::vector<float*> mOutputs;
    std::vector<float> mControls;
    float mUnread = 0;               // what control outputs write to
    std::deque<Instance> mInstances; // last: goes first
    bool mActive = false;
};

} // namespace trhost::effects::ladspa
