#include <kioui/controls/Checkbox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>
#include <kioui/ui/SubView.h>

#include <support/TemporaryFolder.h>
#include <support/ui/Keys.h>
#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

using namespace kioui;
using controls::UI_TextButton;
using controls::UI_TextButtonPtr;
using ui::UI_OSWindow;
using ui::UI_OSWindowPtr;
using ui::UI_SubView;
using ui::UI_SubViewPtr;

namespace {

UI_TextButtonPtr NewButton(const char* inNodeID)
{
    UI_TextButtonPtr button(new UI_TextButton(kiocore::utility::ToUTF16(inNodeID)));
    button->SetNodeID(inNodeID);
    return button;
}

struct Window : testing::Test {
    support::ScTestApplication application;
    UI_OSWindowPtr window{new UI_OSWindow(u"window", nullptr)};
};

/// Where Tab comes by, from the focus on until it is there again.
std::vector<std::string> TabStops(const UI_OSWindow& inWindow)
{
    std::vector<std::string> stops;
    const UI_Node* const start = inWindow.GetFocusedNode();
    const UI_Node* at = start;
    do {
        stops.push_back(at != nullptr ? at->GetNodeID() : "nowhere");
        support::PressKey(Qt::Key_Tab);
        at = inWindow.GetFocusedNode();
    } while (at != start && stops.size() < 20);
    return stops;
}

class RecordingWindow final : public UI_OSWindow {
public:
    RecordingWindow() : UI_OSWindow(u"recording", nullptr) {}
    std::vector<std::string> scales;
    int closeRequests = 0;
    bool hides = true;

private:
    void UI_ScaleChanged(float inBefore, float inNow, const RectT<int>& inBounds) override
    {
        scales.push_back(std::to_string(int(inBefore)) + " to " + std::to_string(int(inNow)) + ", " +
                         std::to_string(inBounds.Width()) + " pixels wide");
    }
    void UI_CloseRequested() override
    {
        ++closeRequests;
        if (hides) {
            UI_OSWindow::UI_CloseRequested();
        }
    }
};

} // namespace

TEST_F(Window, TabFollowsTheNodesWhateverTheyWereMadeIn)
{
    const UI_TextButtonPtr last = NewButton("last");
    const UI_SubViewPtr part(new UI_SubView);
    const UI_TextButtonPtr inPart = NewButton("inPart");
    const UI_TextButtonPtr alsoInPart = NewButton("alsoInPart");
    const UI_TextButtonPtr first = NewButton("first");
    window->AddChild(first);
    window->AddChild(part);
    window->AddChild(last);
    part->AddChild(alsoInPart);
    part->AddChild(inPart);
    support::ShowActive(*window);
    EXPECT_THAT(TabStops(*window), testing::ElementsAre("first", "alsoInPart", "inPart", "last"));

    part->AddChild(NewButton("added")); // to a shown window
    part->AddChild(alsoInPart);
    inPart->SetKeyboardTarget(false);
    EXPECT_THAT(TabStops(*window), testing::ElementsAre("first", "added", "alsoInPart", "last"));
    support::PressKey(Qt::Key_Backtab);
    EXPECT_EQ(window->GetFocusedNode(), last.get());
}

TEST_F(Window, WidgetsThatANodeChainsItselfStayBehindItInTheirOrder)
{
    const UI_TextButtonPtr before = NewButton("before");
    const UI_SubViewPtr list(new UI_SubView);
    const UI_TextButtonPtr after = NewButton("after");
    window->AddChild(before);
    window->AddChild(list);
    window->AddChild(after);
    list->GetImpl().chainsItsChildren = true;
    const UI_TextButtonPtr lower = NewButton("lower");
    const UI_TextButtonPtr upper = NewButton("upper");
    list->AddChild(lower);
    list->AddChild(upper);
    QWidget::setTabOrder(upper->GetImpl().widget, lower->GetImpl().widget);
    support::ShowActive(*window);
    EXPECT_THAT(TabStops(*window), testing::ElementsAre("before", "upper", "lower", "after"));
}

TEST_F(Window, TheFirstTargetGetsTheFocusUnlessSomebodyHasIt)
{
    window->AddChild(NewButton("disabled"));
    window->FindNode("disabled")->SetEnabled(false);
    window->AddChild(NewButton("hidden"));
    window->FindNode("hidden")->SetVisible(false);
    window->AddChild(NewButton("first"));
    window->AddChild(NewButton("second"));
    support::ShowActive(*window);
    EXPECT_EQ(window->GetFocusedNode(), window->FindNode("first"));
    window->FindNode("second")->SetKeyboardFocus(FocusChangeReason::kProgram);
    window->UI_Show(false);
    EXPECT_EQ(window->GetFocusedNode(), nullptr);
    support::ShowActive(*window);
    EXPECT_EQ(window->GetFocusedNode(), window->FindNode("second"));

    const UI_OSWindowPtr other(new UI_OSWindow(u"other", nullptr));
    other->AddChild(NewButton("theirs"));
    support::ShowActive(*other);
    EXPECT_EQ(window->GetFocusedNode(), nullptr) << "lies in another window";
}

TEST_F(Window, TitlesComeBackAsTheyWent)
{
    for (const char16_t* title : {u"", u"R&B", u"a [*] b", u"[*][*]", u"[*]x[*][*][*]", u"naïve 😀"}) {
        window->SetTitle(title);
        EXPECT_EQ(window->GetText(), title);
    }
}

TEST_F(Window, ClosingAsksTheNode)
{
    const boost::intrusive_ptr<RecordingWindow> own(new RecordingWindow);
    support::ShowActive(*own);
    own->hides = false;
    own->GetImpl().widget->close();
    EXPECT_TRUE(own->IsVisible());
    own->hides = true;
    own->GetImpl().widget->close();
    EXPECT_FALSE(own->IsVisible());
    EXPECT_EQ(own->closeRequests, 2);
    EXPECT_TRUE(own->IsAlive());
}

TEST_F(Window, IsNeverSmallerThanItsMinimum)
{
    window->SetMinimumSize({400.2f, 300});
    EXPECT_EQ(window->GetMinimumSize(), (SizeT<float>{401, 300}));
    window->SetSize({10, 500});
    EXPECT_EQ(window->GetBounds().Width(), 401);
    EXPECT_EQ(window->GetBounds().Height(), 500);
    window->SetMinimumSize({-5, 20});
    EXPECT_EQ(window->GetMinimumSize(), (SizeT<float>{0, 20}));
}

TEST_F(Window, TheMainAndTheModalWindowAreForgottenWhenTheyGo)
{
    UI_NodeManager::SetMainTopLevelWindow(window);
    EXPECT_EQ(UI_NodeManager::GetMainTopLevelWindow(), window);
    const UI_NodeManager::SetModalWindow guard(*window);
    window.reset();
    EXPECT_EQ(UI_NodeManager::GetMainTopLevelWindow(), nullptr);
    EXPECT_EQ(NewButton("x")->GetImpl().widget->parentWidget(), nullptr);
}

TEST(WindowOnTwoScreens, LearnsOfAnotherScale)
{
    const support::TemporaryFolder folder;
    const std::string screens = folder / "screens.json";
    support::WriteFile(screens, R"({"screens": [
        {"name": "one", "x": 0, "y": 0, "width": 800, "height": 600, "logicalDpi": 96,
         "logicalBaseDpi": 96, "dpr": 1},
        {"name": "two", "x": 800, "y": 0, "width": 800, "height": 600, "logicalDpi": 96,
         "logicalBaseDpi": 96, "dpr": 2}]})");
    const QByteArray before = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QByteArray::fromStdString(screens));
    {
        support::ScTestApplication application;
        ASSERT_EQ(QGuiApplication::screens().size(), 2);
        const boost::intrusive_ptr<RecordingWindow> window(new RecordingWindow);
        window->SetBounds({10, 10, 210, 110});
        support::ShowActive(*window);
        EXPECT_EQ(window->GetUIScale(), 1);
        window->SetBounds({900, 10, 1100, 110});
        ui::ScApplication::RunPending();
        EXPECT_EQ(window->GetUIScale(), 2);
        EXPECT_THAT(window->scales, testing::ElementsAre("1 to 2, 400 pixels wide"));
    }
    before.isEmpty() ? qunsetenv("QT_QPA_PLATFORM") : qputenv("QT_QPA_PLATFORM", before);
}
