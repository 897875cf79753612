#include "AvfilterModules.h"

#include "Carriers.h"
#include "StreamEffect.h"
#include "TransitionEffect.h"
#include "support/KeptText.h"

#include <VF/VideoFrames.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace trhost::effects::avfilter {
namespace {

using kiocore::ImmutableString;
using kiocore::kio_exception;
using kiocore::classref::MakeObject;
using kiocore::classref::RefToSelf;
using kiocore::classref::UnknownBase;

TR::EffectPluginMetadata MetadataOf(const EffectDescription& inDescription)
{
    return {ImmutableString(inDescription.matchName),
            inDescription.technology,
            inDescription.displayName,
            inDescription.category,
            inDescription.author,
            inDescription.version,
            inDescription.isFirstParty};
}

/// A form with a format that the plug-in takes.
VideoEffectForm Checked(const EffectDescription& inDescription, VideoEffectForm inForm)
{
    const auto refuse = [&](const std::string& inProblem) {
        throw kio_exception(inProblem, kEffectError_BadFrame);
    };
    const auto isSide = [](std::uint32_t inSide) { return inSide >= 1 && inSide <= VF::kMostPixelsPerSide; };
    if (!isSide(inForm.width) || !isSide(inForm.height)) {
        refuse(KeptText("$$$/Halcyon/TrHost/Effects/OpenedForSize=@0: was opened for pictures of @1, "
                        "expected 1 to @2 pixels each way#{@1: 640x480}",
                        {inDescription.matchName,
                         std::to_string(inForm.width) + "x" + std::to_string(inForm.height),
                         std::to_string(VF::kMostPixelsPerSide)}));
    }
    if (!std::isfinite(inForm.framesPerSecond) || inForm.framesPerSecond <= 0) {
        refuse(KeptText("$$$/Halcyon/TrHost/Effects/OpenedForRate=@0: was opened for @1 frames a second, "
                        "expected more than none",
                        {inDescription.matchName, std::to_string(inForm.framesPerSecond)}));
    }
    const auto& formats = inDescription.formats;
    const auto best = formats.empty() ? kiomediatypes::kPixelFormat_BGRA_4444_8u : formats.front();
    if (inForm.format == kiomediatypes::kPixelFormat_Any) {
        inForm.format = best;
    }
    if (inForm.format != best && std::find(formats.begin(), formats.end(), inForm.format) == formats.end()) {
        refuse(KeptText(
            "$$$/Halcyon/TrHost/Effects/OpenedForFormat=@0: was opened for format @1, which it does not "
            "take; its best is @2",
            {inDescription.matchName, kiomediatypes::NameOf(inForm.format), kiomediatypes::NameOf(best)}));
    }
    return inForm;
}

EffectSource SourceOf(const EffectDescription& inDescription, const AVFilter& inFilter, int inInputs,
                      std::function<void(const std::function<void()>&)> inCall)
{
    return {&inFilter, inDescription.matchName, inInputs, inDescription.formats.empty(), std::move(inCall)};
}

class FilterModule final : public TR::IFilterModule, public IVideoEffectModule, public virtual UnknownBase {
public:
    FilterModule(const EffectDescription& inDescription, const AVFilter& inFilter, IPluginCalls& inCalls)
        : mDescription(inDescription), mFilter(inFilter), mCalls(inCalls)
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (IsSame(inInterfaceID, TR::IFilterModule::InterfaceID())) {
            return static_cast<TR::IFilterModule*>(this);
        }
        if (IsSame(inInterfaceID, IVideoEffectModule::InterfaceID())) {
            return static_cast<IVideoEffectModule*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }
    ImmutableString GetMatchName() const override { return mDescription.matchName; }
    TR::EffectPluginMetadata GetMetadata() const override { return MetadataOf(mDescription); }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override
    {
        return kiocore::utility::ToUTF16(mDescription.displayName);
    }
    std::unique_ptr<IVideoEffect> Open(const VideoEffectForm& inForm) override
    {
        const TR::IFilterModuleRef self(RefToSelf(*this));
        auto call = [&calls = mCalls, self](const std::function<void()>& inCall) {
            CallPlugin(calls, self, inCall);
        };
        const int inputs = mDescription.kind == EffectKind::kGenerator ? 0 : 1;
        return std::make_unique<StreamEffect>(SourceOf(mDescription, mFilter, inputs, std::move(call)),
                                              Checked(mDescription, inForm));
    }

    static bool IsSame(const CFUUIDBytes& inA, const CFUUIDBytes& inB)
    {
        return std::memcmp(&inA, &inB, sizeof inA) == 0;
    }

private:
    const EffectDescription mDescription;
    const AVFilter& mFilter;
    IPluginCalls& mCalls;
};

class TransitionModule final : public TR::ITransitionModule,
                               public IVideoEffectModule,
                               public virtual UnknownBase {
public:
    TransitionModule(const EffectDescription& inDescription, const AVFilter& inFilter, IPluginCalls& inCalls)
        : mDescription(inDescription), mFilter(inFilter), mCalls(inCalls)
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (FilterModule::IsSame(inInterfaceID, TR::ITransitionModule::InterfaceID())) {
            return static_cast<TR::ITransitionModule*>(this);
        }
        if (FilterModule::IsSame(inInterfaceID, IVideoEffectModule::InterfaceID())) {
            return static_cast<IVideoEffectModule*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }
    TR::EffectPluginMetadata GetMetadata() const override { return MetadataOf(mDescription); }
    std::unique_ptr<IVideoEffect> Open(const VideoEffectForm& inForm) override
    {
        const TR::ITransitionModuleRef self(RefToSelf(*this));
        auto call = [&calls = mCalls, self, name = ImmutableString(mDescription.matchName)](
                        const std::function<void()>& inCall) { CallPlugin(calls, name, self, inCall); };
        return std::make_unique<TransitionEffect>(SourceOf(mDescription, mFilter, 2, std::move(call)),
                                                  Checked(mDescription, inForm));
    }

private:
    const EffectDescription mDescription;
    const AVFilter& mFilter;
    IPluginCalls& mCalls;
};

} // namespace

TR::IFilterModuleRef MakeFilterModule(const EffectDescription& inDescription, const AVFilter& inFilter,
                                      IPluginCalls& inCalls)
{
    return MakeObject<FilterModule>(inDescription, inFilter, inCalls);
}

TR::ITransitionModuleRef MakeTransitionModule(const EffectDescription& inDescription,
                                              const AVFilter& inFilter, IPluginCalls& inCalls)
{
    return MakeObject<TransitionModule>(inDescription, inFilter, inCalls);
}

} // namespace trhost::effects::avfilter
