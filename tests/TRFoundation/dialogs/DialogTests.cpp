// The restart prompt, the progress dialog and the redirect box.

#include <TR/EffectPluginManagerRestart.h>
#include <TR/PluginRedirect.h>
#include <TR/ProgressDialog.h>
#include <TR/ThirdPartyRedirectDialogs.h>

#include <PRQ/ApplicationType.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/platform/Browser.h>
#include <kiocore/threads/AsyncExecutor.h>
#include <kioui/controls/ProgressBar.h>
#include <kioui/dialogs/MessageBox.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>
#include <support/HandWoundExecutor.h>
#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

#include <thread>

using namespace kioui::dialogs;
using kiocore::UTF16String;
using kiocore::messaging::PostNewMessageToUIThread;
using testing::ElementsAre;
using TR::PromptForRestartReason;
namespace user = kioui::testing;

TEST(RestartPrompt, AsksInTwoWordingsAndReadsSilenceTwoWays)
{
    kiocore::config::versioninfo::SetAppShortName(u"Cutter");
    const auto here = PromptForRestartReason::kChangedInThisApp;
    const auto there = PromptForRestartReason::kChangedInAnotherApp;
    const struct {
        const char* name;
        PromptForRestartReason reason;
        int answer;
        bool restarts;
    } kCases[] = {
        {"here, Restart now", here, 1, true},
        {"here, Cancel", here, 2, false},
        {"here, closed", here, 0, false},
        {"there, Restart later", there, 1, false},
        {"there, Restart now", there, 2, true},
        {"there, closed", there, 0, true},
        {"any other reason is there", PromptForRestartReason(7), 0, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        messagebox::Question asked;
        const messagebox::ScAnswer answer([&](const messagebox::Question& inQuestion) {
            asked = inQuestion;
            return test.answer;
        });
        EXPECT_EQ(TR::PromptForEffectPluginManagerRestart(test.reason, nullptr, nullptr), test.restarts);
        if (test.reason == here) {
            EXPECT_EQ(asked.title, u"Restart to apply changes");
            EXPECT_EQ(asked.message, u"You will need to restart Cutter for the changes to take place.");
            EXPECT_THAT(asked.buttons, ElementsAre(u"Restart now", u"Cancel"));
        } else {
            EXPECT_EQ(asked.title, u"Effects modified in another app");
            EXPECT_EQ(asked.message, u"You have enabled or disabled effects in another app. Please restart "
                                     u"Cutter to sync these changes.");
            EXPECT_THAT(asked.buttons, ElementsAre(u"Restart later", u"Restart now"));
        }
    }
}

TEST(RestartPrompt, EscapeIsNoAnswer)
{
    support::ScTestApplication application;
    for (const bool here : {true, false}) {
        application->Post([] { user::PressKey(*user::ShownWindows().at(0), "Escape"); });
        EXPECT_EQ(TR::PromptForEffectPluginManagerRestart(here ? PromptForRestartReason::kChangedInThisApp
                                                               : PromptForRestartReason::kChangedInAnotherApp,
                                                          nullptr, nullptr),
                  !here);
    }
}

namespace {

/// Work in a test's hands.
class ScriptedOperation final : public kiocore::classref::UnknownBase, public ZOL::IBatchOperation {
public:
    std::function<void()> onStart;
    int aborts = 0;

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == ZOL::IBatchOperation::InterfaceID() ? static_cast<ZOL::IBatchOperation*>(this)
                                                                    : UnknownBase::QueryMap(inInterfaceID);
    }
    int Start() override
    {
        onStart();
        return 0;
    }
    int Abort() override
    {
        ++aborts;
        return 1;
    }
    kiocore::messaging::StationID GetStationID() const override { return mStation; }
    UTF16String GetDescription() const override { return u"working"; }

    void TellProgress(float inProgress)
    {
        PostNewMessageToUIThread<ZOL::UpdateOperationProgressMessage>(mStation, inProgress);
    }
    void TellDescription(const UTF16String& inText)
    {
        PostNewMessageToUIThread<ZOL::UpdateOperationDescriptionMessage>(mStation, inText);
    }
    void TellComplete() { PostNewMessageToUIThread<ZOL::OperationCompleteMessage>(mStation); }

private:
    const kiocore::messaging::StationID mStation = kiocore::messaging::CreateUniqueStation();
};

struct ProgressStage {
    ProgressStage()
        : operation(kiocore::classref::MakeObject<ScriptedOperation>()),
          dialog(u"Cleaning", operation, nullptr, nullptr)
    {}

    std::uint32_t Done()
    {
        return kioui::ui::NodeCast<kioui::controls::UI_ProgressBar>(
                   dialog.GetDialog().GetWindow().FindNode("ProgressBar"))
            .GetDone();
    }
    UTF16String ExtraText() { return dialog.GetDialog().GetWindow().FindNode("ExtraText")->GetText(); }
    void ClickCancel()
    {
        auto& window = dialog.GetDialog().GetWindow();
        user::Click(window, user::MiddleOf(*window.FindNode("Cancel")));
    }

    support::ScTestApplication application;
    kiocore::InterfaceRef<ScriptedOperation> operation;
    TR::ProgressDialog dialog;
};

} // namespace

TEST(ProgressDialog, ShowsWhatTheOperationTells)
{
    ProgressStage stage;
    std::vector<std::uint32_t> done;
    std::vector<UTF16String> texts;
    stage.operation->onStart = [&] {
        for (const float progress : {0.0f, 0.4567f, 1.0f, 1.5f, -1.0f}) {
            stage.operation->TellProgress(progress);
            stage.application->Post([&] { done.push_back(stage.Done()); });
        }
        for (const char16_t* text : {u"first file", u"second file"}) {
            stage.operation->TellDescription(text);
            stage.application->Post([&] { texts.push_back(stage.ExtraText()); });
        }
        stage.operation->TellComplete();
    };
    stage.dialog.Start();
    EXPECT_THAT(done, ElementsAre(0, 456, 1000, 1500, 0));
    EXPECT_THAT(texts, ElementsAre(u"first file", u"second file"));
    EXPECT_FALSE(stage.dialog.Cancelled());
    EXPECT_EQ(stage.operation->aborts, 0);
}

TEST(ProgressDialog, IsCancelledOnce)
{
    ProgressStage stage;
    stage.operation->onStart = [&] {
        stage.application->Post([&] {
            stage.ClickCancel();
            stage.operation->TellComplete(); // as an operation does that was aborted; too late
        });
    };
    stage.dialog.Start();
    EXPECT_TRUE(stage.dialog.Cancelled());
    EXPECT_EQ(stage.operation->aborts, 1);
}

TEST(ProgressDialog, CompletionAndCancellingMayRace)
{
    for (const bool completesFirst : {true, false}) {
        SCOPED_TRACE(completesFirst ? "complete, then cancelled" : "cancelled, then complete");
        ProgressStage stage;
        stage.operation->onStart = [&] {
            stage.application->Post([&] {
                if (completesFirst) {
                    stage.dialog.ListenToMessage(ZOL::OperationCompleteMessage());
                    stage.ClickCancel();
                } else {
                    stage.ClickCancel();
                    stage.dialog.ListenToMessage(ZOL::OperationCompleteMessage());
                }
            });
        };
        stage.dialog.Start();
        EXPECT_EQ(stage.dialog.Cancelled(), !completesFirst);
        EXPECT_EQ(stage.operation->aborts, completesFirst ? 0 : 1);
    }
}

TEST(ProgressDialog, AnOperationOnOtherThreadsMayEndBeforeTheDialogRuns)
{
    ProgressStage stage;
    stage.operation->onStart = [&] {
        std::thread([&] {
            for (int i = 0; i < 1000; ++i) {
                stage.operation->TellProgress(float(i) / 1000);
            }
            stage.operation->TellComplete();
        }).join();
        stage.application->RunPosted(); // all is told before the dialog is shown
    };
    stage.dialog.Start();
    EXPECT_FALSE(stage.dialog.Cancelled());
    EXPECT_EQ(stage.Done(), 999u);
}

TEST(Redirect, ABurstShowsOneBoxInOneKindOfApplication)
{
    support::ScTestApplication application;
    support::HandWoundClock clock;
    const auto executor = std::make_shared<support::HandWoundExecutor>(clock);
    const kiocore::threads::ScReplaceExecutor pool(kiocore::threads::ScReplaceExecutor::Pool::kCPUBound,
                                                   executor);
    int shown = 0;
    messagebox::Question asked;
    const messagebox::ScAnswer answer([&](const messagebox::Question& inQuestion) {
        ++shown;
        asked = inQuestion;
        return 1;
    });
    TR::ShowBlackmagicRAWRedirectURL();
    TR::ShowBlackmagicRAWRedirectURL();
    EXPECT_EQ(shown, 2) << "each time in other applications";
    EXPECT_EQ(asked.title, u"Third party plugin required");
    EXPECT_EQ(asked.message, u"Blackmagic RAW video support requires a plugin. For more information go to");

    PRQ::SetApplicationType(1);
    TR::ShowBlackmagicRAWRedirectURL();
    TR::ShowBlackmagicRAWRedirectURL();
    EXPECT_EQ(shown, 3);
    executor->Advance(std::chrono::milliseconds(0));
    TR::ShowBlackmagicRAWRedirectURL();
    EXPECT_EQ(shown, 4);
    executor->Advance(std::chrono::milliseconds(0));
    PRQ::SetApplicationType(0);
}

TEST(Redirect, TheLinkOpensThePageAndLeavesTheBoxOpen)
{
    support::ScTestApplication application;
    std::vector<std::string> opened;
    const kiocore::platform::ScReplaceBrowser browser([&](const std::string& inURL) {
        opened.push_back(inURL);
        return 0;
    });
    UTF16String text;
    application->Post([&] {
        kioui::UI_OSWindow& window = *user::ShownWindows().at(0);
        kioui::UI_Node* link = window.FindNode("GoURL");
        ASSERT_NE(link, nullptr);
        text = link->GetText();
        user::Click(window, user::MiddleOf(*link));
        user::Click(window, user::MiddleOf(*link));
        ASSERT_EQ(user::ShownWindows().size(), 1u);
        EXPECT_GE(link->GetBounds().top, window.FindNode("Message")->GetBounds().bottom);
        user::Click(window, user::MiddleOf(*window.FindNode("Button1")));
    });
    TR::ShowBlackmagicRAWRedirectURL();
    const std::string url = kiocore::utility::ToUTF8(TR::GetPluginRedirectURL());
    EXPECT_TRUE(url.starts_with("https://example.org/")) << url;
    EXPECT_EQ(text, u"Go to " + TR::GetPluginRedirectURL());
    EXPECT_THAT(opened, ElementsAre(url, url));
}
