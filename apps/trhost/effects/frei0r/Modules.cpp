#include "Modules.h"

#include "Frei0rEffect.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <new>
#include <string>
#include <utility>

namespace trhost::effects::frei0r {
namespace {

using kiocore::classref::UnknownBase;

/// What both kinds have in common.
template <typename Interface>
class Module : public Interface, public IVideoEffectModule, public virtual UnknownBase {
public:
    Module(IPluginCalls& inCalls, PluginUseRef inUse, const EffectDescription& inDescription)
        : mCalls(inCalls), mUse(std::move(inUse)), mMetadata(MetadataOf(inDescription))
    {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (inInterfaceID == Interface::InterfaceID()) {
            return static_cast<Interface*>(this);
        }
        if (inInterfaceID == IVideoEffectModule::InterfaceID()) {
            return static_cast<IVideoEffectModule*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }

    TR::EffectPluginMetadata GetMetadata() const override { return mMetadata; }
    std::unique_ptr<IVideoEffect> Open(const VideoEffectForm& inForm) override
    {
        const std::string matchName = mMetadata.matchName.AsString();
        try {
            return std::make_unique<Frei0rEffect>(mUse, Caller(), matchName, inForm);
        } catch (const std::bad_alloc&) {
            throw kiocore::kio_exception(
                KeptText("$$$/Halcyon/TrHost/Effects/NoMemoryForPictures=@0 finds no memory for pictures of "
                         "@1 pixels#{@1: 640 x 480}",
                         {matchName, std::to_string(inForm.width) + " x " + std::to_string(inForm.height)}),
                kEffectError_BadFrame);
        }
    }

protected:
    /// Keeps this module.
    virtual PluginCaller Caller() = 0;

    IPluginCalls& mCalls;
    const PluginUseRef mUse;
    const TR::EffectPluginMetadata mMetadata;
};

class FilterModule final : public Module<TR::IFilterModule> {
public:
    using Module::Module;
    kiocore::ImmutableString GetMatchName() const override { return mMetadata.matchName; }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override
    {
        return kiocore::utility::ToUTF16(mMetadata.displayName);
    }

protected:
    PluginCaller Caller() override { return {mCalls, kiocore::classref::RefToSelf(*this)}; }
};

class TransitionModule final : public Module<TR::ITransitionModule> {
public:
    using Module::Module;

protected:
    PluginCaller Caller() override
    {
        return {mCalls, mMetadata.matchName, kiocore::classref::RefToSelf(*this)};
    }
};

} // namespace

TR::IFilterModuleRef MakeFilterModule(IPluginCalls& inCalls, PluginUseRef inUse,
                                      const EffectDescription& inDescription)
{
    return kiocore::classref::MakeObject<FilterModule>(inCalls, std::move(inUse), inDescription);
}

TR::ITransitionModuleRef MakeTransitionModule(IPluginCalls& inCalls, PluginUseRef inUse,
                                              const EffectDescription& inDescription)
{
    return kiocore::classref::MakeObject<TransitionModule>(inCalls, std::move(inUse), inDescription);
}

} // namespace trhost::effects::frei0r
