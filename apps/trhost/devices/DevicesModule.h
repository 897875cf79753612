#pragma once

#include <kiocore/Export.h>

#include <cstdint>
#include <memory>
#include <string>

/// What trhost sees of its devices module, which is loaded only when an audio device is opened.
/// No audio library shows here.
namespace trhost::devices {

/// Codes of failures, thrown as kiocore::kio_exception. The text is one line: the device, what was found,
/// what was expected.
enum DevicesErrorCode : std::uint32_t {
    kDevicesError_NoDevice = 0x80F20001, ///< there is no such device, or it may not be opened
    kDevicesError_Busy = 0x80F20002,     ///< somebody else has it; it may be free a moment later
    kDevicesError_Format = 0x80F20003,   ///< the device cannot do this rate and number of channels
    kDevicesError_Lost = 0x80F20004,     ///< the device failed, or was unplugged, while in use
};

struct AudioFormat {
    int rate = 0; ///< sample frames a second
    int channels = 0;

    friend bool operator==(const AudioFormat&, const AudioFormat&) = default;
};

/// An opened place that takes sound. Destroying it stops the sound at once and lets the device go.
///
/// Threading: one thread at a time. No member waits but Wait.
class IAudioOutput {
public:
    virtual ~IAudioOutput() = default;

    virtual const AudioFormat& Format() const = 0;
    /// How many frames it keeps before they are heard, at most.
    virtual int BufferFrames() const = 0;
    /// Interleaved, 1 = full scale; what lies beyond is clipped.
    /// @return how many frames it took, from the first on; 0 when it takes none now.
    /// @throws kio_exception (kDevicesError_Lost); file_exception where it goes to a file.
    virtual int Write(const float* inSamples, int inFrames) = 0;
    /// Sleeps until it takes more, or for the time given.
    virtual void Wait(int inMostMs) = 0;
    /// Nothing more will come, and all of it is to be heard. To be asked again until true.
    virtual bool Drain() = 0;
    /// How many frames were taken and not heard yet.
    virtual int QueuedFrames() = 0;
    /// How often the sound broke off because too little was written.
    virtual int Breaks() const = 0;
};

/// An opened source of sound. Destroying it lets the device go.
///
/// Threading: one thread at a time. No member waits but Wait.
class IAudioInput {
public:
    virtual ~IAudioInput() = default;

    virtual const AudioFormat& Format() const = 0;
    virtual int BufferFrames() const = 0;
    /// Interleaved, 1 = full scale.
    /// @return how many frames came, 0 when there are none now.
    /// @throws kio_exception (kDevicesError_Lost).
    virtual int Read(float* outSamples, int inMostFrames) = 0;
    /// Sleeps until something comes, or for the time given.
    virtual void Wait(int inMostMs) = 0;
    /// How often sound was lost because it was not read in time.
    virtual int Breaks() const = 0;
};

/// Threading: any thread.
class IDevicesModule {
public:
    virtual ~IDevicesModule() = default;

    /// Opens a device by the system's name for it: "default", "null", "hw:1,0" ...
    /// Rate and channels are those asked for; the system converts where the device has others.
    /// @throws kio_exception: kDevicesError_NoDevice, kDevicesError_Busy, kDevicesError_Format.
    virtual std::unique_ptr<IAudioOutput> OpenOutput(const std::string& inDevice,
                                                     const AudioFormat& inFormat) = 0;
    virtual std::unique_ptr<IAudioInput> OpenInput(const std::string& inDevice,
                                                   const AudioFormat& inFormat) = 0;

    /// The audio library at work, for messages: "alsa-lib 1.2.8".
    virtual std::string LibraryVersion() const = 0;
};

/// Changes whenever anything in this header does, so that a module of another build is noticed.
inline constexpr int kDevicesModuleVersion = 1;

/// File name of the module, below "<library folder>/trhost/", and its one function.
inline constexpr const char* kDevicesModuleFileName = "trhost_devices.so";
inline constexpr const char* kDevicesModuleFunctionName = "trhost_devices_module";

/// @return the module's one object, which lives as long as the process; null when the module was built
///         for another version of this header.
using DevicesModuleFunction = IDevicesModule* (*)(int inVersion);

} // namespace trhost::devices

extern "C" KIO_EXPORT trhost::devices::IDevicesModule* trhost_devices_module(int inVersion);
