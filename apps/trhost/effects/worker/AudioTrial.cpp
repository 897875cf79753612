#include "Trial.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace trhost::effects {

namespace {

constexpr double kTwoPi = 6.283185307179586;

/// What sound plug-ins stumble over: noise, nothing at all, and full scale.
void FillBlock(std::vector<float>& outSamples, int inStep, std::uint32_t inSeed)
{
    std::uint32_t noise = inSeed * 2654435761u + static_cast<std::uint32_t>(inStep);
    for (std::size_t i = 0; i < outSamples.size(); ++i) {
        noise = noise * 1664525u + 1013904223u;
        switch (inStep % 3) {
        case 0:
            outSamples[i] = static_cast<float>(static_cast<std::int32_t>(noise)) / 4294967296.0f;
            break;
        case 1:
            outSamples[i] = 0;
            break;
        default:
            outSamples[i] = static_cast<float>(std::sin(kTwoPi * double(i) * (0.01 + 0.001 * inSeed)));
            break;
        }
    }
}

class AudioTrial final : public ITrialRun {
public:
    AudioTrial(std::unique_ptr<IAudioEffect> inEffect, const TrialCase& inCase, std::uint32_t inSeed)
        : mEffect(std::move(inEffect)), mBlockFrames(inCase.blockFrames), mSeed(inSeed),
          mIn(static_cast<std::size_t>(inCase.blockFrames) * static_cast<std::size_t>(inCase.channels)),
          mOut(mIn.size())
    {}
    std::size_t Step(int inNumber) override
    {
        FillBlock(mIn, inNumber, mSeed);
        std::fill(mOut.begin(), mOut.end(), 0.0f);
        mEffect->Process(mIn.data(), mOut.data(), mBlockFrames);
        mHadBadSamples = mHadBadSamples || !std::all_of(mOut.begin(), mOut.end(), [](float inSample) {
                             return std::isfinite(inSample);
                         });
        return std::hash<std::string_view>()(
            {reinterpret_cast<const char*>(mOut.data()), mOut.size() * sizeof(float)});
    }
    bool HadBadSamples() const override { return mHadBadSamples; }

private:
    std::unique_ptr<IAudioEffect> mEffect;
    const int mBlockFrames;
    const std::uint32_t mSeed;
    std::vector<float> mIn;
    std::vector<float> mOut;
    bool mHadBadSamples = false;
};

} // namespace

std::unique_ptr<ITrialRun> OpenAudioTrial(IEffectEngine& inEngine, const EffectDescription& inDescription,
                                          const TrialCase& inCase, std::uint32_t inSeed)
{
    const kiocore::InterfaceRef<IAudioEffectModule> module(inEngine.OpenFilter(inDescription));
    if (!module) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/NoSoundModule=@0 gives no module that runs on sound",
                     {inDescription.matchName}),
            kEffectError_PluginFailed);
    }
    return std::make_unique<AudioTrial>(module->Open(inCase.sampleRate, inCase.channels), inCase, inSeed);
}

} // namespace trhost::effects
