#include "AlsaDevice.h"

#include "../../../support/LocalText.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace trhost::devices {
namespace {

// Long enough for a busy machine to miss some turns, short enough that a change is heard at once; what is
// recorded may wait longer, nobody hears it meanwhile.
constexpr unsigned kPlayBufferUs = 200'000;
constexpr unsigned kCaptureBufferUs = 500'000;
constexpr unsigned kPeriodUs = 20'000;

constexpr std::pair<snd_pcm_format_t, SampleForm> kForms[] = {
    {SND_PCM_FORMAT_FLOAT, SampleForm::kFloat32},
    {SND_PCM_FORMAT_S32, SampleForm::kInt32},
    {SND_PCM_FORMAT_S24_3LE, SampleForm::kInt24},
    {SND_PCM_FORMAT_S16, SampleForm::kInt16},
};

struct FreeHardwareParameters {
    void operator()(snd_pcm_hw_params_t* inParameters) const noexcept
    {
        snd_pcm_hw_params_free(inParameters);
    }
};
struct FreeSoftwareParameters {
    void operator()(snd_pcm_sw_params_t* inParameters) const noexcept
    {
        snd_pcm_sw_params_free(inParameters);
    }
};

/// The device behind the system's converter for rates, channels and sample formats.
std::string WithConverter(const std::string& inName)
{
    return "plug:'" + inName + "'";
}

/// The library has error numbers of its own above the system's.
std::string ReasonOf(int inError)
{
    constexpr int kFirstOwn = SND_ERROR_BEGIN;
    return -inError < kFirstOwn ? kiocore::utility::ToUTF8(kiocore::SystemErrorText(-inError))
                                : snd_strerror(inError);
}

} // namespace

AlsaDevice::AlsaDevice(const std::string& inName, snd_pcm_stream_t inDirection, const AudioFormat& inFormat)
    : mName(inName), mDirection(inDirection), mFormat(inFormat)
{
    int result = Open(mName);
    if (result >= 0) {
        result = Configure();
        if (result < 0 && mName.find('\'') == std::string::npos) {
            mHandle.reset(); // first: many devices can be opened only once
            result = Open(WithConverter(mName));
            result = result < 0 ? result : Configure();
        }
    }
    if (result >= 0) {
        result = ConfigureStart();
    }
    if (result < 0) {
        mHandle.reset();
        ThrowNotOpened(result);
    }
}

int AlsaDevice::Open(const std::string& inName)
{
    mStep = "$$$/Halcyon/TrHost/Device/Step/Opened=opened#{the audio device cannot be opened for playing}";
    snd_pcm_t* handle = nullptr;
    const int result = snd_pcm_open(&handle, inName.c_str(), mDirection, SND_PCM_NONBLOCK);
    mHandle.reset(result < 0 ? nullptr : handle);
    return result;
}

int AlsaDevice::Configure()
{
    snd_pcm_hw_params_t* made = nullptr;
    if (snd_pcm_hw_params_malloc(&made) < 0) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<snd_pcm_hw_params_t, FreeHardwareParameters> parameters(made);
    snd_pcm_t* const pcm = mHandle.get();
    mStep = "$$$/Halcyon/TrHost/Device/Step/Configured=configured#{the audio device cannot be configured for "
            "playing}";
    int result = snd_pcm_hw_params_any(pcm, made);
    if (result >= 0) {
        result = snd_pcm_hw_params_set_access(pcm, made, SND_PCM_ACCESS_RW_INTERLEAVED);
    }
    if (result < 0) {
        return result;
    }
    const auto form = std::find_if(std::begin(kForms), std::end(kForms), [&](const auto& candidate) {
        return snd_pcm_hw_params_set_format(pcm, made, candidate.first) >= 0;
    });
    if (form == std::end(kForms)) {
        mStep = "$$$/Halcyon/TrHost/Device/Step/Format=set to a known sample format#{the audio device cannot "
                "be set to ... for playing}";
        return -EINVAL;
    }
    mForm = form->second;
    mStep = "$$$/Halcyon/TrHost/Device/Step/Channels=set to this number of channels#{the audio device cannot "
            "be set to ... for playing}";
    result = snd_pcm_hw_params_set_channels(pcm, made, unsigned(mFormat.channels));
    if (result >= 0) {
        mStep = "$$$/Halcyon/TrHost/Device/Step/Rate=set to this rate#{the audio device cannot be set to ... "
                "for playing}";
        snd_pcm_hw_params_set_rate_resample(pcm, made, 1);
        result = snd_pcm_hw_params_set_rate(pcm, made, unsigned(mFormat.rate), 0);
    }
    if (result < 0) {
        return result;
    }
    // Whatever comes near is fine; what was chosen is asked below.
    unsigned buffer = mDirection == SND_PCM_STREAM_PLAYBACK ? kPlayBufferUs : kCaptureBufferUs;
    snd_pcm_hw_params_set_buffer_time_near(pcm, made, &buffer, nullptr);
    unsigned period = kPeriodUs;
    snd_pcm_hw_params_set_period_time_near(pcm, made, &period, nullptr);
    mStep = "$$$/Halcyon/TrHost/Device/Step/Configured=configured#{the audio device cannot be configured for "
            "playing}";
    result = snd_pcm_hw_params(pcm, made);
    if (result >= 0) {
        snd_pcm_hw_params_get_buffer_size(made, &mBufferFrames);
        snd_pcm_hw_params_get_period_size(made, &mPeriodFrames, nullptr);
    }
    return result;
}

int AlsaDevice::ConfigureStart()
{
    snd_pcm_sw_params_t* made = nullptr;
    if (snd_pcm_sw_params_malloc(&made) < 0) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<snd_pcm_sw_params_t, FreeSoftwareParameters> parameters(made);
    snd_pcm_t* const pcm = mHandle.get();
    mStep =
        "$$$/Halcyon/TrHost/Device/Step/Prepared=prepared#{the audio device cannot be prepared for playing}";
    int result = snd_pcm_sw_params_current(pcm, made);
    if (result < 0) {
        return result;
    }
    // Playing begins with a buffer that is nearly full; recording at once.
    const snd_pcm_uframes_t full = mBufferFrames > mPeriodFrames ? mBufferFrames - mPeriodFrames : 1;
    snd_pcm_sw_params_set_start_threshold(pcm, made, mDirection == SND_PCM_STREAM_PLAYBACK ? full : 1);
    snd_pcm_sw_params_set_avail_min(pcm, made, std::max<snd_pcm_uframes_t>(1, mPeriodFrames));
    result = snd_pcm_sw_params(pcm, made);
    if (result >= 0) {
        result = snd_pcm_prepare(pcm);
    }
    if (result >= 0 && mDirection == SND_PCM_STREAM_CAPTURE) {
        mStep = "$$$/Halcyon/TrHost/Device/Step/Started=started#{the audio device cannot be started for "
                "recording}";
        result = snd_pcm_start(pcm);
    }
    return result;
}

void AlsaDevice::ThrowNotOpened(int inError) const
{
    const std::uint32_t code = inError == -EBUSY || inError == -EAGAIN    ? kDevicesError_Busy
                               : inError == -EINVAL || inError == -ENOSYS ? kDevicesError_Format
                                                                          : kDevicesError_NoDevice;
    const std::string expected =
        code == kDevicesError_Format
            ? LocalText("$$$/Halcyon/TrHost/Device/ExpectedForm=one that takes @0 channels at @1 Hz#{an "
                        "audio device}",
                        {std::to_string(mFormat.channels), std::to_string(mFormat.rate)})
        : code == kDevicesError_Busy
            ? LocalText(
                  "$$$/Halcyon/TrHost/Device/ExpectedFree=one that nobody else has opened#{an audio device}")
            : LocalText("$$$/Halcyon/TrHost/Device/ExpectedName=the name of an audio device of this machine");
    throw kiocore::kio_exception(
        LocalText(mDirection == SND_PCM_STREAM_PLAYBACK
                      ? "$$$/Halcyon/TrHost/Device/NotForPlaying=the audio device @0 cannot be @1 for "
                        "playing (@2); expected @3#{@1: opened, @2: the reason}"
                      : "$$$/Halcyon/TrHost/Device/NotForRecording=the audio device @0 cannot be @1 for "
                        "recording (@2); expected @3#{@1: opened, @2: the reason}",
                  {mName, LocalText(mStep), ReasonOf(inError), expected}),
        code);
}

void AlsaDevice::Wait(int inMostMs)
{
    if (snd_pcm_wait(mHandle.get(), inMostMs) < 0) {
        // The next read or write tells what is wrong; until then we must not spin.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void AlsaDevice::Recover(int inError)
{
    snd_pcm_t* const pcm = mHandle.get();
    int result = inError;
    if (inError == -ESTRPIPE) {
        result = snd_pcm_resume(pcm);
        if (result == -EAGAIN) {
            return; // the machine is still waking up; asked again with the next read or write
        }
        ++mBreaks;
        if (result >= 0) {
            return;
        }
        result = snd_pcm_prepare(pcm);
    } else if (inError == -EPIPE) {
        ++mBreaks;
        result = snd_pcm_prepare(pcm);
    } else if (inError == -EINTR) {
        return;
    }
    if (result >= 0 && mDirection == SND_PCM_STREAM_CAPTURE) {
        result = snd_pcm_start(pcm);
    }
    if (result < 0) {
        throw kiocore::kio_exception(LocalText("$$$/Halcyon/TrHost/Device/Lost=the audio device @0 stopped "
                                               "working (@1); was it unplugged?#{@1: the reason}",
                                               {mName, ReasonOf(result)}),
                                     kDevicesError_Lost);
    }
    kiocore::debug::Trace(3, "Devices", "the sound of " + mName + " broke off and goes on");
}

} // namespace trhost::devices
