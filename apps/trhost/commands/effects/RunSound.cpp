#include "RunSound.h"

#include "../../devices/WaveFile.h"
#include "../../support/Failure.h"
#include "../../support/Interrupt.h"
#include "../../support/MediaLoader.h"

#include <kiocore/filesupport/NativePath.h>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

constexpr int kBlockFrames = 1024;

} // namespace

int RunOnSound(Context& ioContext, const effects::EffectDescription& inEffect,
               const EffectsRunOptions& inOptions, const std::string& inInput, const std::string& inOutput)
{
    const InterruptCancel cancel;
    const auto sound = LoadMediaModule().OpenAudio(inInput, -1, cancel);
    const media::StreamInfo& stream = sound->Stream();
    const auto effect = OpenAudioEffect(inEffect, stream.sampleRate, stream.channels, inOptions.parameters);
    devices::WaveFile file(inOutput, {stream.sampleRate, stream.channels}, devices::SampleForm::kFloat32,
                           inOptions.force);
    const auto blockValues = std::size_t(kBlockFrames) * std::size_t(stream.channels);
    std::vector<float> input(blockValues);
    std::vector<float> output(blockValues);
    ProgressBar bar(ioContext.output, ToUTF16(inEffect.matchName));
    while (const int frames = sound->Read(input.data(), kBlockFrames, cancel)) {
        ThrowIfInterrupted();
        effect->Process(input.data(), output.data(), frames);
        file.Write(output.data(), frames);
        if (stream.durationSeconds > 0) {
            bar.Show(double(file.Frames()) / (stream.durationSeconds * stream.sampleRate));
        }
    }
    file.Finish();
    bar.Hide();
    const UTF16String path = kiocore::filesupport::FromNative(inOutput);
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/EffectSoundMade=@0: @1 Hz, @2 channels, by @3",
                               {path, ToUTF16(std::to_string(stream.sampleRate)),
                                ToUTF16(std::to_string(stream.channels)), ToUTF16(inEffect.matchName)}),
                          JsonLine()
                              .Add("matchName", inEffect.matchName)
                              .Add("output", path)
                              .Add("frames", file.Frames())
                              .Add("rate", stream.sampleRate)
                              .Add("channels", stream.channels));
    return kExit_Done;
}

} // namespace trhost
