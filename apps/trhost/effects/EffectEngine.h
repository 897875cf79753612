#pragma once

#include "EffectDescription.h"
#include "FrameMemory.h"
#include "PluginCalls.h"

#include <MF/VideoFrame.h>
#include <TR/PluginModules.h>
#include <kiocore/Export.h>
#include <kiomediatypes/TickTime.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What trhost sees of the engines that host plug-ins, each a module loaded only when a plug-in is to be
/// loaded: trhost_frei0r, trhost_avfilter, trhost_ladspa. Nothing of theirs shows here.
namespace trhost::effects {

/// Codes of the engines' own failures, thrown as kiocore::kio_exception with a kept text
/// (support/KeptText.h): one line naming the plug-in, what was found and what was expected.
enum EffectErrorCode : std::uint32_t {
    kEffectError_NoPlugin = 0x80F30001,     ///< the file cannot be loaded or holds no such plug-in
    kEffectError_Refused = 0x80F30002,      ///< listed, not run (see EffectDescription::refusal)
    kEffectError_BadParameter = 0x80F30003, ///< no such parameter, or a value that it does not take
    kEffectError_BadFrame = 0x80F30004,     ///< size or format that the plug-in does not take
    kEffectError_PluginFailed = 0x80F30005, ///< the plug-in itself said that it failed
};

/// A plug-in at work on pictures of one size.
///
/// Threading: one thread at a time. Instances of plug-ins that keep global state exclude each other inside.
class IVideoEffect {
public:
    virtual ~IVideoEffect() = default;

    /// The form that Render wants its inputs in and gives its output in.
    virtual kiomediatypes::PixelFormat Format() const = 0;
    /// How many pictures Render takes: 0 a generator, 1 a filter, 2 a transition.
    virtual int InputCount() const = 0;
    /// Numbers beyond a parameter's range are moved to its nearer end. Before the first Render.
    /// @throws kio_exception (kEffectError_BadParameter).
    virtual void SetParameter(const std::string& inName, const std::string& inValue) = 0;
    /// @param inInputs  InputCount() frames of Format() and the size that Open was told; not changed, not
    /// kept.
    /// @param inTime    of the picture; rises from call to call.
    /// @param inPosition  of a transition, 0 all of the first picture to 1 all of the second; a plug-in that
    ///     knows of no position mixes in the same way throughout.
    /// @return a new frame of Format(), not shared yet; filters that change the size give another size. Empty
    ///     when the plug-in wants more input before it gives anything.
    /// @throws kio_exception (kEffectError_BadFrame, kEffectError_PluginFailed), what IPluginCalls throws.
    virtual MF::IVideoFrameRef Render(const std::vector<MF::IVideoFrameRef>& inInputs,
                                      kiomediatypes::TickTime inTime, double inPosition) = 0;
};

/// A plug-in at work on sound of one rate and number of channels.
///
/// Threading: one thread at a time.
class IAudioEffect {
public:
    virtual ~IAudioEffect() = default;

    /// Before the first Process.
    /// @throws kio_exception (kEffectError_BadParameter).
    virtual void SetParameter(const std::string& inName, const std::string& inValue) = 0;
    /// @param inSamples   inFrames * channels values, interleaved, 1 = full scale.
    /// @param outSamples  as many, elsewhere in memory.
    virtual void Process(const float* inSamples, float* outSamples, int inFrames) = 0;
};

/// How an instance is to be made.
struct VideoEffectForm {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    double framesPerSecond = 25;
    /// Of EffectDescription::formats; kPixelFormat_Any takes the best.
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    /// Hands the plug-in pictures of exactly this size, also where the engine would pad them to sizes that
    /// the plug-in gets along with. For trying plug-ins out.
    bool isExact = false;
};

/// Asked of a module (IFilterModule, ITransitionModule) that runs on pictures.
///
/// Threading: any thread. The plug-in stays loaded as long as a module or an instance of it lives.
class IVideoEffectModule : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID()
    {
        static constexpr CFUUIDBytes kID{
            {0x6d, 0x0e, 0x1c, 0x57, 0x21, 0x5b, 0x4c, 0x0a, 0x9f, 0x36, 0x4a, 0x52, 0xe8, 0x0b, 0x73, 0x19}};
        return kID;
    }
    /// @throws kio_exception (kEffectError_BadFrame, kEffectError_Refused, kEffectError_PluginFailed).
    virtual std::unique_ptr<IVideoEffect> Open(const VideoEffectForm& inForm) = 0;
};

/// Asked of a module that runs on sound.
class IAudioEffectModule : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID()
    {
        static constexpr CFUUIDBytes kID{
            {0x0b, 0x83, 0xd2, 0x4e, 0x5a, 0x7f, 0x43, 0x91, 0xa4, 0x1c, 0x6f, 0x90, 0x27, 0xcb, 0xe5, 0x38}};
        return kID;
    }
    /// @throws kio_exception (kEffectError_BadFrame, kEffectError_Refused, kEffectError_PluginFailed).
    virtual std::unique_ptr<IAudioEffect> Open(int inSampleRate, int inChannels) = 0;
};

/// One way of hosting plug-ins.
///
/// Threading: any thread.
class IEffectEngine {
public:
    virtual ~IEffectEngine() = default;

    /// "frei0r", "avfilter", "ladspa".
    virtual const char* Technology() const = 0;
    /// The plug-ins of one file, by the names that Describe takes. May load the file.
    /// @throws kio_exception (kEffectError_NoPlugin).
    virtual std::vector<std::string> PluginNames(const std::string& inFile) = 0;
    /// Loads the plug-in and finds out all about it. What cannot be run is described with a refusal where
    /// enough is known of it: also a file that the loader refuses, under the match name that it would have.
    /// May crash or hang as the plug-in does; so it is called in a child of the process.
    /// @throws kio_exception (kEffectError_NoPlugin).
    virtual EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) = 0;
    /// Files beside inFile whose change makes descriptions out of date: native paths, resolved.
    virtual std::vector<std::string> FilesBehind(const std::string& inFile) = 0;

    /// Whose memory the buffers that plug-ins see come from, from the next Open on; null, as at first, is the
    /// engine's own. Before any plug-in is opened, or after all instances have gone.
    /// @param inMemory  outlives the instances.
    virtual void SetFrameMemory(IFrameMemory* inMemory) = 0;

    /// Loads a plug-in to run it: an IFilterModule for filters (video and audio) and generators.
    /// @throws kio_exception (kEffectError_NoPlugin, kEffectError_Refused).
    virtual TR::IFilterModuleRef OpenFilter(const EffectDescription& inDescription) = 0;
    /// @throws as OpenFilter.
    virtual TR::ITransitionModuleRef OpenTransition(const EffectDescription& inDescription) = 0;
};

/// Changes whenever anything in these headers does, so that a module of another build is noticed.
inline constexpr int kEffectEngineVersion = 2;

/// File names of the modules, below "<library folder>/trhost/", and the one function of each.
inline constexpr const char* kFrei0rModuleFileName = "trhost_frei0r.so";
inline constexpr const char* kAvfilterModuleFileName = "trhost_avfilter.so";
inline constexpr const char* kLadspaModuleFileName = "trhost_ladspa.so";
inline constexpr const char* kEffectEngineFunctionName = "trhost_effect_engine";

/// @param inCalls  lives as long as the process.
/// @return the module's one engine, which lives as long as the process; null when the module was built for
///     another version of these headers.
using EffectEngineFunction = IEffectEngine* (*)(int inVersion, IPluginCalls& inCalls);

} // namespace trhost::effects

extern "C" KIO_EXPORT trhost::effects::IEffectEngine*
trhost_effect_engine(int inVersion, trhost::effects::IPluginCalls& inCalls);
