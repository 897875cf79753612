#include "AudioPlaces.h"

#include "DevicesLoader.h"
#include "WaveSink.h"

#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/MediaLoader.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

namespace trhost::devices {

std::optional<SampleForm> ParseSampleForm(const std::string& inText)
{
    return inText == "s16"   ? std::optional(SampleForm::kInt16)
           : inText == "s24" ? std::optional(SampleForm::kInt24)
           : inText == "f32" ? std::optional(SampleForm::kFloat32)
                             : std::nullopt;
}

SampleForm FormFor(const std::string& inCodec)
{
    for (const char* narrow : {"pcm_s16", "pcm_u16", "pcm_s8", "pcm_u8", "pcm_alaw", "pcm_mulaw"}) {
        if (inCodec.starts_with(narrow)) {
            return SampleForm::kInt16;
        }
    }
    return SampleForm::kFloat32;
}

std::string SinkPath(const std::string& inSink)
{
    if (!inSink.starts_with("wav:") || inSink.size() == 4) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/BadSink=the sink @0 is not known; expected wav:FILE",
                           {kiocore::filesupport::FromNative(inSink)}));
    }
    return inSink.substr(4);
}

OutputOpener DeviceOutput(const std::string& inDevice)
{
    return [inDevice](const AudioFormat& inFormat) {
        return LoadDevicesModule().OpenOutput(inDevice, inFormat);
    };
}

OutputOpener FileOutput(std::shared_ptr<WaveFile> inFile)
{
    return [file = std::move(inFile)](const AudioFormat&) { return std::make_unique<WaveSink>(file); };
}

InputOpener DeviceInput(const std::string& inDevice)
{
    return
        [inDevice](const AudioFormat& inFormat) { return LoadDevicesModule().OpenInput(inDevice, inFormat); };
}

std::unique_ptr<media::IAudioReader> OpenSound(const std::string& inNativePath, int inStreamIndex)
{
    try {
        return LoadMediaModule().OpenAudio(inNativePath, inStreamIndex, InterruptCancel());
    } catch (const kiocore::kio_exception&) {
        ThrowIfInterrupted();
        throw;
    }
}

} // namespace trhost::devices
