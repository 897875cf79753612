#pragma once

#include <TR/PluginModules.h>
#include <kiocore/classref/InterfaceRef.h>

#include <functional>
#include <string>

namespace specimen {

inline TR::EffectPluginMetadata Metadata(const std::string& inMatchName)
{
    return {inMatchName, "test", inMatchName + " shown", "Category", "Author", "1.2", false};
}

/// The bytes that crash detection makes of the above, for the session given.
inline std::string ExpectedJSON(const std::string& inMatchName, const std::string& inSession = "")
{
    return R"({"author":"","categoryName":"Category","displayName":")" + inMatchName +
           R"( shown","isFirstParty":false,"matchName":")" + inMatchName +
           R"(","pluginHostTechnology":"","sessionID":")" + inSession + R"(","type":"","version":"1.2"})";
}

/// A loaded plug-in that counts how often it is asked about itself.
class FilterModule final : public TR::IFilterModule, public virtual kiocore::classref::UnknownBase {
public:
    explicit FilterModule(std::string inMatchName, kiocore::UTF16String inDisplayName = u"Shown")
        : mMatchName(std::move(inMatchName)), mDisplayName(std::move(inDisplayName))
    {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == TR::IFilterModule::InterfaceID() ? static_cast<TR::IFilterModule*>(this)
                                                                 : UnknownBase::QueryMap(inInterfaceID);
    }
    kiocore::ImmutableString GetMatchName() const override
    {
        ++matchNameCount;
        return mMatchName;
    }
    TR::EffectPluginMetadata GetMetadata() const override
    {
        ++metadataCount;
        if (onMetadata) {
            onMetadata();
        }
        return Metadata(mMatchName);
    }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override { return mDisplayName; }

    mutable int matchNameCount = 0;
    mutable int metadataCount = 0;
    std::function<void()> onMetadata;

private:
    const std::string mMatchName;
    const kiocore::UTF16String mDisplayName;
};

class TransitionModule final : public TR::ITransitionModule, public virtual kiocore::classref::UnknownBase {
public:
    explicit TransitionModule(std::string inMatchName) : mMatchName(std::move(inMatchName)) {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == TR::ITransitionModule::InterfaceID()
                   ? static_cast<TR::ITransitionModule*>(this)
                   : UnknownBase::QueryMap(inInterfaceID);
    }
    TR::EffectPluginMetadata GetMetadata() const override
    {
        ++metadataCount;
        return Metadata(mMatchName);
    }

    mutable int metadataCount = 0;

private:
    const std::string mMatchName;
};

} // namespace specimen
