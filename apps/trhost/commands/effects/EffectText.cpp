#include "EffectText.h"

#include "../../support/Failure.h"
#include "../../support/KeptText.h"

#include <TR/EffectEnablement.h>
#include <kiocore/filesupport/NativePath.h>

#include <array>
#include <charconv>

namespace trhost {

using kiocore::UTF16String;
using kiocore::utility::ToUTF16;

namespace {

void Append(UTF16String& ioList, const UTF16String& inText)
{
    ioList += (ioList.empty() ? u"" : u", ") + inText;
}

/// Why it cannot run; empty when it can.
std::string ReasonOf(const CatalogueEffect& inEffect)
{
    return ToldText(inEffect.failure.empty() ? inEffect.description.refusal : inEffect.failure);
}

} // namespace

int CrashesOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes)
{
    const auto found = inCrashes.find(inEffect.description.matchName);
    return found == inCrashes.end() ? 0 : found->second;
}

UTF16String KindText(effects::EffectKind inKind)
{
    return Text(TextOf(inKind));
}

UTF16String TypeNames(const CatalogueEffect& inEffect)
{
    UTF16String names;
    for (const auto& type : inEffect.types) {
        Append(names, type->GetName());
    }
    return names;
}

UTF16String StateOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes)
{
    UTF16String state;
    if (!TR::IsEffectEnabled(inEffect.description.matchName)) {
        Append(state, Text("$$$/Halcyon/TrHost/StateOff=switched off"));
    }
    if (const int crashes = CrashesOf(inEffect, inCrashes)) {
        Append(state, crashes == 1 ? Text("$$$/Halcyon/TrHost/StateCrashedOnce=crashed once")
                                   : Text("$$$/Halcyon/TrHost/StateCrashed=crashed @0 times",
                                          {ToUTF16(std::to_string(crashes))}));
    }
    if (const std::string reason = ReasonOf(inEffect); !reason.empty()) {
        Append(state, Text("$$$/Halcyon/TrHost/StateRefused=cannot run: @0", {ToUTF16(reason)}));
    }
    return state;
}

UTF16String LineOf(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes)
{
    UTF16String line = ToUTF16(inEffect.description.matchName) + u"  " +
                       ToUTF16(inEffect.description.displayName) + u"  (" +
                       Text(TextOf(inEffect.description.kind)) + u")";
    if (const UTF16String types = TypeNames(inEffect); !types.empty()) {
        line += u"  " + types;
    }
    if (const UTF16String state = StateOf(inEffect, inCrashes); !state.empty()) {
        line += u"  [" + state + u"]";
    }
    return line;
}

JsonLine AsJson(const CatalogueEffect& inEffect, const EffectCrashes& inCrashes)
{
    const effects::EffectDescription& effect = inEffect.description;
    std::vector<UTF16String> types;
    for (const auto& type : inEffect.types) {
        types.push_back(type->GetName());
    }
    JsonLine object;
    object.Add("matchName", effect.matchName)
        .Add("name", effect.displayName)
        .Add("kind", NameOf(effect.kind))
        .Add("category", effect.category)
        .Add("version", effect.version)
        .Add("types", types)
        .Add("firstParty", effect.isFirstParty)
        .Add("enabled", TR::IsEffectEnabled(effect.matchName))
        .Add("crashes", CrashesOf(inEffect, inCrashes))
        .Add("file", kiocore::filesupport::FromNative(effect.file));
    if (const std::string reason = ReasonOf(inEffect); !reason.empty()) {
        object.Add("cannotRun", reason);
    }
    return object;
}

UTF16String NumberText(double inNumber)
{
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), inNumber).ptr;
    return ToUTF16(std::string_view(digits.data(), std::size_t(end - digits.data())));
}

std::vector<UTF16String> TextsOf(const std::vector<std::string>& inTexts)
{
    std::vector<UTF16String> texts;
    for (const std::string& text : inTexts) {
        texts.push_back(ToUTF16(text));
    }
    return texts;
}

} // namespace trhost
