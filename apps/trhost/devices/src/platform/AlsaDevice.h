#pragma once

#include "../../DevicesModule.h"
#include "../../SampleConversion.h"

#include <alsa/asoundlib.h>

#include <memory>
#include <string>

namespace trhost::devices {

/// An opened and prepared PCM device of the system, playing or capturing.
///
/// Threading: one thread at a time. Nothing waits but Wait.
class AlsaDevice {
public:
    /// @throws as IDevicesModule.
    AlsaDevice(const std::string& inName, snd_pcm_stream_t inDirection, const AudioFormat& inFormat);

    snd_pcm_t* Handle() const { return mHandle.get(); }
    const AudioFormat& Format() const { return mFormat; }
    SampleForm Form() const { return mForm; }
    int BytesOfFrame() const { return BytesOf(mForm) * mFormat.channels; }
    int BufferFrames() const { return int(mBufferFrames); }
    int Breaks() const { return mBreaks; }

    void Wait(int inMostMs);
    /// After a call that failed: gets the device going again. A break in the sound is counted.
    /// @throws kio_exception (kDevicesError_Lost) when that is not possible.
    void Recover(int inError);

private:
    struct CloseHandle {
        void operator()(snd_pcm_t* inHandle) const noexcept
        {
            snd_pcm_drop(inHandle); // or closing would wait until all was played
            snd_pcm_close(inHandle);
        }
    };
    using HandlePtr = std::unique_ptr<snd_pcm_t, CloseHandle>;

    /// @return 0 or the negative error of the step that failed, named in mStep.
    int Open(const std::string& inName);
    int Configure();
    int ConfigureStart();
    [[noreturn]] void ThrowNotOpened(int inError) const;

    const std::string mName;
    const snd_pcm_stream_t mDirection;
    const AudioFormat mFormat;
    HandlePtr mHandle;
    SampleForm mForm = SampleForm::kInt16;
    snd_pcm_uframes_t mBufferFrames = 0;
    snd_pcm_uframes_t mPeriodFrames = 0;
    const char* mStep = "";
    int mBreaks = 0;
};

} // namespace trhost::devices
