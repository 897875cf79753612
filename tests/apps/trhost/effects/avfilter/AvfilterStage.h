#pragma once

#include "support/FrameSamples.h"
#include "support/GuardedFrame.h"

#include <effects/EffectEngine.h>
#include <kiocore/config/Errors.h>
#include <support/KeptText.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace avfiltertests {

using kiomediatypes::PixelFormat;

/// Runs every call and notes the match name of its plug-in.
class NotingCalls : public trhost::effects::IPluginCalls {
public:
    void Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall) override;
    void Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
              const std::function<void()>& inCall) override;

    std::vector<std::string> names;
};
NotingCalls& Calls();

/// The module's engine, loaded as trhost loads it, with Calls().
trhost::effects::IEffectEngine& Engine();

using Parameters = std::vector<std::pair<std::string, std::string>>;

struct Form {
    PixelFormat format = kiomediatypes::kPixelFormat_BGRA_4444_8u;
    std::uint32_t width = 64;
    std::uint32_t height = 48;
};
/// An instance of a filter, source or transition with parameters.
std::unique_ptr<trhost::effects::IVideoEffect> Open(const std::string& inFilter, const Form& inForm,
                                                    const Parameters& inParameters = {});

/// A picture between pages that nobody may touch, with padded rows, not to be written any more.
support::GuardedFrameRef Picture(const Form& inForm, const support::FrameSamples::Source& inSource);
support::GuardedFrameRef Plain(const Form& inForm, const std::array<double, 4>& inRGBA);
/// Differs from sample to sample and component to component, in steps that every format can express.
double Pattern(PixelFormat inFormat, int inComponent, double inX, double inY);

/// The code of the kio_exception that a call ends with, 0 when it ends well; its text in outText.
template <typename Function>
std::uint32_t FailureOf(Function&& inFunction, std::string& outText)
{
    try {
        inFunction();
        outText.clear();
        return 0;
    } catch (const kiocore::kio_exception& failure) {
        outText = trhost::ToldText(failure.what());
        return failure.Code();
    }
}

/// The formats by name, "bgra8 uyvy".
std::string NamesOf(const std::vector<PixelFormat>& inFormats);

} // namespace avfiltertests
