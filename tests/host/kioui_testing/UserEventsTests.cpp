#include <kioui/controls/Checkbox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/Dialog.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include "ui/NodeImpl.h"

#include <support/ui/TestApplication.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

#include <gmock/gmock.h>

using namespace kioui;
using controls::UI_Checkbox;
using controls::UI_TextButton;
using ::testing::ElementsAre;
namespace user = kioui::testing;

namespace {

/// What a widget of a window is told, by the events that arrive at it.
class EventLog final : public QObject {
public:
    explicit EventLog(QWidget* inWidget) { inWidget->installEventFilter(this); }
    std::vector<std::string> seen;

    bool eventFilter(QObject*, QEvent* inEvent) override
    {
        switch (inEvent->type()) {
        case QEvent::MouseButtonPress:
            return Note("press", *static_cast<QMouseEvent*>(inEvent));
        case QEvent::MouseButtonDblClick:
            return Note("double press", *static_cast<QMouseEvent*>(inEvent));
        case QEvent::MouseButtonRelease:
            return Note("release", *static_cast<QMouseEvent*>(inEvent));
        case QEvent::MouseMove:
            return static_cast<QMouseEvent*>(inEvent)->buttons() != Qt::NoButton &&
                   Note("move", *static_cast<QMouseEvent*>(inEvent));
        case QEvent::Wheel:
            seen.push_back("wheel " + std::to_string(static_cast<QWheelEvent*>(inEvent)->angleDelta().y()));
            return true;
        case QEvent::KeyPress: {
            const auto& key = *static_cast<QKeyEvent*>(inEvent);
            seen.push_back(std::to_string(key.key()) + "/" + std::to_string(int(key.modifiers()) >> 25) +
                           "/" + key.text().toStdString());
            return true;
        }
        default:
            return false;
        }
    }

private:
    bool Note(const char* inWhat, const QMouseEvent& inEvent)
    {
        EXPECT_TRUE(inEvent.spontaneous());
        seen.push_back(std::string(inWhat) + " " + std::to_string(int(inEvent.position().x())) + "," +
                       std::to_string(int(inEvent.position().y())));
        return true;
    }
};

class UserEvents : public ::testing::Test {
protected:
    UserEvents() : window(new ui::UI_OSWindow(u"Window", nullptr))
    {
        window->SetNodeID("Window");
        window->SetSize({300, 200});
    }
    template <typename T>
    boost::intrusive_ptr<T> Add(boost::intrusive_ptr<T> inNode, const RectT<float>& inBounds)
    {
        window->AddChild(inNode);
        inNode->SetBounds(inBounds);
        return inNode;
    }
    QWidget* Widget(const UI_Node& inNode) const { return inNode.GetImpl().widget; }

    support::ScTestApplication application;
    boost::intrusive_ptr<ui::UI_OSWindow> window;
};

} // namespace

TEST_F(UserEvents, TheMouseReachesWhatLiesOnTop)
{
    const auto below = Add<UI_Checkbox>(new UI_Checkbox(u"below"), {10, 10, 110, 60});
    const auto above = Add<UI_TextButton>(new UI_TextButton(u"above"), {60, 10, 160, 60});
    window->UI_Show(true);
    EventLog belowLog(Widget(*below));
    EventLog aboveLog(Widget(*above));

    user::Click(*window, {70, 20});
    user::DoubleClick(*window, {12, 13});
    EXPECT_THAT(aboveLog.seen, ElementsAre("press 10,10", "release 10,10"));
    EXPECT_THAT(belowLog.seen, ElementsAre("press 2,3", "release 2,3", "double press 2,3", "release 2,3"));
}

TEST_F(UserEvents, APressedNodeKeepsTheMouseUntilTheRelease)
{
    const auto from = Add<UI_TextButton>(new UI_TextButton(u"from"), {10, 10, 60, 40});
    const auto to = Add<UI_TextButton>(new UI_TextButton(u"to"), {100, 10, 160, 40});
    window->UI_Show(true);
    EventLog fromLog(Widget(*from));
    EventLog toLog(Widget(*to));

    user::PressMouse(*window, {20, 20});
    user::MoveMouse(*window, {60, 25});
    user::ReleaseMouse(*window, {110, 20});
    EXPECT_THAT(fromLog.seen, ElementsAre("press 10,10", "move 50,15", "move 100,10", "release 100,10"));
    EXPECT_THAT(toLog.seen, ElementsAre());
}

TEST_F(UserEvents, TheWheelTurnsWhatThePointerIsOver)
{
    const auto box = Add<UI_Checkbox>(new UI_Checkbox(u"box"), {10, 10, 60, 40});
    window->UI_Show(true);
    EventLog log(Widget(*box));
    user::TurnWheel(*window, user::MiddleOf(*box), -3);
    user::TurnWheel(*window, {200, 150}, 1);
    EXPECT_THAT(log.seen, ElementsAre("wheel -360"));
}

TEST_F(UserEvents, AModalDialogKeepsEventsFromOtherWindows)
{
    const auto box = Add<UI_Checkbox>(new UI_Checkbox(u"box"), {10, 10, 60, 40});
    window->UI_Show(true);
    EventLog log(Widget(*box));
    ui::UI_DialogPtr dialog(new UI_Dialog(nullptr, u"modal", window.get()));
    user::RunWhenIdle([&] {
        EXPECT_THAT(user::ShownWindows(), ElementsAre(dialog.get(), window.get()));
        user::Click(*window, {20, 20});
        user::TurnWheel(*window, {20, 20}, 1);
        user::PressKey(*window, "Space");
        EXPECT_THAT(log.seen, ElementsAre());
        dialog->EndModal(3);
    });
    EXPECT_EQ(dialog->RunModal(), 3);
    user::Click(*window, {20, 20});
    EXPECT_THAT(log.seen, ElementsAre("press 10,10", "release 10,10"));
}

TEST_F(UserEvents, KeysAreNamed)
{
    QLineEdit* const edit = new QLineEdit(Widget(*window));
    window->UI_Show(true);
    edit->setFocus();
    EventLog log(edit);
    const struct {
        const char* name;
        int key;
        int modifiers; // 1 shift, 2 control, 4 alt
        const char* text;
    } kCases[] = {
        {"Tab", Qt::Key_Tab, 0, "\t"},
        {"Shift+Tab", Qt::Key_Backtab, 1, ""},
        {"Space", Qt::Key_Space, 0, " "},
        {"Return", Qt::Key_Return, 0, "\r"},
        {"Escape", Qt::Key_Escape, 0, "\x1b"},
        {"Down", Qt::Key_Down, 0, ""},
        {"PgDown", Qt::Key_PageDown, 0, ""},
        {"Home", Qt::Key_Home, 0, ""},
        {"Delete", Qt::Key_Delete, 0, ""},
        {"Backspace", Qt::Key_Backspace, 0, "\b"},
        {"F2", Qt::Key_F2, 0, ""},
        {"Ctrl+A", Qt::Key_A, 2, "a"},
        {"Shift+A", Qt::Key_A, 1, "A"},
        {"x", Qt::Key_X, 0, "x"},
        {"+", Qt::Key_Plus, 0, "+"},
        {",", Qt::Key_Comma, 0, ","},
        {"Alt+Down", Qt::Key_Down, 4, ""},
        {"ü", Qt::Key_Udiaeresis, 0, "ü"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_TRUE(user::IsKeyName(test.name));
        log.seen.clear();
        user::PressKey(*window, test.name);
        ASSERT_FALSE(log.seen.empty());
        EXPECT_EQ(log.seen.back(),
                  std::to_string(test.key) + "/" + std::to_string(test.modifiers) + "/" + test.text);
    }
}

TEST_F(UserEvents, KeysAndWindowsThatThereAreNotAreNamed)
{
    const auto message = [](const std::function<void()>& inAction) -> std::string {
        try {
            inAction();
        } catch (const kiocore::kio_exception& error) {
            EXPECT_EQ(error.Code(), kiocore::kError_BadArgument);
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_THAT(message([&] {
                    user::Click(*window, {1, 1});
                }),
                ::testing::StartsWith("the window \"Window\" (node ID \"Window\") is not shown"));
    window->UI_Show(true);
    for (const char* name : {"", "Frobnicate", "xy", "Ctrl+", "Ctrl+A, Ctrl+B"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(user::IsKeyName(name));
        EXPECT_THAT(message([&] { user::PressKey(*window, name); }),
                    ::testing::StartsWith("there is no key \"" + std::string(name) + "\""));
    }
}

TEST_F(UserEvents, TypedTextArrivesWhole)
{
    QLineEdit* const edit = new QLineEdit(Widget(*window));
    window->UI_Show(true);
    edit->setFocus();
    const ui::UTF16String text = u"Blur \U0001F3AC \u00e9e\u0301 \u8a9e";
    user::TypeText(*window, text);
    EXPECT_EQ(ui::FromQt(edit->text()), text);
}

TEST_F(UserEvents, WhatIsPutOffRunsInTheDialogThatAClickOpens)
{
    const auto button = Add<UI_TextButton>(new UI_TextButton(u"open"), {10, 10, 110, 40});
    std::vector<std::string> order;
    button->SetChangedFunction([&](UI_ControlChangedMessage*) {
        ui::UI_DialogPtr dialog(new UI_Dialog(nullptr, u"inner", window.get()));
        order.push_back("opens");
        order.push_back("answered " + std::to_string(dialog->RunModal()));
    });
    window->UI_Show(true);
    user::RunWhenIdle([&] {
        order.push_back("in it");
        NodeCast<UI_Dialog>(user::ShownWindows().front()).EndModal(9);
    });
    user::Click(*window, user::MiddleOf(*button));
    EXPECT_THAT(order, ElementsAre("opens", "in it", "answered 9"));
}
