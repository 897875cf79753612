#include "AvfilterStage.h"

#include <dlfcn.h>

#include <cmath>
#include <stdexcept>

namespace avfiltertests {

using namespace trhost::effects;

void NotingCalls::Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall)
{
    names.push_back(inModule->GetMatchName().AsString());
    inCall();
}

void NotingCalls::Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
                       const std::function<void()>& inCall)
{
    names.push_back(inModule->GetMetadata().matchName == inMatchName ? inMatchName.AsString() : "?");
    inCall();
}

NotingCalls& Calls()
{
    static NotingCalls sCalls;
    return sCalls;
}

IEffectEngine& Engine()
{
    static IEffectEngine* const sEngine = [] {
        void* library = dlopen(AVFILTER_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        void* function = library ? dlsym(library, kEffectEngineFunctionName) : nullptr;
        if (!function) {
            throw std::runtime_error(dlerror());
        }
        return reinterpret_cast<EffectEngineFunction>(function)(kEffectEngineVersion, Calls());
    }();
    return *sEngine;
}

std::unique_ptr<IVideoEffect> Open(const std::string& inFilter, const Form& inForm,
                                   const Parameters& inParameters)
{
    const EffectDescription description = Engine().Describe("", inFilter);
    const kiocore::InterfaceRef<IVideoEffectModule> module =
        description.kind == EffectKind::kTransition
            ? kiocore::InterfaceRef<IVideoEffectModule>(Engine().OpenTransition(description))
            : kiocore::InterfaceRef<IVideoEffectModule>(Engine().OpenFilter(description));
    auto effect = module->Open({inForm.width, inForm.height, 25, inForm.format});
    for (const auto& [name, value] : inParameters) {
        effect->SetParameter(name, value);
    }
    return effect;
}

support::GuardedFrameRef Picture(const Form& inForm, const support::FrameSamples::Source& inSource)
{
    support::GuardedFrame::Form form;
    form.format = inForm.format;
    form.width = inForm.width;
    form.height = inForm.height;
    form.paddingBytes = 20;
    const support::GuardedFrameRef frame = support::GuardedFrame::Make(form);
    support::FrameSamples(frame).Fill(inSource);
    frame->PrepareForSharing();
    return frame;
}

support::GuardedFrameRef Plain(const Form& inForm, const std::array<double, 4>& inRGBA)
{
    const auto codes = support::CodesOf(inRGBA, inForm.format, {});
    return Picture(inForm, [&](int inComponent, double, double) {
        return inForm.format == kiomediatypes::kPixelFormat_BGRA_4444_32f
                   ? codes[std::size_t(inComponent)]
                   : std::round(codes[std::size_t(inComponent)]);
    });
}

double Pattern(PixelFormat inFormat, int inComponent, double inX, double inY)
{
    const int step = int(inX * 5 + inY * 11) * 3 + inComponent * 17;
    return inFormat == kiomediatypes::kPixelFormat_BGRA_4444_32f ? step % 200 / 256.0 : 20 + step % 200;
}

std::string NamesOf(const std::vector<PixelFormat>& inFormats)
{
    std::string names;
    for (const PixelFormat format : inFormats) {
        names += std::string(names.empty() ? "" : " ") + kiomediatypes::NameOf(format);
    }
    return names;
}

} // namespace avfiltertests
