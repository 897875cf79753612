#include <TR/EffectType.h>

#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Locale.h>
#include <kiocore/config/Localizer.h>

#include <algorithm>
#include <utility>

namespace TR {

using kiocore::classref::ClassFactory;
using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using kiocore::config::Locale;
using kiocore::config::Localizer;

const Guid kEffectTypeClassID("D85F9F4B-FDB5-482f-BD4F-16AACBBE0C94");
const ImmutableString kKey_EffectType("EffectType");
const ImmutableString kStation_EffectType("tr.effecttype");

const ImmutableString EffectType::kGuidKey("Guid");
const ImmutableString EffectType::kNameKey("Name");
const ImmutableString EffectType::kDescriptionsKey("Descriptions");
const ImmutableString EffectType::kDescriptionItemKey("DescriptionItem");
const ImmutableString EffectType::kMatchNamesKey("MatchNames");
const ImmutableString EffectType::kMatchNameItemKey("MatchNameItem");

namespace {

constexpr unsigned int kVersion = 3;
constexpr unsigned int kOldestVersion = 1;

const UTF16String kFallbackLocale = u"en_US";

/// As maps hold them: match names as keys, with nothing behind them.
BE::ValueMap AsMap(const std::vector<UTF16String>& inNames)
{
    BE::ValueMap map;
    for (const UTF16String& name : inNames) {
        map.try_emplace(name);
    }
    return map;
}

InterfaceRef<IEffectType> MakeBuiltIn(const char* inGuid, const UTF16String& inName,
                                      const char* inDescription)
{
    const auto type = MakeObject<EffectType>(Guid(inGuid), inName);
    type->SetDescription(Localizer::GetText(inDescription));
    return type;
}

} // namespace

IEffectType::~IEffectType() = default;
const CFUUIDBytes& IEffectType::InterfaceID()
{
    static constexpr CFUUIDBytes kID{
        {0x9d, 0x41, 0x6b, 0xe3, 0x0c, 0x77, 0x4f, 0x52, 0xa4, 0x18, 0x5e, 0xb0, 0xd2, 0x36, 0xf9, 0x8a}};
    return kID;
}

EffectType::EffectType() = default;
EffectType::EffectType(const Guid& inGuid, const UTF16String& inName, std::vector<UTF16String> inMatchNames)
    : mGuid(inGuid), mName(inName), mMatchNames(std::move(inMatchNames)), mVersion(kVersion)
{}
EffectType::~EffectType() = default;

Guid EffectType::GetGuid() const
{
    return mGuid;
}
UTF16String EffectType::GetName() const
{
    return mName;
}
std::vector<UTF16String> EffectType::GetMatchNames() const
{
    return mMatchNames;
}

UTF16String EffectType::GetDescription() const
{
    if (mDescriptions.empty()) {
        return {};
    }
    auto found = mDescriptions.find(Locale::ApplicationLanguage());
    if (found == mDescriptions.end()) {
        found = mDescriptions.find(kFallbackLocale);
    }
    return found == mDescriptions.end() ? mDescriptions.begin()->second : found->second;
}

void EffectType::SetDescription(const UTF16String& inText)
{
    mDescriptions.insert_or_assign(Locale::ApplicationLanguage(), inText);
}

void* EffectType::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    if (inInterfaceID == IEffectType::InterfaceID()) {
        return static_cast<IEffectType*>(this);
    }
    if (inInterfaceID == BE::ISerializeable::InterfaceID()) {
        return static_cast<BE::ISerializeable*>(this);
    }
    return UnknownBase::QueryMap(inInterfaceID);
}

void EffectType::SerializeToSink(BE::IDictionarySink& inSink) const
{
    inSink.Put(kGuidKey, BE::SerializeableValue<Guid>(mGuid));
    inSink.Put(kNameKey, mName);
    inSink.PutMap(kDescriptionsKey, kDescriptionItemKey, mDescriptions);
    inSink.PutMap(kMatchNamesKey, kMatchNameItemKey, AsMap(mMatchNames));
}

void EffectType::SerializeIn(unsigned int inVersion, BE::DataReader& inReader)
{
    if (inVersion < kOldestVersion) {
        throw BE::exIncomingObjectVersionTooOld(GetClassName(), inVersion, kOldestVersion);
    }
    mVersion = kVersion;
    BE::SerializeableValue<Guid> guid(mGuid);
    inReader.ReadValue(kGuidKey, guid);
    mGuid = guid.Get();
    inReader.ReadValue(kNameKey, mName);
    BE::ReadValueMap(inReader, kDescriptionsKey, mDescriptions);
    BE::ValueMap matchNames;
    BE::ReadValueMap(inReader, kMatchNamesKey, matchNames);
    mMatchNames.clear();
    for (const auto& [name, nothing] : matchNames) {
        mMatchNames.push_back(name);
    }
}

void EffectType::SerializeOut(BE::DataWriter& inWriter) const
{
    inWriter.WriteValue(kGuidKey, BE::SerializeableValue<Guid>(mGuid));
    inWriter.WriteValue(kNameKey, mName);
    BE::WriteValueMap(inWriter, kDescriptionsKey, kDescriptionItemKey, mDescriptions);
    BE::WriteValueMap(inWriter, kMatchNamesKey, kMatchNameItemKey, AsMap(mMatchNames));
}

unsigned int EffectType::GetVersion() const
{
    return mVersion;
}
Guid EffectType::GetClassID() const
{
    return kEffectTypeClassID;
}
ImmutableString EffectType::GetClassName() const
{
    return kKey_EffectType;
}

// Translations are found by these very keys: the forms differ, and must stay as they are.
InterfaceRef<IEffectType> GetAcceleratedTimeEffectType()
{
    return MakeBuiltIn(
        "94CAF14F-E00B-4c06-8182-167CD7DF3AD5", u"Accelerated",
        "$$$/VRE/Halcyon/Tracery/Foundation/EffectType/AcceleratedDescription=Accelerated Effects");
}
InterfaceRef<IEffectType> GetYUVEffectType()
{
    return MakeBuiltIn("FB4674ED-B1AF-43c0-B567-84CD4826B09C", u"YUV",
                       "$$$/Halcyon/Tracery/Foundation/EffectType/YUVDescription=YUV Effects");
}
InterfaceRef<IEffectType> Get32BitEffectType()
{
    return MakeBuiltIn("6E313327-CB78-4286-8B13-9A2D2E739D3E", u"32BitColor",
                       "$$$/Halcyon/Tracery/Foundation/EffectType/32bitDescription=32-bit Color");
}

InterfaceRef<IEffectType> LoadEffectType(const UTF16String& inPath)
{
    const auto type = MakeObject<EffectType>();
    const InterfaceRef<BE::IXMLFileReader> reader =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
    if (reader->Open(inPath) >= 0) {
        type->SerializeIn(kVersion, reader->GetDataReader());
    }
    return type;
}

void AddPixelFormatEffects(const std::vector<kiomediatypes::PixelFormat>& inPixelFormats,
                           std::vector<InterfaceRef<IEffectType>>& ioEffectTypes)
{
    if (std::any_of(inPixelFormats.begin(), inPixelFormats.end(), &kiomediatypes::IsYUV)) {
        ioEffectTypes.push_back(GetYUVEffectType());
    }
    if (std::any_of(inPixelFormats.begin(), inPixelFormats.end(), [](kiomediatypes::PixelFormat format) {
            return kiomediatypes::DepthOf(format) == kiomediatypes::PixelDepth::k32Float;
        })) {
        ioEffectTypes.push_back(Get32BitEffectType());
    }
}

} // namespace TR
