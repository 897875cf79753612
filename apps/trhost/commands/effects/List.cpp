// What effects there are, and which of them are switched on.
#include "../EffectOptions.h"

#include "../../support/DisabledEffects.h"
#include "../../support/Failure.h"
#include "EffectText.h"
#include "Switching.h"

#include <TR/EffectEnablement.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>

namespace trhost {

namespace {

using effects::EffectDescription;
using effects::EffectParameter;
using kiocore::utility::ToUTF16;

JsonLine AsJson(const EffectParameter& inParameter)
{
    JsonLine object;
    object.Add("name", inParameter.name)
        .Add("displayName", inParameter.displayName)
        .Add("kind", NameOf(inParameter.kind))
        .Add("default", inParameter.defaultValue);
    if (inParameter.hasRange) {
        object.Add("minimum", inParameter.minimum).Add("maximum", inParameter.maximum);
    }
    if (!inParameter.choices.empty()) {
        object.Add("choices", TextsOf(inParameter.choices));
    }
    return object.Add("explanation", inParameter.explanation);
}

/// "number from 0 to 1, default 0.5", "choice of a, b, default a".
UTF16String DescribeParameter(const EffectParameter& inParameter)
{
    UTF16String text = Text(TextOf(inParameter.kind));
    if (inParameter.hasRange) {
        text = Text("$$$/Halcyon/TrHost/ParamRange=@0 from @1 to @2",
                    {text, NumberText(inParameter.minimum), NumberText(inParameter.maximum)});
    }
    if (!inParameter.choices.empty()) {
        UTF16String choices;
        for (const std::string& choice : inParameter.choices) {
            choices += (choices.empty() ? u"" : u", ") + ToUTF16(choice);
        }
        text = Text("$$$/Halcyon/TrHost/ParamChoices=@0 of @1", {text, choices});
    }
    if (!inParameter.defaultValue.empty()) {
        text =
            Text("$$$/Halcyon/TrHost/ParamDefault=@0, default @1", {text, ToUTF16(inParameter.defaultValue)});
    }
    return text;
}

UTF16String FormatNames(const EffectDescription& inEffect)
{
    UTF16String names;
    for (const kiomediatypes::PixelFormat format : inEffect.formats) {
        names += (names.empty() ? u"" : u" ") + ToUTF16(kiomediatypes::NameOf(format));
    }
    return names;
}

void ShowLine(Output& ioOutput, const char* inName, const UTF16String& inValue)
{
    if (!inValue.empty()) {
        ioOutput.Line(ToUTF16(inName) + u" = " + inValue);
    }
}

void ShowInfo(Output& ioOutput, const CatalogueEffect& inEffect, const EffectCrashes& inCrashes)
{
    const EffectDescription& effect = inEffect.description;
    ShowLine(ioOutput, "match-name", ToUTF16(effect.matchName));
    ShowLine(ioOutput, "name", ToUTF16(effect.displayName));
    ShowLine(ioOutput, "kind", Text(TextOf(effect.kind)));
    ShowLine(ioOutput, "category", ToUTF16(effect.category));
    ShowLine(ioOutput, "author", ToUTF16(effect.author));
    ShowLine(ioOutput, "version", ToUTF16(effect.version));
    ShowLine(ioOutput, "explanation", ToUTF16(effect.explanation));
    ShowLine(ioOutput, "types", TypeNames(inEffect));
    ShowLine(ioOutput, "formats", FormatNames(effect));
    ShowLine(ioOutput, "state", StateOf(inEffect, inCrashes));
    ShowLine(ioOutput, "file", kiocore::filesupport::FromNative(effect.file));
    for (const EffectParameter& parameter : effect.parameters) {
        ioOutput.Line(
            Text("$$$/Halcyon/TrHost/ParamLine=parameter @0: @1@2",
                 {ToUTF16(parameter.name), DescribeParameter(parameter),
                  parameter.explanation.empty() ? UTF16String() : u"; " + ToUTF16(parameter.explanation)}));
    }
}

std::vector<std::string> NamesOf(const std::vector<const CatalogueEffect*>& inEffects)
{
    std::vector<std::string> names;
    for (const CatalogueEffect* effect : inEffects) {
        names.push_back(effect->description.matchName);
    }
    return names;
}

/// The names that are no patterns: what is switched off may have been uninstalled, and is switched on by name
/// all the same.
bool IsSwitchedOffByName(const std::vector<std::string>& inNames)
{
    const std::set<std::string> disabled = ReadDisabledEffects();
    return !inNames.empty() && std::all_of(inNames.begin(), inNames.end(), [&](const std::string& inName) {
        return disabled.count(inName) != 0;
    });
}

} // namespace

int EffectsList(Context& ioContext, const EffectSearch& inSearch)
{
    const EffectHost host(ioContext, inSearch);
    const EffectCrashes crashes = ReadEffectCrashes(ioContext.folders);
    for (const CatalogueEffect& effect : host.Effects()) {
        ioContext.output.Result(LineOf(effect, crashes), AsJson(effect, crashes));
    }
    return kExit_Done;
}

int EffectsInfo(Context& ioContext, const EffectSearch& inSearch, const std::string& inName)
{
    const EffectHost host(ioContext, inSearch);
    const CatalogueEffect& effect = host.Find(inName);
    const EffectCrashes crashes = ReadEffectCrashes(ioContext.folders);
    if (!ioContext.output.IsJson()) {
        ShowInfo(ioContext.output, effect, crashes);
        return kExit_Done;
    }
    std::vector<JsonLine> parameters;
    for (const EffectParameter& parameter : effect.description.parameters) {
        parameters.push_back(AsJson(parameter));
    }
    JsonLine object = AsJson(effect, crashes);
    object.Add("author", effect.description.author)
        .Add("explanation", effect.description.explanation)
        .Add("formats", FormatNames(effect.description))
        .Add("parameters", parameters);
    ioContext.output.Result({}, object);
    return kExit_Done;
}

int EffectsTypes(Context& ioContext, const EffectSearch& inSearch, const EffectTypesOptions& inOptions)
{
    effects::EffectTypes types;
    if (!inOptions.formats.empty()) {
        std::vector<kiomediatypes::PixelFormat> formats;
        for (const std::string& name : inOptions.formats) {
            formats.push_back(kiomediatypes::PixelFormatNamed(name));
            if (formats.back() == kiomediatypes::kPixelFormat_Any) {
                throw Failure(kExit_Usage,
                              Text("$$$/Halcyon/TrHost/NoSuchFormat=--from-formats @0: there is no "
                                   "such pixel format; see trhost still --help",
                                   {ToUTF16(name)}));
            }
        }
        TR::AddPixelFormatEffects(formats, types);
    } else if (!inOptions.name.empty()) {
        types = EffectHost(ioContext, inSearch).Find(inOptions.name).types;
    } else {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/NoTypesOf=effects types needs the match name of an "
                           "effect, or --from-formats"));
    }
    for (const auto& type : types) {
        ioContext.output.Result(
            type->GetName() + u"  " + type->GetDescription(),
            JsonLine().Add("name", type->GetName()).Add("description", type->GetDescription()));
    }
    return kExit_Done;
}

int EffectsEnable(Context& ioContext, const EffectSearch& inSearch, const EffectsEnableOptions& inOptions)
{
    RefuseInSafeMode(ioContext);
    if (inOptions.all == !inOptions.names.empty()) {
        throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/EnableWhat=effects enable needs match names, or "
                                        "--all"));
    }
    if (inOptions.all) {
        const std::set<std::string> disabled = ReadDisabledEffects();
        SwitchEffects(ioContext, {disabled.begin(), disabled.end()}, true);
    } else if (IsSwitchedOffByName(inOptions.names)) {
        SwitchEffects(ioContext, inOptions.names, true);
    } else {
        SwitchEffects(ioContext, NamesOf(EffectHost(ioContext, inSearch).FindAll(inOptions.names)), true);
    }
    return kExit_Done;
}

int EffectsDisable(Context& ioContext, const EffectSearch& inSearch, const EffectsEnableOptions& inOptions)
{
    RefuseInSafeMode(ioContext);
    const EffectHost host(ioContext, inSearch);
    SwitchEffects(ioContext, NamesOf(host.FindAll(inOptions.names)), false);
    return kExit_Done;
}

} // namespace trhost
