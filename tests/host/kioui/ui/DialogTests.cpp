#include <kioui/controls/HotText.h>
#include <kioui/controls/SearchBox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/Dialog.h>
#include <kioui/ui/NodeManager.h>

#include <support/TemporaryFolder.h>
#include <support/ui/Keys.h>
#include <support/ui/TestApplication.h>

#include <QDialogButtonBox>
#include <QProxyStyle>
#include <QStyleFactory>
#include <gmock/gmock.h>

#include <thread>

using namespace kioui;
using controls::UI_SearchBox;
using controls::UI_TextButton;
using controls::UI_TextButtonPtr;
using ui::UI_DialogPtr;
using ui::UI_OSWindow;
using ui::UI_OSWindowPtr;

namespace {

/// A dialog with a text field, another button, OK and Cancel.
struct AskingDialog {
    explicit AskingDialog(UI_Node* inParent = nullptr, const char* inNodeID = "Asking")
        : node(new UI_Dialog(nullptr, u"asking", inParent))
    {
        node->SetNodeID(inNodeID);
        other->SetChangedFunction([this](UI_ControlChangedMessage*) { ++otherClicks; });
        for (const UI_NodePtr& child : std::initializer_list<UI_NodePtr>{text, other, ok, cancel}) {
            node->AddChild(child);
        }
        node->SetButtons(ok, cancel);
    }

    UI_DialogPtr node;
    UI_NodePtr text{new UI_SearchBox(false, false)};
    UI_TextButtonPtr other{new UI_TextButton(u"Other")};
    UI_TextButtonPtr ok{new UI_TextButton(u"OK")};
    UI_TextButtonPtr cancel{new UI_TextButton(u"Cancel")};
    int otherClicks = 0;
};

/// Runs a dialog, acts in it once it is active, and ends it with -1 if nothing that was done ended it.
int RunAnd(support::ScTestApplication& ioApplication, const UI_DialogPtr& inDialog,
           const std::function<void()>& inAct)
{
    ioApplication->Post([&] {
        EXPECT_TRUE(QTest::qWaitForWindowActive(inDialog->GetImpl().widget));
        inAct();
        ioApplication->Post([inDialog] { inDialog->EndModal(-1); });
    });
    return inDialog->RunModal();
}

struct Dialog : testing::Test {
    support::ScTestApplication application;
};

} // namespace

TEST_F(Dialog, KeysAndTheCloseButtonDoWhatTheirPlaceSays)
{
    const auto kOpen = -1;
    const struct {
        const char* name;
        void (*setUp)(AskingDialog&);
        void (*act)(AskingDialog&);
        int expectedEnd;
        int expectedOtherClicks;
    } kCases[] = {
        {"Return in a text field", [](AskingDialog& d) { d.text->SetKeyboardFocus({}); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, UI_Dialog::kResult_OK, 0},
        {"Return in a text field that keeps it",
         [](AskingDialog& d) { d.node->SetTextEditReturnClosesDialog(false); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, kOpen, 0},
        {"Enter in a text field that keeps it",
         [](AskingDialog& d) { d.node->SetTextEditReturnClosesDialog(false); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Enter, Qt::KeypadModifier); }, kOpen, 0},
        {"Return on OK although text fields keep theirs",
         [](AskingDialog& d) {
             d.node->SetTextEditReturnClosesDialog(false);
             d.ok->SetKeyboardFocus({});
         },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, UI_Dialog::kResult_OK, 0},
        {"Return on another button clicks that", [](AskingDialog& d) { d.other->SetKeyboardFocus({}); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, kOpen, 1},
        {"Return where nothing has the focus",
         [](AskingDialog& d) {
             for (const auto& child : d.node->GetChildren()) {
                 child->SetKeyboardTarget(false);
             }
         },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, UI_Dialog::kResult_OK, 0},
        {"Return with OK disabled", [](AskingDialog& d) { d.ok->SetEnabled(false); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Return); }, kOpen, 0},
        {"a click on OK disabled", [](AskingDialog& d) { d.ok->SetEnabled(false); },
         [](AskingDialog& d) {
             QTest::mouseClick(d.ok->GetImpl().widget, Qt::LeftButton);
             d.ok->Click();
         },
         kOpen, 0},
        {"the space bar on Cancel", [](AskingDialog& d) { d.cancel->SetKeyboardFocus({}); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Space); }, UI_Dialog::kResult_Cancel, 0},
        {"Escape", [](AskingDialog&) {}, [](AskingDialog&) { support::PressKey(Qt::Key_Escape); },
         UI_Dialog::kResult_Cancel, 0},
        {"Escape with Cancel disabled", [](AskingDialog& d) { d.cancel->SetEnabled(false); },
         [](AskingDialog&) { support::PressKey(Qt::Key_Escape); }, UI_Dialog::kResult_Cancel, 0},
        {"Escape clicks Cancel, whose function may say otherwise",
         [](AskingDialog& d) {
             d.cancel->SetChangedFunction([&d](UI_ControlChangedMessage*) { d.node->EndModal(7); });
         },
         [](AskingDialog&) { support::PressKey(Qt::Key_Escape); }, 7, 0},
        {"the window's close button clicks Cancel too",
         [](AskingDialog& d) {
             d.cancel->SetChangedFunction([&d](UI_ControlChangedMessage*) { d.node->EndModal(7); });
         },
         [](AskingDialog& d) { d.node->GetImpl().widget->close(); }, 7, 0},
        {"without buttons the window can be closed", [](AskingDialog& d) { d.node->SetButtons({}, {}); },
         [](AskingDialog& d) { d.node->GetImpl().widget->close(); }, UI_Dialog::kResult_Cancel, 0},
        {"buttons that are no longer its own", [](AskingDialog& d) { d.node->SetButtons(d.other, {}); },
         [](AskingDialog& d) {
             d.ok->Click();
             d.cancel->Click();
         },
         kOpen, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        AskingDialog dialog;
        test.setUp(dialog);
        EXPECT_EQ(RunAnd(application, dialog.node, [&] { test.act(dialog); }), test.expectedEnd);
        EXPECT_EQ(dialog.otherClicks, test.expectedOtherClicks);
        EXPECT_FALSE(dialog.node->IsVisible());
        EXPECT_FALSE(dialog.node->IsRunningModal());
    }
}

TEST_F(Dialog, ReturnOnALinkFollowsItInsteadOfClickingOK)
{
    AskingDialog dialog;
    const controls::UI_HotTextButtonPtr link(new controls::UI_HotTextButton(u"link"));
    int clicks = 0;
    link->SetChangedFunction([&](UI_ControlChangedMessage*) { ++clicks; });
    dialog.node->AddChild(link);
    link->SetKeyboardFocus(FocusChangeReason::kProgram);
    EXPECT_EQ(RunAnd(application, dialog.node, [&] { support::PressKey(Qt::Key_Return); }), -1);
    EXPECT_EQ(clicks, 1);
}

TEST_F(Dialog, EndsMayComeBeforeTheRunAndOfSeveralTheFirstCounts)
{
    const UI_DialogPtr dialog(new UI_Dialog(nullptr, u"dialog", nullptr));
    dialog->EndModal(5);
    dialog->EndModal(6);
    EXPECT_EQ(dialog->RunModal(), 5);
    EXPECT_EQ(RunAnd(application, dialog, [] {}), -1) << "the end was forgotten by the run it ended";
    EXPECT_EQ(RunAnd(application, dialog, [&] { EXPECT_THROW(dialog->RunModal(), kiocore::kio_exception); }),
              -1);
}

TEST_F(Dialog, EndsByWorkThatAnotherThreadPostsWhileAnotherDialogRunsInside)
{
    const UI_DialogPtr outer(new UI_Dialog(nullptr, u"outer", nullptr));
    const UI_DialogPtr inner(new UI_Dialog(nullptr, u"inner", outer.get()));
    std::thread worker;
    std::vector<std::string> order;
    const int end = RunAnd(application, outer, [&] {
        worker = std::thread([&] {
            application->Post([&] {
                outer->EndModal(3); // inner goes on
                order.push_back("outer was ended");
                application->Post([&] { inner->EndModal(4); });
            });
        });
        EXPECT_EQ(inner->RunModal(), 4);
        order.push_back("inner is over");
    });
    worker.join();
    EXPECT_EQ(end, 3);
    EXPECT_THAT(order, testing::ElementsAre("outer was ended", "inner is over"));
}

TEST_F(Dialog, MayLoseItsParentWhileItRuns)
{
    UI_OSWindowPtr parent(new UI_OSWindow(u"parent", nullptr));
    const UI_DialogPtr dialog(new UI_Dialog(nullptr, u"dialog", parent.get()));
    EXPECT_EQ(RunAnd(application, dialog, [&] { parent.reset(); }), UI_Dialog::kResult_Cancel);
    EXPECT_FALSE(dialog->IsAlive());
    EXPECT_EQ(dialog->RunModal(), UI_Dialog::kResult_Cancel);
    dialog->Position();
    dialog->EndModal(1);
}

TEST_F(Dialog, MayLoseTheWindowWhoseButtonOpenedIt)
{
    // The window goes at once and the dialog with it; its button is in the middle of a click and has to stay.
    UI_OSWindowPtr parent(new UI_OSWindow(u"parent", nullptr));
    UI_TextButtonPtr opens(new UI_TextButton(u"Open"));
    parent->AddChild(opens);
    QPointer<QWidget> button = opens->GetImpl().widget;
    int end = 0;
    opens->SetChangedFunction([&](UI_ControlChangedMessage*) {
        AskingDialog dialog(parent.get());
        UI_NodePtr unrelated(new UI_SearchBox(false, false));
        end = RunAnd(application, dialog.node, [&] {
            const QPointer<QWidget> widget = unrelated->GetImpl().widget;
            unrelated.reset();
            EXPECT_TRUE(widget.isNull()) << "does not have to wait for the dialog's end";
            parent.reset();
            EXPECT_FALSE(button.isNull());
        });
    });
    opens.reset(); // nobody but the parent holds it
    support::ShowActive(*parent);
    QTest::mouseClick(button.data(), Qt::LeftButton);
    EXPECT_EQ(end, UI_Dialog::kResult_Cancel);
    ui::ScApplication::RunPending();
    EXPECT_TRUE(button.isNull());
}

TEST_F(Dialog, MayBeDestroyedInItsOwnButtonsFunction)
{
    auto dialog = std::make_unique<AskingDialog>();
    const QPointer<QWidget> widget = dialog->node->GetImpl().widget;
    dialog->ok->SetChangedFunction([&](UI_ControlChangedMessage*) { dialog.reset(); });
    support::ShowActive(*dialog->node);
    QTest::mouseClick(dialog->ok->GetImpl().widget.data(), Qt::LeftButton);
    ui::ScApplication::RunPending();
    EXPECT_TRUE(widget.isNull());

    dialog = std::make_unique<AskingDialog>();
    dialog->ok->SetChangedFunction([&](UI_ControlChangedMessage*) { dialog.reset(); });
    application->Post([&] { dialog->ok->Click(); });
    UI_Dialog* const running = dialog->node.get(); // the run keeps it
    EXPECT_EQ(running->RunModal(), UI_Dialog::kResult_OK);
}

TEST_F(Dialog, BelongsToTheMainWindowUnlessToldOtherwise)
{
    const UI_OSWindowPtr main(new UI_OSWindow(u"main", nullptr));
    UI_NodeManager::SetMainTopLevelWindow(main);
    main->SetBounds({100, 100, 500, 400});
    support::ShowActive(*main);
    const UI_DialogPtr dialog(new UI_Dialog(nullptr, u"dialog", nullptr));
    dialog->SetSize({200, 100});
    dialog->Position();
    EXPECT_EQ(dialog->GetImpl().widget->parentWidget(), main->GetImpl().widget);
    EXPECT_EQ(dialog->GetBounds(), (RectT<float>{200, 200, 400, 300}));
}

TEST(DialogSizes, AreKeptBetweenRunsAndNonsenseIsIgnored)
{
    // The offscreen display is 800 x 800; a dialog of at least 200 x 100, of which SetSize asked 300 x 150.
    const struct {
        const char* name;
        const char* file; // the whole settings file before; null is a run that left 450 x 350 there
        const char* nodeID;
        SizeT<float> expected;
    } kCases[] = {
        {"kept by the last run", nullptr, "Asking", {450, 350}},
        {"of another dialog", nullptr, "Other", {300, 150}},
        {"kept", "[WindowSizes]\nAsking=500x400\n", "Asking", {500, 400}},
        {"a name with what separates", "[WindowSizes]\na%252Fb%2520c=500x400\n", "a/b c", {500, 400}},
        {"without a name nothing is kept", "[WindowSizes]\n=500x400\n", "", {300, 150}},
        {"larger than the screen", "[WindowSizes]\nAsking=3000x400\n", "Asking", {800, 400}},
        {"smaller than the minimum", "[WindowSizes]\nAsking=1x1\n", "Asking", {200, 100}},
        {"zero", "[WindowSizes]\nAsking=0x400\n", "Asking", {300, 150}},
        {"negative", "[WindowSizes]\nAsking=-500x-400\n", "Asking", {300, 150}},
        {"absurd", "[WindowSizes]\nAsking=2000000000x400\n", "Asking", {300, 150}},
        {"beyond numbers", "[WindowSizes]\nAsking=99999999999999x400\n", "Asking", {300, 150}},
        {"text", "[WindowSizes]\nAsking=wide x high\n", "Asking", {300, 150}},
        {"half", "[WindowSizes]\nAsking=500\n", "Asking", {300, 150}},
        {"a variant of another kind", "[WindowSizes]\nAsking=@Rect(1 2 3 4)\n", "Asking", {300, 150}},
        {"a damaged file", "[Window\x01\x02\xff=x[[\n\n=\\x", "Asking", {300, 150}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TemporaryFolder folder;
        ui::ApplicationSettings settings;
        settings.settingsFileUTF8 = folder / "sub/settings.ini";
        if (test.file != nullptr) {
            support::WriteFile(settings.settingsFileUTF8, test.file);
        }
        support::ScTestApplication application(settings);
        const auto make = [](const char* inNodeID) {
            AskingDialog dialog(nullptr, inNodeID);
            dialog.node->SetMinimumSize({200, 100});
            dialog.node->SetSize({300, 150});
            dialog.node->SetSaveAndRestoreSize(true);
            dialog.node->Position();
            return dialog.node;
        };
        if (test.file == nullptr) {
            const UI_DialogPtr before = make("Asking");
            EXPECT_EQ(RunAnd(application, before, [&] { before->SetSize({450, 350}); }), -1);
        }
        const UI_DialogPtr dialog = make(test.nodeID);
        const RectT<float> bounds = dialog->GetBounds();
        EXPECT_EQ(bounds.Width(), test.expected.width);
        EXPECT_EQ(bounds.Height(), test.expected.height);
        EXPECT_EQ(bounds.left, 400 - int(test.expected.width / 2));
    }
}

TEST_F(Dialog, OKStandsWhereThePlatformHasIt)
{
    struct LayoutStyle final : QProxyStyle {
        explicit LayoutStyle(int inLayout) : QProxyStyle(QStyleFactory::create("Fusion")), layout(inLayout) {}
        int styleHint(StyleHint inHint, const QStyleOption* inOption, const QWidget* inWidget,
                      QStyleHintReturn* outData) const override
        {
            return inHint == SH_DialogButtonLayout
                       ? layout
                       : QProxyStyle::styleHint(inHint, inOption, inWidget, outData);
        }
        int layout;
    };
    const struct {
        const char* name;
        int layout;
        bool expectedRightmost;
    } kCases[] = {{"Windows", QDialogButtonBox::WinLayout, false},
                  {"Mac", QDialogButtonBox::MacLayout, true},
                  {"KDE", QDialogButtonBox::KdeLayout, false},
                  {"GNOME", QDialogButtonBox::GnomeLayout, true}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        QApplication::setStyle(new LayoutStyle(test.layout));
        EXPECT_EQ(UI_Dialog::IsOKRightmost(), test.expectedRightmost);
    }
}
