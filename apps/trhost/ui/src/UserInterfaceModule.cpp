#include "../UserInterface.h"

#include "Attendant.h"
#include "InterruptWatch.h"

#include <TR/EffectPluginManagerDialog.h>
#include <TR/EffectPluginManagerRestart.h>
#include <TR/ProgressDialog.h>
#include <TR/ThirdPartyRedirectDialogs.h>
#include <kiocore/config/Localizer.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Application.h>

namespace trhost::ui {

namespace {

using kiocore::config::Localizer;

constexpr std::uint32_t kNameColumn = 2;
/// With the effects that come with the host.
constexpr const char* kShowAll = R"({"checkboxes":[[0,{"checked":false}]]})";

kioui::ui::ApplicationSettings ApplicationSettingsOf(const UserInterfaceSettings& inSettings)
{
    kioui::ui::ApplicationSettings settings;
    settings.name = inSettings.applicationName;
    settings.settingsFileUTF8 = inSettings.windowSizesFile;
    settings.theme = inSettings.isLight ? kioui::ui::Theme::kLight : kioui::ui::Theme::kDark;
    settings.scale = inSettings.scale;
    return settings;
}

class UserInterface final : public IUserInterface {
public:
    explicit UserInterface(const UserInterfaceSettings& inSettings)
        : mApplication(ApplicationSettingsOf(inSettings)), mInterruptWatch(inSettings.interruptFile),
          mAttendant(inSettings)
    {}

    void Run(ManageEffects& ioQuestion) override
    {
        using TR::EffectPluginManagerDialog;
        const boost::intrusive_ptr<EffectPluginManagerDialog> dialog(new EffectPluginManagerDialog(
            nullptr, Localizer::GetText("$$$/Halcyon/TrHost/Manage/Title=Effect Plug-in Manager"), nullptr));
        dialog->ShowSupportURL(true);
        dialog->InitializeWithSettings(ioQuestion.settings);
        dialog->SetDialogState(ioQuestion.state);
        if (ioQuestion.findAmongAll) {
            dialog->SetDialogState(kShowAll);
        }
        dialog->Find(ioQuestion.find);
        SortByName(*dialog);
        dialog->SetOKButtonEnabled(false);
        dialog->SetModifiedFunction(
            [&] { dialog->SetOKButtonEnabled(ioQuestion.haveChanged && ioQuestion.haveChanged()); });

        mAttendant.ExpectDialog();
        ioQuestion.isOK = dialog->RunModal() == kioui::UI_Dialog::kResult_OK;
        ioQuestion.modified = dialog->GetModifiedItems();
        ioQuestion.state = dialog->GetDialogState();
    }

    bool AskForRestart(bool inChangedInAnotherApp) override
    {
        mAttendant.ExpectDialog();
        return TR::PromptForEffectPluginManagerRestart(inChangedInAnotherApp
                                                           ? TR::PromptForRestartReason::kChangedInAnotherApp
                                                           : TR::PromptForRestartReason::kChangedInThisApp,
                                                       nullptr, nullptr);
    }

    bool RunOperation(const UTF16String& inTitle, const UTF16String& inMessage,
                      const kiocore::InterfaceRef<ZOL::IBatchOperation>& inOperation) override
    {
        TR::ProgressDialog progress(inTitle, inOperation, nullptr, nullptr, true, inMessage, false);
        mAttendant.ExpectDialog();
        progress.Start();
        return !progress.Cancelled();
    }

    void ShowBlackmagicRAWRedirect() override
    {
        mAttendant.ExpectDialog();
        TR::ShowBlackmagicRAWRedirectURL();
    }

    std::string FinishAttending() override { return mAttendant.Finish(); }

private:
    static void SortByName(TR::EffectPluginManagerDialog& ioDialog)
    {
        auto& tree =
            kioui::ui::NodeCast<kioui::controls::UI_MultiColumnTree>(ioDialog.FindNode("PluginTree"));
        tree.GetHeaderRow()->SetSortColumn(kNameColumn, true);
        if (tree.CountRows(false) > 0) {
            tree.SelectRow(tree.GetRowAt(0), true, false, true);
        }
    }

    kioui::ui::ScApplication mApplication;
    InterruptWatch mInterruptWatch;
    Attendant mAttendant;
};

class Module final : public IUserInterfaceModule {
public:
    std::unique_ptr<IUserInterface> Open(const UserInterfaceSettings& inSettings) override
    {
        return std::make_unique<UserInterface>(inSettings);
    }
};

} // namespace

} // namespace trhost::ui

/// The module's one object, which lives as long as the process; null for a program of another build.
extern "C" KIO_EXPORT trhost::ui::IUserInterfaceModule* TrhostUserInterfaceModule(int inVersion)
{
    static trhost::ui::Module sModule;
    return inVersion == trhost::ui::kUserInterfaceModuleVersion ? &sModule : nullptr;
}
