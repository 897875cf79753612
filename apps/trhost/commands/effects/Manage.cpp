// The plug-in manager: what it shows of this machine's effects, and what becomes of the answer.
#include "../Dialogs.h"

#include "EffectText.h"
#include "Switching.h"

#include "../EffectOptions.h"

#include "../../support/CrashReports.h"
#include "../../support/DisabledEffects.h"
#include "../../support/Failure.h"
#include "../../support/Interrupt.h"
#include "../../support/Restart.h"

#include <ZOL/RegistryBaseKey.h>
#include <kiocore/config/Client.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/RegistryKey.h>

#include <algorithm>
#include <optional>

namespace trhost {

namespace {

using effects::EffectDescription;
using kiocore::utility::RegistryKey;
using kiocore::utility::ToUTF16;
using Disabled = std::set<std::string>;

constexpr const char* kDialogStateValue = "PluginManagerState";

std::string DialogStatePath()
{
    return kiocore::utility::ToUTF8(ZOL::GetRegistryBaseKey()) + "Dialogs";
}

std::string ReadDialogState()
{
    RegistryKey key;
    std::string state;
    if (key.Open(kiocore::utility::kRegistryRoot_CurrentUser, DialogStatePath()) < 0 ||
        key.GetStringValue(kDialogStateValue, state) < 0) {
        return {};
    }
    return state;
}

/// Where a column stands is not worth an error.
void KeepDialogState(const std::string& inState)
{
    RegistryKey key;
    if (key.Create(kiocore::utility::kRegistryRoot_CurrentUser, DialogStatePath()) >= 0) {
        key.SetStringValue(kDialogStateValue, inState);
    }
}

/// Pages that say what the effects of an engine do.
UTF16String SupportURL(const EffectDescription& inEffect)
{
    if (inEffect.technology == "avfilter") {
        return u"https://ffmpeg.org/ffmpeg-filters.html#" + ToUTF16(inEffect.pluginName);
    }
    return inEffect.technology == "frei0r" ? u"https://frei0r.dyne.org/" : u"";
}

std::shared_ptr<TR::EffectSettings> SettingsOf(const CatalogueEffect& inEffect,
                                               const EffectCrashes& inCrashes, bool inEnabled)
{
    const EffectDescription& effect = inEffect.description;
    const auto has = [&inEffect](const UTF16String& inType) {
        return std::any_of(inEffect.types.begin(), inEffect.types.end(),
                           [&](const auto& inOne) { return inOne->GetName() == inType; });
    };
    auto settings = std::make_shared<TR::EffectSettings>();
    settings->enabled = inEnabled;
    settings->name = ToUTF16(effect.displayName);
    settings->filePath = kiocore::filesupport::FromNative(effect.file);
    settings->matchName = effect.matchName;
    settings->supportURL = SupportURL(effect);
    // Libavfilter's filters come with the library that media is read with: nobody installed them as plug-ins.
    settings->isFirstParty = effect.isFirstParty || effect.technology == "avfilter";
    const int crashes = CrashesOf(inEffect, inCrashes);
    settings->attributeValues = {
        KindText(effect.kind), has(u"32BitColor") ? Text("$$$/Halcyon/TrHost/Manage/Yes=yes") : UTF16String(),
        crashes > 0 ? kiocore::utility::DecimalText(std::size_t(crashes)) : UTF16String()};
    return settings;
}

/// The records that the dialog edits, and what they were.
class ManagedEffects {
public:
    ManagedEffects(const EffectHost& inHost, const EffectCrashes& inCrashes, const Disabled& inDisabled)
    {
        for (const CatalogueEffect& effect : inHost.Effects()) {
            const bool isOn = inDisabled.count(effect.description.matchName) == 0;
            const auto settings = SettingsOf(effect, inCrashes, isOn);
            mBefore.emplace(settings, *settings);
        }
    }

    TR::AllEffectSettings ForDialog() const
    {
        TR::AllEffectSettings all;
        for (const auto& [settings, before] : mBefore) {
            all.settings.insert(all.settings.end(), settings);
        }
        all.attributeNames = {Text("$$$/Halcyon/TrHost/Manage/KindColumn=Kind"),
                              Text("$$$/Halcyon/TrHost/Manage/DepthColumn=32-bit"),
                              Text("$$$/Halcyon/TrHost/Manage/CrashesColumn=Crashes")};
        return all;
    }

    bool HaveChanged() const
    {
        return std::any_of(mBefore.begin(), mBefore.end(),
                           [](const auto& inRecord) { return IsSwitched(*inRecord.first, inRecord.second); });
    }

    /// Which of them are another way than they were.
    std::vector<std::string> Switched(const TR::EffectSettingsSet& inSettings, bool inEnabled) const
    {
        std::vector<std::string> names;
        for (const auto& settings : inSettings) {
            if (settings->enabled == inEnabled && IsSwitched(*settings, mBefore.at(settings))) {
                names.push_back(settings->matchName.AsString());
            }
        }
        return names;
    }

    void Restore() const
    {
        for (const auto& [settings, before] : mBefore) {
            *settings = before;
        }
    }

    /// Null when there is none of that match name.
    const TR::EffectSettings* Find(const std::string& inMatchName) const
    {
        const auto found = std::find_if(mBefore.begin(), mBefore.end(), [&](const auto& inRecord) {
            return inRecord.second.matchName.View() == inMatchName;
        });
        return found != mBefore.end() ? &found->second : nullptr;
    }

private:
    static bool IsSwitched(const TR::EffectSettings& inNow, const TR::EffectSettings& inBefore)
    {
        return inNow.enabled != inBefore.enabled;
    }

    std::map<std::shared_ptr<TR::EffectSettings>, TR::EffectSettings> mBefore;
};

/// Shows the effect that crashed last, if the user has not been told of it yet; he has then.
void FindCulprit(Context& ioContext, const ManagedEffects& inEffects, bool inIsShownToSomebody,
                 ui::ManageEffects& ioQuestion)
{
    effects::CrashHistory history = OpenCrashHistory(ioContext.folders, ioContext.output);
    for (const effects::CrashHistoryEntry& entry : history.Entries()) {
        const TR::EffectSettings* settings = inEffects.Find(entry.matchName);
        if (entry.wasShown || entry.crashes == 0 || settings == nullptr) {
            continue;
        }
        ioQuestion.find = settings->name;
        ioQuestion.findAmongAll = settings->isFirstParty;
        if (inIsShownToSomebody) {
            history.MarkShown({entry});
        }
        return;
    }
}

} // namespace

int EffectsManage(Context& ioContext, const EffectSearch& inSearch, const DialogOptions& inOptions)
{
    RefuseInSafeMode(ioContext);
    const bool isUsed =
        inOptions.attendance == ui::Attendance::kPerson || inOptions.attendance == ui::Attendance::kScript;
    const Disabled before = ReadDisabledEffects();
    const auto userInterface = OpenUserInterfaceForCommand(ioContext, inOptions);
    const EffectHost host(ioContext, inSearch);
    const ManagedEffects effects(host, ReadEffectCrashes(ioContext.folders), before);

    ui::ManageEffects question;
    question.settings = effects.ForDialog();
    question.state = ReadDialogState();
    question.haveChanged = [&effects] { return effects.HaveChanged(); };
    FindCulprit(ioContext, effects, isUsed, question);
    userInterface->Run(question);
    ThrowIfInterrupted(); // nothing is applied, and nobody is there to be asked

    if (isUsed) {
        KeepDialogState(question.state);
    }
    const bool haveOthersChanged = ReadDisabledEffects() != before;
    bool haveWeChanged = false;
    if (question.isOK) {
        for (const bool enabled : {false, true}) {
            const std::vector<std::string> names = effects.Switched(question.modified, enabled);
            SwitchEffects(ioContext, names, enabled);
            haveWeChanged = haveWeChanged || !names.empty();
        }
    } else {
        effects.Restore();
    }
    if ((haveWeChanged || haveOthersChanged) && userInterface->AskForRestart(!haveWeChanged) &&
        inOptions.attendance == ui::Attendance::kPerson) {
        RequestRestart();
    }
    FinishAttending(ioContext, *userInterface);
    return kExit_Done;
}

} // namespace trhost
