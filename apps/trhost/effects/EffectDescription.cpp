#include "EffectDescription.h"

#include <kiocore/filesupport/NativePath.h>
#include <kiocore/serialization/Serializer.h>

#include <iterator>
#include <utility>

namespace trhost::effects {

namespace {

constexpr const char* kKindNames[] = {"video filter", "transition", "generator", "audio filter"};
constexpr const char* kParameterKindNames[] = {"bool", "integer", "number",  "choice",
                                               "text", "color",   "position"};

constexpr const char* kKindTexts[] = {"$$$/Halcyon/TrHost/Effects/Kind/VideoFilter=video filter",
                                      "$$$/Halcyon/TrHost/Effects/Kind/Transition=transition",
                                      "$$$/Halcyon/TrHost/Effects/Kind/Generator=generator",
                                      "$$$/Halcyon/TrHost/Effects/Kind/AudioFilter=audio filter"};
constexpr const char* kParameterKindTexts[] = {
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Bool=bool#{a value that is true or false}",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Integer=integer",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Number=number",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Choice=choice",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Text=text",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Color=color",
    "$$$/Halcyon/TrHost/Effects/ParameterKind/Position=position"};

using kiocore::serialization::JSON;

template <typename Enum, std::size_t N>
Enum FromName(const char* const (&inNames)[N], const JSON& inValue, const char* inExpected)
{
    const std::string& name = kiocore::serialization::AsText(inValue);
    for (std::size_t i = 0; i < N; ++i) {
        if (name == inNames[i]) {
            return static_cast<Enum>(i);
        }
    }
    throw kiocore::serialization::bad_cast_exception(kiocore::serialization::Describe(inValue), inExpected);
}

} // namespace

const char* NameOf(EffectKind inKind)
{
    return kKindNames[static_cast<std::size_t>(inKind)];
}

const char* NameOf(ParameterKind inKind)
{
    return kParameterKindNames[static_cast<std::size_t>(inKind)];
}

const char* TextOf(EffectKind inKind)
{
    return kKindTexts[static_cast<std::size_t>(inKind)];
}

const char* TextOf(ParameterKind inKind)
{
    return kParameterKindTexts[static_cast<std::size_t>(inKind)];
}

} // namespace trhost::effects

namespace kiocore::serialization {

using trhost::effects::EffectDescription;
using trhost::effects::EffectKind;
using trhost::effects::EffectParameter;
using trhost::effects::ParameterKind;

template <>
struct JSONConvert<kiomediatypes::PixelFormat> {
    static JSON ToJSON(kiomediatypes::PixelFormat inFormat)
    {
        return std::string(kiomediatypes::NameOf(inFormat));
    }
    static kiomediatypes::PixelFormat FromJSON(const JSON& inValue)
    {
        const auto format = kiomediatypes::PixelFormatNamed(AsText(inValue));
        if (format == kiomediatypes::kPixelFormat_Any) {
            throw bad_cast_exception(Describe(inValue), "the name of a pixel format");
        }
        return format;
    }
};

template <>
struct JSONConvert<EffectParameter> {
    static JSON ToJSON(const EffectParameter& inValue)
    {
        JSONObject object;
        AddMember(object, "name", inValue.name);
        AddMember(object, "displayName", inValue.displayName);
        AddMember(object, "explanation", inValue.explanation);
        AddMember(object, "kind", std::string(NameOf(inValue.kind)));
        AddMember(object, "default", inValue.defaultValue);
        if (inValue.hasRange) {
            AddMember(object, "minimum", inValue.minimum);
            AddMember(object, "maximum", inValue.maximum);
        }
        AddMember(object, "choices", inValue.choices);
        return object;
    }
    static EffectParameter FromJSON(const JSON& inValue)
    {
        const JSONObject& object = AsObject(inValue);
        EffectParameter value;
        value.name = GetMember<std::string>(object, "name");
        ReadMember(object, "displayName", value.displayName);
        ReadMember(object, "explanation", value.explanation);
        value.kind = trhost::effects::FromName<ParameterKind>(
            trhost::effects::kParameterKindNames, GetMember<JSON>(object, "kind"), "a kind of parameter");
        ReadMember(object, "default", value.defaultValue);
        const bool hasMinimum = ReadMember(object, "minimum", value.minimum);
        value.hasRange = ReadMember(object, "maximum", value.maximum) && hasMinimum;
        ReadMember(object, "choices", value.choices);
        return value;
    }
};

template <>
struct JSONConvert<EffectDescription> {
    static JSON ToJSON(const EffectDescription& inValue)
    {
        JSONObject object;
        AddMember(object, "matchName", inValue.matchName);
        AddMember(object, "technology", inValue.technology);
        AddMember(object, "pluginName", inValue.pluginName);
        // A path is bytes; this form gives every one of them back.
        AddMember(object, "file", filesupport::FromNative(inValue.file));
        AddMember(object, "displayName", inValue.displayName);
        AddMember(object, "kind", std::string(NameOf(inValue.kind)));
        AddMember(object, "category", inValue.category);
        AddMember(object, "author", inValue.author);
        AddMember(object, "version", inValue.version);
        AddMember(object, "explanation", inValue.explanation);
        AddMember(object, "formats", inValue.formats);
        AddMember(object, "isAccelerated", inValue.isAccelerated);
        AddMember(object, "isFirstParty", inValue.isFirstParty);
        AddMember(object, "parameters", inValue.parameters);
        AddMember(object, "audioInputs", inValue.audioInputs);
        AddMember(object, "audioOutputs", inValue.audioOutputs);
        AddMember(object, "refusal", inValue.refusal);
        return object;
    }
    static EffectDescription FromJSON(const JSON& inValue)
    {
        const JSONObject& object = AsObject(inValue);
        EffectDescription value;
        value.matchName = GetMember<std::string>(object, "matchName");
        value.technology = GetMember<std::string>(object, "technology");
        value.pluginName = GetMember<std::string>(object, "pluginName");
        value.file = filesupport::ToNative(GetMember<utility::UTF16String>(object, "file"));
        ReadMember(object, "displayName", value.displayName);
        value.kind = trhost::effects::FromName<EffectKind>(
            trhost::effects::kKindNames, GetMember<JSON>(object, "kind"), "a kind of effect");
        ReadMember(object, "category", value.category);
        ReadMember(object, "author", value.author);
        ReadMember(object, "version", value.version);
        ReadMember(object, "explanation", value.explanation);
        ReadMember(object, "formats", value.formats);
        ReadMember(object, "isAccelerated", value.isAccelerated);
        ReadMember(object, "isFirstParty", value.isFirstParty);
        ReadMember(object, "parameters", value.parameters);
        ReadMember(object, "audioInputs", value.audioInputs);
        ReadMember(object, "audioOutputs", value.audioOutputs);
        ReadMember(object, "refusal", value.refusal);
        return value;
    }
};

} // namespace kiocore::serialization

namespace trhost::effects {

using DescriptionSerializer = kiocore::serialization::Serializer<EffectDescription>;

kiocore::serialization::JSON ToJSON(const EffectDescription& inDescription)
{
    return kiocore::serialization::JSONConvert<EffectDescription>::ToJSON(inDescription);
}

EffectDescription FromJSON(const kiocore::serialization::JSON& inValue)
{
    return kiocore::serialization::JSONConvert<EffectDescription>::FromJSON(inValue);
}

std::string ToJSONText(const EffectDescription& inDescription)
{
    return DescriptionSerializer::ToUTF8String(inDescription);
}

EffectDescription FromJSONText(const std::string& inText)
{
    return DescriptionSerializer::FromUTF8String(inText);
}

} // namespace trhost::effects
