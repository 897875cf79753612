#pragma once

#include <vector>

namespace trhost::effects::ladspa {

/// How the channels of a sound pass through instances of a plug-in with so many inputs and outputs.
///
/// An instance serves as many channels as it has inputs or outputs, whichever are more, and as many instances
/// run as are needed: one each for the channels of a mono plug-in, one for each pair of a stereo plug-in, one
/// for stereo through a plug-in that makes two channels of one. A sound with fewer channels than that has
/// one instance too.
///
/// Within an instance channels and ports meet in turn: where there are more ports than channels, channels are
/// repeated (mono into a stereo plug-in goes to both inputs); where there are fewer, the mean is taken
/// (stereo into one input is mixed down). The way back is the same.
///
/// Threading: a value.
class ChannelPlan {
public:
    /// All above 0.
    ChannelPlan(int inChannels, int inInputs, int inOutputs);

    /// 0 when the channels cannot be shared out evenly.
    int InstanceCount() const { return mInstances; }
    /// The number of channels has to be a multiple of this, or less.
    int ChannelsPerInstance() const { return mMost; }

    /// @param inSamples   interleaved.
    /// @param outInputs   for each input of the instance room for inFrames values.
    void Distribute(int inInstance, const float* inSamples, int inFrames,
                    const std::vector<float*>& outInputs) const;
    void Collect(int inInstance, const std::vector<float*>& inOutputs, int inFrames, float* outSamples) const;

private:
    const int mChannels; // of the sound
    const int mMost;
    const int mInstances;
    const int mServed; // channels of one instance
};

} // namespace trhost::effects::ladspa
