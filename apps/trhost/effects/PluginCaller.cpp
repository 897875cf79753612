#include "PluginCaller.h"

#include <kiocore/classref/UnknownBase.h>
#include <kiocore/debug/Trace.h>

#include <exception>
#include <string>

namespace trhost::effects {
namespace {

template <typename Interface>
class NameOnly : public Interface, public virtual kiocore::classref::UnknownBase {
public:
    explicit NameOnly(const EffectDescription& inDescription)
        : mMetadata(MetadataOf(inDescription)), mMediaType(MediaTypeOf(inDescription.kind))
    {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == Interface::InterfaceID() ? static_cast<Interface*>(this)
                                                         : UnknownBase::QueryMap(inInterfaceID);
    }
    TR::EffectPluginMetadata GetMetadata() const override { return mMetadata; }

protected:
    const TR::EffectPluginMetadata mMetadata;
    const kiocore::Guid mMediaType;
};

class NamedFilter final : public NameOnly<TR::IFilterModule> {
public:
    using NameOnly::NameOnly;
    kiocore::ImmutableString GetMatchName() const override { return mMetadata.matchName; }
    kiocore::Guid GetMediaType() const override { return mMediaType; }
    kiocore::UTF16String GetDisplayName() const override
    {
        return kiocore::utility::ToUTF16(mMetadata.displayName);
    }
};
using NamedTransition = NameOnly<TR::ITransitionModule>;

} // namespace

TR::EffectPluginMetadata MetadataOf(const EffectDescription& inDescription)
{
    TR::EffectPluginMetadata metadata;
    metadata.matchName = inDescription.matchName;
    metadata.technology = inDescription.technology;
    metadata.displayName = inDescription.displayName;
    metadata.categoryName = inDescription.category;
    metadata.author = inDescription.author;
    metadata.version = inDescription.version;
    metadata.isFirstParty = inDescription.isFirstParty;
    return metadata;
}

kiocore::Guid MediaTypeOf(EffectKind inKind)
{
    return inKind == EffectKind::kAudioFilter ? TR::kMediaType_Audio : TR::kMediaType_Video;
}

PluginCaller::PluginCaller(IPluginCalls& inCalls, const EffectDescription& inDescription)
    : mCalls(&inCalls), mMatchName(inDescription.matchName)
{
    if (inDescription.kind == EffectKind::kTransition) {
        mTransition = kiocore::classref::MakeObject<NamedTransition>(inDescription);
    } else {
        mFilter = kiocore::classref::MakeObject<NamedFilter>(inDescription);
    }
}

void PluginCaller::Finally(std::string_view inWhat, const std::function<void()>& inFunction) const noexcept
{
    std::string reason = "unknown exception";
    try {
        (*this)(inFunction);
        return;
    } catch (const std::exception& failure) {
        reason = failure.what();
    } catch (...) {
    }
    kiocore::debug::Trace(1, "Effects", std::string(inWhat) + " failed: " + reason);
}

} // namespace trhost::effects
