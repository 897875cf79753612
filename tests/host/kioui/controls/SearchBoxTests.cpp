#include <kioui/controls/SearchBox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>
#include <kioui/ui/Window.h>

#include <support/ui/Keys.h>
#include <support/ui/TestApplication.h>

#include <QAbstractItemView>
#include <QAction>
#include <QCompleter>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QToolButton>
#include <gmock/gmock.h>

using namespace kioui;
using namespace kioui::controls;
using ui::UI_OSWindow;
using ui::UI_OSWindowPtr;

namespace {

/// A shown search box that has the focus, another control, and what was told in order: "~" before what was
/// told while typing.
struct SearchBox : testing::Test {
    SearchBox()
    {
        box->SetChangedFunction([this](UI_ControlChangedMessage*) { Told(""); });
        box->SetInteractiveChangeFunction([this](UI_ControlChangedMessage*) { Told("~"); });
        window->AddChild(box);
        window->AddChild(other);
        box->SetBounds({0, 0, 300, 30});
        support::ShowActive(*window);
    }
    void Told(const std::string& inHow)
    {
        told.push_back(inHow + kiocore::utility::ToUTF8(box->GetValue().value_or(u"unknown")));
    }
    QLineEdit* Line() const { return ui::WidgetOf<QLineEdit>(*box); }
    void Leave() { other->SetKeyboardFocus(FocusChangeReason::kKeyboard); }

    support::ScTestApplication application;
    UI_OSWindowPtr window{new UI_OSWindow(u"window", nullptr)};
    UI_SearchBoxPtr box{new UI_SearchBox(true, true)};
    UI_TextButtonPtr other{new UI_TextButton(u"other")};
    std::vector<std::string> told;
};

} // namespace

TEST_F(SearchBox, TellsOfEachEditAndOfTheEnd)
{
    QTest::keyClicks(Line(), "ab");
    support::PressKey(Qt::Key_Return);
    support::PressKey(Qt::Key_Return); // searches again
    support::PressKey(Qt::Key_Backspace);
    Leave();
    EXPECT_THAT(told, testing::ElementsAre("~a", "~ab", "ab", "ab", "~a", "a"));
    told.clear();
    box->SetKeyboardFocus(FocusChangeReason::kKeyboard);
    Leave();
    box->SetValue(u"set");
    box->SetKeyboardFocus(FocusChangeReason::kKeyboard);
    Leave();
    EXPECT_THAT(told, testing::IsEmpty()) << "nothing was changed by a person";
}

TEST_F(SearchBox, CountsEveryWayOfEditing)
{
    box->SetValue(u"ab");
    // The button that clears: the only one that shows while there is text, besides the magnifier.
    const auto buttons = Line()->findChildren<QToolButton*>();
    ASSERT_EQ(buttons.size(), 2);
    for (QToolButton* button : buttons) {
        button->click();
    }
    QInputMethodEvent composing(QString::fromUtf8("に"), {});
    QApplication::sendEvent(Line(), &composing);
    QInputMethodEvent composed;
    composed.setCommitString(QString::fromUtf8("日"));
    QApplication::sendEvent(Line(), &composed);
    Line()->selectAll();
    Line()->cut();
    Line()->paste();
    Line()->undo();
    Leave();
    EXPECT_THAT(told, testing::ElementsAre("~", "~日", "~", "~日", "~", ""));
}

TEST_F(SearchBox, OfAnUnknownValueHasNoneUntilSomebodyTypes)
{
    EXPECT_EQ(box->GetValue(), u"");
    box->SetUnknownStateText(u"Search");
    EXPECT_EQ(box->GetUnknownStateText(), u"Search");
    box->SetValue(u"x");
    box->SetValueUnknown();
    EXPECT_EQ(box->GetValue(), std::nullopt);
    EXPECT_EQ(box->GetText(), u"");
    Leave();
    EXPECT_TRUE(told.empty());
    QTest::keyClicks(Line(), "a");
    EXPECT_EQ(box->GetValue(), u"a");
    box->SetValueUnknown();
    box->SetValue(u"");
    EXPECT_EQ(box->GetValue(), u"");
}

TEST_F(SearchBox, OffersWhatWasSearchedForBefore)
{
    for (const char* text : {"sharpen", "blur", "blend"}) {
        box->SetValue(u"");
        QTest::keyClicks(Line(), text);
        support::PressKey(Qt::Key_Return);
    }
    box->SetValue(u"");
    told.clear();
    QTest::keyClicks(Line(), "BL");
    QCompleter* const completer = Line()->completer();
    ASSERT_EQ(completer->completionCount(), 2);
    ASSERT_TRUE(completer->popup()->isVisible());
    QTest::keyClick(completer->popup(), Qt::Key_Down);
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    EXPECT_EQ(box->GetText(), u"blend") << "the latest comes first";
    EXPECT_THAT(told, testing::Contains("~blend"));
}

TEST_F(SearchBox, MayGoInEitherOfItsFunctions)
{
    for (const bool interactive : {true, false}) {
        SCOPED_TRACE(interactive);
        UI_SearchBoxPtr own(new UI_SearchBox(false, true));
        const auto end = [&](UI_ControlChangedMessage*) {
            own->RemoveFromParent();
            own.reset();
        };
        interactive ? own->SetInteractiveChangeFunction(end) : own->SetChangedFunction(end);
        window->AddChild(own);
        const QPointer<QWidget> widget = own->GetImpl().widget;
        own->SetKeyboardFocus(FocusChangeReason::kProgram);
        QTest::keyClick(widget.data(), Qt::Key_A);
        if (!interactive) {
            QTest::keyClick(widget.data(), Qt::Key_Return);
        }
        EXPECT_EQ(own, nullptr);
        ui::ScApplication::RunPending();
        EXPECT_TRUE(widget.isNull());
    }
}
