#include <kioui/controls/ProgressBar.h>
#include <kioui/controls/StaticText.h>
#include <kioui/dialogs/ProgressDialog.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include <support/ui/TestApplication.h>

#include "ui/NodeImpl.h"

#include <QProgressBar>

#include <gmock/gmock.h>

#include <thread>

using namespace kioui;
using controls::UI_ProgressBar;
using dialogs::UI_ProgressDialog;
namespace user = kioui::testing;

namespace {

constexpr char16_t kTitle[] = u"Rendering previews";

class ProgressDialog : public ::testing::Test {
protected:
    static UI_Node* Find(UI_ProgressDialog& inDialog, const char* inID)
    {
        return inDialog.GetWindow().FindNode(inID);
    }
    static UI_ProgressBar& BarOf(UI_ProgressDialog& inDialog)
    {
        return NodeCast<UI_ProgressBar>(Find(inDialog, "ProgressBar"));
    }

    support::ScTestApplication application;
};

} // namespace

TEST_F(ProgressDialog, SaysHowItEnded)
{
    const auto clickCancel = [](UI_ProgressDialog& inDialog) {
        user::Click(inDialog.GetWindow(), user::MiddleOf(*Find(inDialog, "Cancel")));
    };
    const auto key = [](const char* inKey) {
        return [inKey](UI_ProgressDialog& inDialog) { user::PressKey(inDialog.GetWindow(), inKey); };
    };
    const auto complete = [](UI_ProgressDialog& inDialog) { inDialog.EndAsCompleted(); };
    const auto closeWindow = [](UI_ProgressDialog& inDialog) {
        inDialog.GetWindow().GetImpl().widget->close();
    };
    using Step = std::function<void(UI_ProgressDialog&)>;
    const struct {
        const char* name;
        bool isCancellable;
        std::vector<Step> steps;
        bool isCompleted;
    } kCases[] = {
        {"completed", true, {complete}, true},
        {"cancelled", true, {clickCancel}, false},
        {"cancelled by Escape", true, {key("Escape")}, false},
        {"cancelled by closing the window", true, {closeWindow}, false},
        {"cancelled by the keyboard", true, {key("Space")}, false},
        {"completed before cancelled", true, {complete, clickCancel}, true},
        {"cancelled before completed", true, {clickCancel, complete}, false},
        {"cannot be cancelled",
         false,
         {key("Escape"), closeWindow, key("Return"), key("Space"), complete},
         true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        UI_ProgressDialog dialog(nullptr, kTitle, u"", nullptr, false, test.isCancellable, false);
        EXPECT_EQ(Find(dialog, "Cancel") != nullptr, test.isCancellable);
        user::RunWhenIdle([&] {
            for (const Step& step : test.steps) {
                EXPECT_TRUE(dialog.GetWindow().IsVisible());
                step(dialog);
            }
        });
        EXPECT_EQ(dialog.RunModal(), test.isCompleted);
        EXPECT_FALSE(dialog.GetWindow().IsVisible());
        dialog.EndAsCompleted(); // too late, or once more
        EXPECT_EQ(dialog.RunModal(), test.isCompleted) << "run again";
    }
}

TEST_F(ProgressDialog, CompletedBeforeItRunsItIsNotShown)
{
    UI_ProgressDialog dialog(nullptr, kTitle, u"", nullptr, false, true, false);
    dialog.EndAsCompleted();
    user::RunWhenIdle([&] { ADD_FAILURE() << "ran"; });
    EXPECT_TRUE(dialog.RunModal());
}

TEST_F(ProgressDialog, FollowsWorkOfAnotherThread)
{
    UI_ProgressDialog dialog(nullptr, kTitle, u"", nullptr, false, true, false);
    std::vector<std::uint32_t> shown;
    std::thread worker([&] {
        for (std::uint32_t done : {1u, 500u, 1000u}) {
            application->Post([&, done] {
                dialog.SetProgress(done, 1000, u"");
                shown.push_back(BarOf(dialog).GetDone());
            });
        }
        application->Post([&] { dialog.EndAsCompleted(); });
    });
    EXPECT_TRUE(dialog.RunModal());
    worker.join();
    EXPECT_THAT(shown, ::testing::ElementsAre(1, 500, 1000));
}

TEST_F(ProgressDialog, TheBarIsAsFullAsTheWorkIsDone)
{
    UI_ProgressDialog dialog(nullptr, kTitle, u"", nullptr, true, true, true);
    UI_ProgressBar& bar = BarOf(dialog);
    EXPECT_TRUE(bar.IsUnknownProgress());
    const struct {
        std::uint32_t done;
        std::uint32_t total;
        const char* percent;
    } kCases[] = {
        {0, 1000, "0%"},
        {456, 1000, "45%"},
        {1000, 1000, "100%"},
        {1500, 1000, "100%"},
        {0, 0, "0%"},
        {7, 0, "0%"},
        {0x7FFFFFFF, 0xFFFFFFFF, "49%"},
        {0xFFFFFFFF, 0xFFFFFFFF, "100%"},
        {1, 0xFFFFFFFF, "0%"},
    };
    const auto& widget = *ui::WidgetOf<QProgressBar>(bar);
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::to_string(test.done) + " of " + std::to_string(test.total));
        dialog.SetProgress(test.done, test.total, u"");
        EXPECT_FALSE(bar.IsUnknownProgress());
        EXPECT_EQ(bar.GetDone(), test.done);
        EXPECT_EQ(bar.GetTotal(), test.total);
        EXPECT_EQ(widget.text().toStdString(), test.percent);
        EXPECT_TRUE(widget.isTextVisible());
    }
    dialog.SetProgress(1, 4, u"");
    dialog.SetUnknownProgress(true);
    EXPECT_TRUE(bar.IsUnknownProgress());
    dialog.SetUnknownProgress(false);
    EXPECT_EQ(widget.text().toStdString(), "25%") << "what was known before";
}

TEST_F(ProgressDialog, TextsComeAndGoWithoutMovingTheWindow)
{
    UI_ProgressDialog dialog(nullptr, kTitle, u"", nullptr, false, true, false);
    UI_Dialog& window = dialog.GetWindow();
    UI_Node& message = *Find(dialog, "Message");
    UI_Node& bar = *Find(dialog, "ProgressBar");
    EXPECT_EQ(bar.GetAccessibleName(), kTitle);
    user::RunWhenIdle([&] {
        EXPECT_FALSE(message.IsVisible());
        const RectT<float> without = bar.GetBounds();
        const RectT<float> windowBefore = window.GetBounds();
        dialog.SetExtraText(u"/projects/" + std::u16string(300, u'x') + u"/clip.mov");
        ui::ScApplication::RunPending();
        EXPECT_EQ(window.GetBounds(), windowBefore);
        UI_Node& extra = *Find(dialog, "ExtraText");
        EXPECT_LE(extra.GetBounds().right, windowBefore.Width());
        EXPECT_EQ(extra.GetText().size(), 319u);
        EXPECT_THAT(extra.GetImpl().widget->toolTip().toStdString(), ::testing::EndsWith("/clip.mov"));
        dialog.SetExtraText(u"short");
        EXPECT_EQ(extra.GetImpl().widget->toolTip().toStdString(), "");

        dialog.SetProgress(1, 2, u"Rendering");
        ui::ScApplication::RunPending();
        EXPECT_TRUE(message.IsVisible());
        EXPECT_EQ(bar.GetAccessibleName(), u"Rendering");
        EXPECT_LE(message.GetBounds().bottom, bar.GetBounds().top);
        EXPECT_GT(bar.GetBounds().top, without.top);
        EXPECT_LE(Find(dialog, "Cancel")->GetBounds().bottom, window.GetBounds().Height());
        dialog.SetProgress(2, 2, u"");
        EXPECT_EQ(message.GetText(), u"Rendering");
        dialog.EndAsCompleted();
    });
    EXPECT_TRUE(dialog.RunModal());
}

TEST_F(ProgressDialog, ALongMessageIsShownWhole)
{
    std::u16string message;
    for (int i = 0; i < 30; ++i) {
        message += u"Se aplican los efectos a la secuencia. ";
    }
    UI_ProgressDialog dialog(nullptr, kTitle, message, nullptr, false, false, false);
    user::RunWhenIdle([&] {
        const auto& text = NodeCast<controls::UI_StaticText>(Find(dialog, "Message"));
        const RectT<float> bounds = text.GetBounds();
        EXPECT_GE(bounds.Height(), text.GetHeightForWidth(bounds.Width()));
        EXPECT_LE(Find(dialog, "ExtraText")->GetBounds().bottom, dialog.GetWindow().GetBounds().Height());
        dialog.EndAsCompleted();
    });
    EXPECT_TRUE(dialog.RunModal());
}
