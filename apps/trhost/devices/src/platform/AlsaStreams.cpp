#include "AlsaStreams.h"

#include "AlsaDevice.h"

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <vector>

namespace trhost::devices {
namespace {

constexpr int kMostFramesAtOnce = 4096;

class AlsaOutput : public IAudioOutput {
public:
    AlsaOutput(const std::string& inDevice, const AudioFormat& inFormat)
        : mDevice(inDevice, SND_PCM_STREAM_PLAYBACK, inFormat)
    {}

    const AudioFormat& Format() const override { return mDevice.Format(); }
    int BufferFrames() const override { return mDevice.BufferFrames(); }
    void Wait(int inMostMs) override { mDevice.Wait(inMostMs); }
    int Breaks() const override { return mDevice.Breaks(); }

    int Write(const float* inSamples, int inFrames) override
    {
        const int frames = std::min(inFrames, kMostFramesAtOnce);
        mBytes.resize(std::size_t(frames) * std::size_t(mDevice.BytesOfFrame()));
        FromFloat(mDevice.Form(), inSamples, std::size_t(frames) * std::size_t(Format().channels),
                  mBytes.data());
        const snd_pcm_sframes_t written =
            snd_pcm_writei(mDevice.Handle(), mBytes.data(), snd_pcm_uframes_t(frames));
        if (written == -EAGAIN) {
            return 0;
        }
        if (written < 0) {
            mDevice.Recover(int(written));
            return 0;
        }
        return int(written);
    }

    bool Drain() override
    {
        // Without blocking, this only starts to play out; the state tells when it is over.
        const int result = snd_pcm_drain(mDevice.Handle());
        return result != -EAGAIN || snd_pcm_state(mDevice.Handle()) != SND_PCM_STATE_DRAINING;
    }

    int QueuedFrames() override
    {
        snd_pcm_sframes_t delay = 0;
        if (snd_pcm_delay(mDevice.Handle(), &delay) < 0) {
            return 0;
        }
        return int(std::clamp<snd_pcm_sframes_t>(delay, 0, 10 * Format().rate));
    }

private:
    AlsaDevice mDevice;
    std::vector<std::uint8_t> mBytes;
};

class AlsaInput : public IAudioInput {
public:
    AlsaInput(const std::string& inDevice, const AudioFormat& inFormat)
        : mDevice(inDevice, SND_PCM_STREAM_CAPTURE, inFormat)
    {}

    const AudioFormat& Format() const override { return mDevice.Format(); }
    int BufferFrames() const override { return mDevice.BufferFrames(); }
    void Wait(int inMostMs) override { mDevice.Wait(inMostMs); }
    int Breaks() const override { return mDevice.Breaks(); }

    int Read(float* outSamples, int inMostFrames) override
    {
        const int most = std::min(inMostFrames, kMostFramesAtOnce);
        // Zeroed: a device without a source of sound may count frames without writing any.
        mBytes.assign(std::size_t(most) * std::size_t(mDevice.BytesOfFrame()), 0);
        const snd_pcm_sframes_t read =
            snd_pcm_readi(mDevice.Handle(), mBytes.data(), snd_pcm_uframes_t(most));
        if (read == -EAGAIN) {
            return 0;
        }
        if (read < 0) {
            mDevice.Recover(int(read));
            return 0;
        }
        ToFloat(mDevice.Form(), mBytes.data(), std::size_t(read) * std::size_t(Format().channels),
                outSamples);
        return int(read);
    }

private:
    AlsaDevice mDevice;
    std::vector<std::uint8_t> mBytes;
};

void TraceMessage(const char*, int, const char* inFunction, int inError, const char* inFormat, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, inFormat);
    std::vsnprintf(text, sizeof text, inFormat, arguments);
    va_end(arguments);
    std::string line = std::string(inFunction) + ": " + text;
    if (inError != 0) {
        line += std::string(": ") + snd_strerror(inError);
    }
    kiocore::debug::Trace(3, "ALSA", line);
}

} // namespace

std::unique_ptr<IAudioOutput> OpenAlsaOutput(const std::string& inDevice, const AudioFormat& inFormat)
{
    return std::make_unique<AlsaOutput>(inDevice, inFormat);
}

std::unique_ptr<IAudioInput> OpenAlsaInput(const std::string& inDevice, const AudioFormat& inFormat)
{
    return std::make_unique<AlsaInput>(inDevice, inFormat);
}

std::string AlsaVersion()
{
    return std::string("alsa-lib ") + snd_asoundlib_version();
}

void RouteAlsaMessagesToTrace()
{
    snd_lib_error_set_handler(&TraceMessage);
}

} // namespace trhost::devices
