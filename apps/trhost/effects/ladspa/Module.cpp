#include "Module.h"

#include "../PluginCaller.h"
#include "LadspaEffect.h"

namespace trhost::effects::ladspa {
namespace {

using kiocore::classref::UnknownBase;

class Module final : public TR::IFilterModule, public IAudioEffectModule, public virtual UnknownBase {
public:
    Module(IPluginCalls& inCalls, const LADSPA_Descriptor& inPlugin, const EffectDescription& inDescription)
        : mCalls(inCalls), mPlugin(inPlugin), mMetadata(MetadataOf(inDescription))
    {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (inInterfaceID == TR::IFilterModule::InterfaceID()) {
            return static_cast<TR::IFilterModule*>(this);
        }
        if (inInterfaceID == IAudioEffectModule::InterfaceID()) {
            return static_cast<IAudioEffectModule*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }

    kiocore::ImmutableString GetMatchName() const override { return mMetadata.matchName; }
    TR::EffectPluginMetadata GetMetadata() const override { return mMetadata; }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Audio; }
    kiocore::UTF16String GetDisplayName() const override
    {
        return kiocore::utility::ToUTF16(mMetadata.displayName);
    }
    std::unique_ptr<IAudioEffect> Open(int inSampleRate, int inChannels) override
    {
        return std::make_unique<LadspaEffect>(mPlugin,
                                              PluginCaller(mCalls, kiocore::classref::RefToSelf(*this)),
                                              mMetadata.matchName.AsString(), inSampleRate, inChannels);
    }

private:
    IPluginCalls& mCalls;
    const LADSPA_Descriptor& mPlugin; // of a file that stays loaded
    const TR::EffectPluginMetadata mMetadata;
};

} // namespace

TR::IFilterModuleRef MakeModule(IPluginCalls& inCalls, const LADSPA_Descriptor& inPlugin,
                                const EffectDescription& inDescription)
{
    return kiocore::classref::MakeObject<Module>(inCalls, inPlugin, inDescription);
}

} // namespace trhost::effects::ladspa
