#include <kioui/controls/Checkbox.h>
#include <kioui/controls/StaticText.h>
#include <kioui/dialogs/MessageBox.h>
#include <kioui/ui/NodeManager.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include <support/ui/TestApplication.h>

#include <QClipboard>
#include <QGuiApplication>

#include <gmock/gmock.h>

using namespace kioui;
using dialogs::UI_MessageBox;
using dialogs::messagebox::LatticeDialog;
using dialogs::messagebox::Question;
using dialogs::messagebox::ScAnswer;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
namespace user = kioui::testing;
using Button = UI_MessageBox::Button;
using Icon = UI_MessageBox::Icon;

namespace {

constexpr char16_t kMessage[] = u"You will need to restart Editor for the changes to take place.";

std::u16string Repeated(std::u16string_view inText, int inTimes)
{
    std::u16string text;
    for (int i = 0; i < inTimes; ++i) {
        text += inText;
    }
    return text;
}

UI_MessageBox NewBox(Button inButtons, int inDefault, const std::u16string& inMessage = kMessage)
{
    return UI_MessageBox(nullptr, u"Title", inMessage, inDefault, inButtons, Icon::kQuestion, {}, 0, 0, 0, {},
                         true);
}

UI_Dialog& FrontDialog()
{
    return NodeCast<UI_Dialog>(user::ShownWindows().at(0));
}

UI_Node& Find(UI_Node& inWindow, std::string_view inID)
{
    UI_Node* const found = inWindow.FindNode(inID);
    if (found == nullptr) {
        throw std::runtime_error("no node " + std::string(inID) + " in " + user::DescribeNodes(inWindow));
    }
    return *found;
}

RectT<float> InWindow(const UI_Node& inNode)
{
    const RectT<float> bounds = inNode.GetBounds();
    const PointT<float> corner = inNode.ToWindow({0, 0});
    return {corner.x, corner.y, corner.x + bounds.Width(), corner.y + bounds.Height()};
}

/// Everything lies in the window, nothing on anything else, and texts have the room they ask for.
void ExpectLaidOut(UI_Dialog& inWindow)
{
    const RectT<float> window = inWindow.GetBounds();
    std::vector<std::pair<std::string, RectT<float>>> placed;
    for (const UI_NodePtr& node : inWindow.GetChildren()) {
        if (!node->IsVisible()) {
            continue;
        }
        const RectT<float> bounds = InWindow(*node);
        const std::string name = node->GetNodeID() + " " + node->GetClassName();
        EXPECT_TRUE(bounds.left >= 0 && bounds.top >= 0 && bounds.right <= window.Width() &&
                    bounds.bottom <= window.Height())
            << name << " sticks out of " << user::DescribeNodes(inWindow);
        if (const auto* text = dynamic_cast<controls::UI_StaticText*>(node.get())) {
            EXPECT_GE(bounds.Height(), text->GetHeightForWidth(bounds.Width())) << name;
        } else {
            EXPECT_GE(bounds.Width(), node->GetPreferredSize().width) << name;
            EXPECT_GE(bounds.Height(), node->GetPreferredSize().height) << name;
        }
        for (const auto& [otherName, other] : placed) {
            EXPECT_TRUE(bounds.right <= other.left || other.right <= bounds.left ||
                        bounds.bottom <= other.top || other.bottom <= bounds.top)
                << name << " lies on " << otherName;
        }
        placed.emplace_back(name, bounds);
    }
}

} // namespace

TEST(MessageBox, AnswersWithTheNumberOfWhatWasPressed)
{
    const support::ScTestApplication application;
    const auto click = [](const char* inID) {
        return [inID](UI_Dialog& window) { user::Click(window, user::MiddleOf(Find(window, inID))); };
    };
    const auto keys = [](std::vector<const char*> inKeys) {
        return [inKeys](UI_Dialog& window) {
            for (const char* key : inKeys) {
                user::PressKey(window, key);
            }
        };
    };
    const struct {
        const char* name;
        Button buttons;
        int defaultButton;
        std::function<void(UI_Dialog&)> user;
        int answer;
    } kCases[] = {
        {"a click on the first", Button::kOKCancel, 1, click("Button1"), 1},
        {"a click on the last", Button::kYesNoCancel, 1, click("Button3"), 3},
        {"Return is the default", Button::kYesNo, 2, keys({"Return"}), 2},
        {"Return without a default does nothing", Button::kYesNo, 0, keys({"Return", "Escape"}), 0},
        {"Escape is none, whatever else there is", Button::kOKCancel, 1, keys({"Escape"}), 0},
        {"Escape without buttons", Button::kNone, 0, keys({"Escape"}), 0},
        {"Tab goes on from the default", Button::kYesNoCancel, 3, keys({"Tab", "Space"}),
         UI_Dialog::IsOKRightmost() ? 2 : 1},
        {"Shift+Tab goes back", Button::kYesNo, 1, keys({"Shift+Tab", "Space"}), 2},
        {"Return presses the focused one", Button::kOKCancel, 1, keys({"Tab", "Return"}), 2},
        {"twice counts once", Button::kOKCancel, 1, keys({"Return", "Return"}), 1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        UI_MessageBox box = NewBox(test.buttons, test.defaultButton);
        user::RunWhenIdle([&] {
            EXPECT_EQ(FrontDialog().GetNodeID(), "MessageBox");
            test.user(FrontDialog());
            box.Close(); // or a press that went nowhere would wait for ever
        });
        EXPECT_EQ(box.Show(), test.answer);
        EXPECT_THAT(user::ShownWindows(), ElementsAre());
    }
}

TEST(MessageBox, ShowsAllOfItsTexts)
{
    const support::ScTestApplication application;
    const std::u16string sentence = u"Se necesita un complemento para la compatibilidad con este formato. ";
    const struct {
        const char* name;
        std::u16string message;
        std::vector<std::u16string> buttons;
    } kCases[] = {
        {"no message", u"", {u"OK"}},
        {"a word", u"Done", {u"OK"}},
        {"a sentence", kMessage, {u"Restart now", u"Cancel"}},
        {"three times as long", Repeated(kMessage, 3), {u"Restart now", u"Cancel"}},
        {"an essay", Repeated(sentence, 60), {u"OK"}},
        {"a word wider than other texts", Repeated(u"Donaudampfschiff", 9), {u"OK"}},
        {"lines", u"a\nb\n\nc", {u"OK"}},
        {"what looks like markup", u"<b>5 < 6</b> & more", {u"OK"}},
        {"buttons wider than the message", u"Now?", {sentence, sentence, u""}},
        {"a missing button between others", u"Now?", {u"First", u"", u"Third"}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        UI_MessageBox box(nullptr, u"Title", test.message, 1, test.buttons, Icon::kWarning, {});
        user::RunWhenIdle([&] {
            UI_Dialog& window = FrontDialog();
            EXPECT_EQ(window.GetText(), u"Title");
            EXPECT_EQ(Find(window, "Message").GetText(), test.message);
            ExpectLaidOut(window);
            const SizeT<float> least = window.GetMinimumSize();
            window.SetSize({least.width + 300, least.height + 100});
            ui::ScApplication::RunPending();
            ExpectLaidOut(window);
            box.Close();
        });
        EXPECT_EQ(box.Show(), 0);
    }
}

TEST(MessageBox, ButtonsStandInTheOrderOfThePlatform)
{
    const support::ScTestApplication application;
    UI_MessageBox box = NewBox(Button::kYesNoCancel, 1);
    user::RunWhenIdle([&] {
        const auto left = [](const char* inID) { return InWindow(Find(FrontDialog(), inID)).left; };
        const bool isFirstRightmost = left("Button1") > left("Button2") && left("Button2") > left("Button3");
        EXPECT_EQ(isFirstRightmost, UI_Dialog::IsOKRightmost());
        EXPECT_EQ(Find(FrontDialog(), "Button3").GetText(), u"Cancel");
        box.Close();
    });
    box.Show();
}

TEST(MessageBox, LiesWhereItWasToldAndTellsItsAnswer)
{
    const support::ScTestApplication application;
    std::vector<int> told;
    const auto callback =
        std::make_shared<UI_MessageBox::Callback>([&](int inNumber) { told.push_back(inNumber); });
    UI_MessageBox box(nullptr, u"Title", kMessage, 1, Button::kOKCancel, Icon::kError, {}, 0, 30, 40,
                      callback, false);
    user::RunWhenIdle([&] {
        const RectT<float> bounds = FrontDialog().GetBounds();
        EXPECT_EQ(bounds.left, 30);
        EXPECT_EQ(bounds.top, 40);
        EXPECT_THAT(told, ElementsAre());
        user::PressKey(FrontDialog(), "Return");
    });
    EXPECT_EQ(box.Show(), 1);
    EXPECT_THAT(told, ElementsAre(1));

    user::RunWhenIdle([&] { box.Close(); });
    EXPECT_EQ(box.Show(), 0) << "shown again, it remembers nothing";
    EXPECT_THAT(told, ElementsAre(1, 0));
}

TEST(MessageBox, NodesBelowTheMessageComeBeforeTheButtons)
{
    const support::ScTestApplication application;
    UI_MessageBox box = NewBox(Button::kOK, 1);
    controls::UI_CheckboxPtr check(new controls::UI_Checkbox(Repeated(u"Do not show this again. ", 12)));
    check->SetNodeID("Check");
    box.AddBelowMessage(check);
    user::RunWhenIdle([&] {
        UI_Dialog& window = FrontDialog();
        ExpectLaidOut(window);
        const RectT<float> message = InWindow(Find(window, "Message"));
        EXPECT_GE(InWindow(*check).top, message.bottom);
        EXPECT_EQ(InWindow(*check).left, message.left);
        EXPECT_GE(InWindow(Find(window, "Button1")).top, InWindow(*check).bottom);
        EXPECT_TRUE(Find(window, "Button1").HasKeyboardFocus());
        user::PressKey(window, "Shift+Tab");
        EXPECT_TRUE(check->HasKeyboardFocus());
        user::PressKey(window, "Space");
        EXPECT_TRUE(check->IsChecked());
        user::PressKey(window, "Return");
    });
    EXPECT_EQ(box.Show(), 1);
}

TEST(MessageBox, TheMessageCanBeCopiedIfItIsTo)
{
    const support::ScTestApplication application;
    for (const bool isSelectable : {true, false}) {
        SCOPED_TRACE(isSelectable);
        QGuiApplication::clipboard()->setText("before");
        UI_MessageBox box(nullptr, u"Title", u"file.mov is damaged", 1, Button::kOK, Icon::kError, {}, 0, 0,
                          0, {}, isSelectable);
        user::RunWhenIdle([&] {
            UI_Dialog& window = FrontDialog();
            const RectT<float> message = InWindow(Find(window, "Message"));
            user::PressMouse(window, {message.left + 1, message.top + 5});
            user::ReleaseMouse(window, {message.right - 1, message.top + 5});
            user::PressKey(window, "Ctrl+C");
            box.Close();
        });
        box.Show();
        EXPECT_EQ(QGuiApplication::clipboard()->text(), isSelectable ? "file.mov is damaged" : "before");
    }
}

TEST(MessageBox, AnswersCanStandInTheUsersPlace)
{
    const auto lattice = [](int inVariant = 0) {
        return LatticeDialog(nullptr, u"Title", u"Message", {}, inVariant, u"Now", u"Later", u"");
    };
    std::vector<Question> asked;
    const ScAnswer outer([&](const Question& inQuestion) {
        asked.push_back(inQuestion);
        return 2;
    });
    EXPECT_EQ(lattice(), 2) << "without an application object";
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].title, u"Title");
    EXPECT_EQ(asked[0].message, u"Message");
    EXPECT_THAT(asked[0].buttons, ElementsAre(u"Now", u"Later"));
    {
        const ScAnswer inner([](const Question&) { return 0; });
        EXPECT_EQ(lattice(), 0);
    }
    EXPECT_EQ(lattice(), 2);
    {
        const ScAnswer wrong([](const Question&) { return 3; });
        try {
            lattice();
            FAIL() << "answered";
        } catch (const kiocore::kio_exception& error) {
            EXPECT_THAT(error.what(),
                        HasSubstr("\"Title\" was answered with button 3; expected 0 or the number "
                                  "of one of its buttons, of which the last is 2"));
        }
    }
    EXPECT_THROW(lattice(1), kiocore::kio_exception);

    const support::ScTestApplication application;
    UI_MessageBox box = NewBox(Button::kYesNo, 1);
    EXPECT_EQ(box.Show(), 2);
    EXPECT_THAT(asked.back().buttons, ElementsAre(u"Yes", u"No"));
}

TEST(MessageBox, LatticeDialogAsksOverItsParent)
{
    const support::ScTestApplication application;
    boost::intrusive_ptr<ui::UI_OSWindow> parent(new ui::UI_OSWindow(u"Parent", nullptr));
    parent->UI_Show(true);
    user::RunWhenIdle([&] {
        UI_Dialog& window = FrontDialog();
        EXPECT_THAT(user::ShownWindows(), ElementsAre(&window, parent.get()));
        EXPECT_EQ(window.FindNode("Button3"), nullptr);
        user::Click(*parent, {10, 10}); // does nothing
        user::PressKey(window, "Return");
    });
    EXPECT_EQ(LatticeDialog(nullptr, u"Title", kMessage, parent, 0, u"Now", u"Later", u""), 1);
}
