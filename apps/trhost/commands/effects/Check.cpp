// Effects tried out where they can do no harm.
#include "../EffectOptions.h"

#include "../../support/Failure.h"
#include "../../support/Interrupt.h"
#include "../../support/ModuleLoader.h"
#include "Switching.h"

#include <effects/scan/EffectCheck.h>

#include <algorithm>

namespace trhost {

namespace {

using effects::CheckFinding;
using effects::CheckResult;
using kiocore::utility::ToUTF16;

effects::CheckSettings SettingsFor(const EffectsCheckOptions& inOptions)
{
    effects::CheckSettings settings;
    settings.worker = EffectWorkers();
    settings.worker.timeLimit = std::chrono::seconds(inOptions.secondsPerCase);
    settings.modules = {{"frei0r", ModulePath(effects::kFrei0rModuleFileName)},
                        {"avfilter", ModulePath(effects::kAvfilterModuleFileName)},
                        {"ladspa", ModulePath(effects::kLadspaModuleFileName)}};
    return settings;
}

/// The same thing found at several sizes.
struct SaidOfSizes {
    std::string text;
    bool isFault;
    std::string sizes; // "8x8, 16x16"
};

std::vector<SaidOfSizes> Grouped(const std::vector<CheckFinding>& inFindings)
{
    std::vector<SaidOfSizes> groups;
    for (const CheckFinding& finding : inFindings) {
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const SaidOfSizes& inGroup) { return inGroup.text == finding.text; });
        if (group == groups.end()) {
            groups.push_back({finding.text, effects::IsFault(finding.kind), finding.size});
        } else {
            group->sizes += ", " + finding.size;
        }
    }
    return groups;
}

void Show(Output& ioOutput, const CheckResult& inResult)
{
    std::vector<JsonLine> findings;
    for (const CheckFinding& finding : inResult.findings) {
        findings.push_back(JsonLine()
                               .Add("kind", NameOf(finding.kind))
                               .Add("size", finding.size)
                               .Add("text", finding.text)
                               .Add("isFault", effects::IsFault(finding.kind)));
    }
    const JsonLine object = JsonLine()
                                .Add("matchName", inResult.matchName)
                                .Add("bad", inResult.IsBad())
                                .Add("cases", inResult.casesTried)
                                .Add("findings", findings);
    if (ioOutput.IsJson() || inResult.findings.empty()) {
        ioOutput.Result(Text("$$$/Halcyon/TrHost/CheckGood=@0: nothing found in @1 tries",
                             {ToUTF16(inResult.matchName), ToUTF16(std::to_string(inResult.casesTried))}),
                        object);
        return;
    }
    for (const SaidOfSizes& said : Grouped(inResult.findings)) {
        const UTF16String sizes = said.sizes.empty() ? UTF16String() : u" (" + ToUTF16(said.sizes) + u")";
        ioOutput.Line(said.isFault ? Text("$$$/Halcyon/TrHost/CheckBad=@0: BAD, @1@2",
                                          {ToUTF16(inResult.matchName), ToUTF16(said.text), sizes})
                                   : Text("$$$/Halcyon/TrHost/CheckNote=@0: @1@2",
                                          {ToUTF16(inResult.matchName), ToUTF16(said.text), sizes}));
    }
}

} // namespace

int EffectsCheck(Context& ioContext, const EffectSearch& inSearch, const EffectsCheckOptions& inOptions)
{
    if (inOptions.disableBad) {
        RefuseInSafeMode(ioContext);
    }
    const EffectHost host(ioContext, inSearch);
    std::vector<effects::EffectDescription> wanted;
    for (const CatalogueEffect* effect : host.FindAll(inOptions.names)) {
        if (effect->failure.empty()) { // else the scan has said what is wrong with it
            wanted.push_back(effect->description);
        }
    }
    std::vector<std::string> bad;
    ProgressBar bar(ioContext.output, Text("$$$/Halcyon/TrHost/CheckingEffects=Checking"));
    const bool isComplete = effects::CheckEffects(
        SettingsFor(inOptions), wanted,
        [&](CheckResult&& inResult) {
            if (inResult.IsBad()) {
                bad.push_back(inResult.matchName);
            }
            Show(ioContext.output, inResult);
        },
        [&](int inDone, int inTotal, const std::string& inName) {
            bar.Show(inTotal > 0 ? double(inDone) / inTotal : 0, ToUTF16(inName));
        },
        EffectInterruption());
    bar.Hide();
    if (inOptions.disableBad && !bad.empty()) {
        SwitchEffects(ioContext, bad, false);
    }
    if (!isComplete) {
        ThrowIfInterrupted();
    }
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/CheckDone=@0 effects checked, @1 bad",
                               {ToUTF16(std::to_string(wanted.size())), ToUTF16(std::to_string(bad.size()))}),
                          JsonLine().Add("checked", wanted.size()).Add("bad", bad.size()));
    return bad.empty() ? kExit_Done : kExit_Negative;
}

} // namespace trhost
