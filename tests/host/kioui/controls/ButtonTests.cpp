#include <kioui/controls/Checkbox.h>
#include <kioui/controls/HotText.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>

#include <support/TraceRecorder.h>
#include <support/ui/Keys.h>
#include <support/ui/TestApplication.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QHelpEvent>
#include <QToolTip>
#include <gmock/gmock.h>

using namespace kioui;
using namespace kioui::controls;
using ui::UI_OSWindow;
using ui::UI_OSWindowPtr;

namespace {

struct Buttons : testing::Test {
    support::ScTestApplication application;
    UI_OSWindowPtr window{new UI_OSWindow(u"window", nullptr)};
};

boost::intrusive_ptr<UI_Control> Make(int inKind, const kiocore::UTF16String& inText)
{
    switch (inKind) {
    case 0:
        return new UI_TextButton(inText);
    case 1:
        return new UI_Checkbox(inText);
    case 2:
        return new UI_HotTextButton(inText);
    default:
        return new UI_HotTextURL(inText, {});
    }
}
const int kKinds = 4;

} // namespace

TEST_F(Buttons, TextsComeBackAsTheyWentAndMakeNoShortcuts)
{
    for (int kind = 0; kind < kKinds; ++kind) {
        for (const char16_t* text :
             {u"", u"R&B", u"&File", u"a && b", u"&&&", u"<b>x</b> &amp;", u"日本 😀"}) {
            const auto control = Make(kind, text);
            SCOPED_TRACE(control->GetClassName());
            EXPECT_EQ(control->GetText(), text);
            EXPECT_EQ(control->GetAccessibleName(), text);
            EXPECT_TRUE(ui::WidgetOf<QAbstractButton>(*control)->shortcut().isEmpty());
        }
    }
}

TEST_F(Buttons, ClicksOfAllKindsCallOnceAndOnlyWhatIsEnabled)
{
    for (int kind = 0; kind < kKinds; ++kind) {
        const auto control = Make(kind, u"control");
        SCOPED_TRACE(control->GetClassName());
        int clicks = 0;
        control->SetChangedFunction([&](UI_ControlChangedMessage* inMessage) {
            EXPECT_EQ(inMessage->GetControl(), control.get());
            ++clicks;
        });
        QWidget* const widget = control->GetImpl().widget;
        window->AddChild(control);
        support::ShowActive(*window);
        control->SetKeyboardFocus(FocusChangeReason::kProgram);
        const auto clickInAllWays = [&] {
            QTest::mouseClick(widget, Qt::LeftButton);
            support::PressKey(Qt::Key_Space);
            QAccessible::queryAccessibleInterface(widget)->actionInterface()->doAction(
                kind == 1 ? QAccessibleActionInterface::toggleAction()
                          : QAccessibleActionInterface::pressAction());
            if (control->IsEnabled()) { // it shows the button pressed for a moment
                EXPECT_TRUE(QTest::qWaitFor([&] { return clicks == 3; }));
            }
            if (auto* box = dynamic_cast<UI_Checkbox*>(control.get())) {
                box->Click();
            } else if (auto* button = dynamic_cast<UI_TextButton*>(control.get())) {
                button->Click();
            } else {
                NodeCast<UI_HotTextButton>(control.get()).Click();
            }
        };
        clickInAllWays();
        EXPECT_EQ(clicks, 4);
        control->SetEnabled(false);
        clickInAllWays();
        EXPECT_EQ(clicks, 4);
        control->RemoveFromParent();
    }
}

TEST_F(Buttons, CheckboxesTellOnlyOfPersons)
{
    const UI_CheckboxPtr box(new UI_Checkbox(u"box"));
    std::vector<bool> told;
    box->SetChangedFunction([&](UI_ControlChangedMessage*) { told.push_back(box->IsChecked()); });
    box->SetChecked(true);
    box->SetChecked(false);
    EXPECT_TRUE(told.empty());
    box->Click();
    box->Click();
    EXPECT_THAT(told, testing::ElementsAre(true, false));
}

TEST_F(Buttons, CheckboxesCanLeaveTheMouseToWhatLiesBeneath)
{
    const UI_CheckboxPtr box(new UI_Checkbox(u"box"));
    window->AddChild(box);
    box->SetBounds({0, 0, 100, 30});
    support::ShowActive(*window);
    QWidget* const around = window->GetImpl().widget;
    EXPECT_EQ(around->childAt(5, 5), box->GetImpl().widget);
    box->SetTransparentToMouse(true);
    EXPECT_EQ(around->childAt(5, 5), nullptr);
    box->ShowPressed(true);
    EXPECT_FALSE(box->IsChecked());
}

TEST_F(Buttons, WhatTheirFunctionsThrowIsReported)
{
    const UI_TextButtonPtr button(new UI_TextButton(u"button"));
    button->SetChangedFunction(
        [](UI_ControlChangedMessage*) { throw kiocore::kio_exception(std::string("it broke"), 1); });
    const support::TraceRecorder trace("Threads");
    button->Click();
    EXPECT_EQ(trace.CountContaining("it broke"), 1);
}

TEST_F(Buttons, LinksAreShortenedAtTheEndAndShownWholeAsAToolTip)
{
    const UI_HotTextButtonPtr link(new UI_HotTextButton(u"http://example.com/a<b>&c/with/a/long/path"));
    window->AddChild(link);
    const SizeT<float> whole = link->GetPreferredSize();
    QWidget* const widget = link->GetImpl().widget;
    const auto toolTip = [&] {
        QToolTip::hideText();
        QHelpEvent ask(QEvent::ToolTip, QPoint(3, 3), widget->mapToGlobal(QPoint(3, 3)));
        QApplication::sendEvent(widget, &ask);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    support::ShowActive(*window);
    link->SetBounds({0, 0, whole.width, whole.height});
    EXPECT_EQ(toolTip(), QString());
    link->SetBounds({0, 0, whole.width / 2, whole.height});
    EXPECT_EQ(toolTip(), "<span>http://example.com/a&lt;b&gt;&amp;c/with/a/long/path</span>");
    EXPECT_EQ(link->GetText(), u"http://example.com/a<b>&c/with/a/long/path");
    QToolTip::hideText();
}

TEST_F(Buttons, LinksTakeTheirFontFromWhoeverGivesOne)
{
    const UI_HotTextButtonPtr link(new UI_HotTextButton(u"link"));
    EXPECT_EQ(link->GetFontSize(), ui::GetFontSize(0));
    const float before = link->GetPreferredSize().width;
    link->SetFontSize(40);
    EXPECT_EQ(link->GetFontSize(), 40);
    EXPECT_GT(link->GetPreferredSize().width, before);

    const FontRef font = ui::UI_NodeManager::GetDefaultDrawSupplier()->NewFont({}, 30);
    const UI_HotTextURLPtr url(new UI_HotTextURL(u"http://example.com", font));
    EXPECT_EQ(url->GetFontSize(), 30);
    EXPECT_GE(url->GetPreferredSize().width, font->MeasureWidth(u"http://example.com"));
}
