#include <kioui/controls/Checkbox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>
#include <kioui/ui/SubView.h>

#include <support/ui/Keys.h>
#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

using namespace kioui;
using controls::UI_Checkbox;
using controls::UI_CheckboxPtr;
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

struct Node : testing::Test {
    support::ScTestApplication application;
    UI_OSWindowPtr window{new UI_OSWindow(u"window", nullptr)};
};

} // namespace

TEST_F(Node, ChildrenMoveBetweenParentsAndKnowWhereTheyAre)
{
    const UI_SubViewPtr left(new UI_SubView);
    const UI_SubViewPtr right(new UI_SubView);
    const UI_TextButtonPtr button = NewButton("button");
    window->AddChild(left);
    window->AddChild(right);
    left->AddChild(button);
    left->AddChild(NewButton("other"));

    right->AddChild(button);
    EXPECT_EQ(button->GetParent(), right.get());
    EXPECT_EQ(left->GetChildren().size(), 1u);
    EXPECT_EQ(window->FindNode("button"), button.get());
    right->AddChild(NewButton("third"));
    right->AddChild(button); // once more: moves to the end, and is there once
    ASSERT_EQ(right->GetChildren().size(), 2u);
    EXPECT_EQ(right->GetChildren().back(), button);

    button->RemoveFromParent();
    EXPECT_EQ(button->GetParent(), nullptr);
    EXPECT_EQ(window->FindNode("button"), nullptr);
    EXPECT_TRUE(button->IsAlive());
}

TEST_F(Node, WhatCannotLieInANodeIsRefused)
{
    const UI_SubViewPtr outer(new UI_SubView);
    const UI_SubViewPtr inner(new UI_SubView);
    const UI_OSWindowPtr other(new UI_OSWindow(u"other", nullptr));
    outer->AddChild(inner);
    const struct {
        const char* name;
        UI_NodePtr parent;
        UI_NodePtr child;
    } kCases[] = {{"itself", outer, outer}, {"what it lies in", inner, outer}, {"a window", outer, other}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_THROW(test.parent->AddChild(test.child), kiocore::kio_exception);
    }
    EXPECT_EQ(inner->GetParent(), outer.get());
    EXPECT_TRUE(inner->GetChildren().empty());
}

TEST_F(Node, IsSeenOnceItLiesInAShownWindowUnlessItWasHidden)
{
    const UI_TextButtonPtr seen = NewButton("seen");
    const UI_TextButtonPtr hidden = NewButton("hidden");
    hidden->SetVisible(false);
    seen->SetVisible(true); // lies nowhere: must not come up as a window of its own
    EXPECT_FALSE(seen->IsVisible());
    window->AddChild(seen);
    window->AddChild(hidden);
    EXPECT_FALSE(seen->IsVisible());

    window->SetVisible(true);
    EXPECT_TRUE(window->IsVisible());
    EXPECT_TRUE(seen->IsVisible());
    EXPECT_FALSE(hidden->IsVisible());
    hidden->SetVisible(true);
    EXPECT_TRUE(hidden->IsVisible());

    seen->RemoveFromParent();
    seen->SetVisible(true);
    EXPECT_FALSE(seen->IsVisible());
    window->AddChild(seen);
    EXPECT_TRUE(seen->IsVisible());
    window->SetVisible(false);
    EXPECT_FALSE(seen->IsVisible());
}

TEST_F(Node, MadeForAModalWindowWaitsThereUnseen)
{
    const UI_OSWindowPtr inner(new UI_OSWindow(u"inner", nullptr));
    UI_TextButtonPtr outerButton;
    UI_TextButtonPtr innerButton;
    {
        UI_NodeManager::SetModalWindow outerGuard(*window);
        {
            UI_NodeManager::SetModalWindow innerGuard(*inner);
            innerButton = NewButton("inner");
        }
        outerButton = NewButton("outer");
    }
    const UI_TextButtonPtr free = NewButton("free");
    const auto windowOf = [](const UI_TextButtonPtr& inButton) {
        return inButton->GetImpl().widget->window();
    };
    EXPECT_EQ(windowOf(innerButton), inner->GetImpl().widget);
    EXPECT_EQ(windowOf(outerButton), window->GetImpl().widget);
    EXPECT_EQ(windowOf(free), free->GetImpl().widget);
    window->UI_Show(true);
    EXPECT_FALSE(outerButton->IsVisible());
    window->AddChild(outerButton);
    EXPECT_TRUE(outerButton->IsVisible());
}

TEST_F(Node, AsksForTheSameSizeHiddenOrShown)
{
    const UI_TextButtonPtr button = NewButton("a rather long text");
    const UI_CheckboxPtr box(new UI_Checkbox(u"check this"));
    box->SetVisible(false);
    const SizeT<float> buttonBefore = button->GetPreferredSize();
    const SizeT<float> boxBefore = box->GetPreferredSize();
    EXPECT_GT(buttonBefore.width, 0);
    EXPECT_GT(boxBefore.width, 0);
    window->AddChild(button);
    window->AddChild(box);
    box->SetVisible(true);
    support::ShowActive(*window);
    EXPECT_EQ(button->GetPreferredSize(), buttonBefore);
    EXPECT_EQ(box->GetPreferredSize(), boxBefore);
}

TEST_F(Node, WhoseWidgetDiedIsHarmless)
{
    const UI_TextButtonPtr button = NewButton("button");
    const UI_CheckboxPtr box(new UI_Checkbox(u"box"));
    window->AddChild(button);
    window->AddChild(box);
    delete window->GetImpl().widget.data();

    EXPECT_FALSE(window->IsAlive());
    EXPECT_FALSE(box->IsAlive());
    box->SetChecked(true);
    EXPECT_FALSE(box->IsChecked());
    box->Click();
    box->SetKeyboardFocus(FocusChangeReason::kProgram);
    box->SetVisible(true);
    button->SetText(u"x");
    EXPECT_EQ(button->GetText(), u"");
    EXPECT_EQ(button->GetNodeID(), "");
    EXPECT_EQ(button->GetBounds(), RectT<float>());
    EXPECT_EQ(button->GetPreferredSize(), SizeT<float>());
    window->UI_Show(true);
    window->SetTitle(u"x");
    window->SetSize({10, 10});
    EXPECT_EQ(window->GetUIScale(), 1);
    EXPECT_EQ(window->GetFocusedNode(), nullptr);
    const UI_TextButtonPtr alive = NewButton("alive");
    window->AddChild(alive);
    EXPECT_EQ(alive->GetParent(), nullptr);
    button->RemoveFromParent();
    EXPECT_EQ(button->GetParent(), nullptr);
}

TEST_F(Node, KeptByAnotherReferenceOutlivesItsParentAndCanBePutElsewhere)
{
    const UI_SubViewPtr part(new UI_SubView);
    const UI_CheckboxPtr box(new UI_Checkbox(u"box"));
    part->AddChild(box);
    window->AddChild(part);
    box->SetChecked(true);
    window->UI_Show(true);
    window.reset(); // part goes too in a moment; box is wanted whole

    EXPECT_TRUE(part->IsAlive());
    EXPECT_FALSE(part->IsVisible());
    const UI_OSWindowPtr other(new UI_OSWindow(u"other", nullptr));
    other->AddChild(box);
    other->UI_Show(true);
    EXPECT_TRUE(box->IsVisible());
    EXPECT_TRUE(box->IsChecked());
    EXPECT_TRUE(part->GetChildren().empty());
}

TEST_F(Node, MayEndInItsOwnEvents)
{
    // What the function does to a button, which nobody else holds, or to its window; each by a real click.
    const struct {
        const char* name;
        void (*act)(UI_OSWindowPtr& ioWindow, UI_Node* inButton);
    } kCases[] = {
        {"takes itself out", [](UI_OSWindowPtr&, UI_Node* inButton) { inButton->RemoveFromParent(); }},
        {"ends its window", [](UI_OSWindowPtr& ioWindow, UI_Node*) { ioWindow.reset(); }},
        {"replaces its function and throws",
         [](UI_OSWindowPtr&, UI_Node* inButton) {
             NodeCast<UI_TextButton>(inButton).SetChangedFunction({});
             throw kiocore::kio_exception(std::string("not through Qt"), 1);
         }},
        {"deletes the widget's window under it",
         [](UI_OSWindowPtr& ioWindow, UI_Node* inButton) {
             const UI_SubViewPtr part(new UI_SubView);
             ioWindow->AddChild(part);
             part->AddChild(inButton);
             part->RemoveFromParent(); // and goes, with the button
         }},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        for (const bool byMouseFunction : {false, true}) {
            UI_OSWindowPtr own(new UI_OSWindow(u"own", nullptr));
            own->AddChild(NewButton("button"));
            auto& button = NodeCast<UI_TextButton>(own->FindNode("button"));
            QWidget* const widget = button.GetImpl().widget;
            int calls = 0;
            if (byMouseFunction) {
                button.SetMouseEventFunction([&](UI_Node* inNode, ui::UI_MouseEvent& inEvent) {
                    if (inEvent.type == ui::MouseEventType::kPress) {
                        ++calls;
                        test.act(own, inNode);
                    }
                    return false;
                });
            } else {
                button.SetChangedFunction([&](UI_ControlChangedMessage* inMessage) {
                    ++calls;
                    test.act(own, inMessage->GetControl());
                });
            }
            support::ShowActive(*own);
            QPointer<QWidget> watched = widget;
            QTest::mousePress(widget, Qt::LeftButton);
            if (watched) {
                QTest::mouseRelease(widget, Qt::LeftButton);
            }
            EXPECT_EQ(calls, 1);
            ui::ScApplication::RunPending();
            EXPECT_EQ(watched.isNull(), own == nullptr || own->FindNode("button") == nullptr);
        }
    }
}

TEST_F(Node, FocusComesAsSoonAsItCanUnlessItWentElsewhere)
{
    const UI_TextButtonPtr first = NewButton("first");
    const UI_TextButtonPtr second = NewButton("second");
    const UI_TextButtonPtr third = NewButton("third");
    for (const auto& button : {first, second, third}) {
        window->AddChild(button);
    }
    std::vector<std::string> told;
    second->SetFocusChangedFunction([&](UI_Node* inNode, FocusChangeReason inReason) {
        told.push_back((inNode->HasKeyboardFocus() ? "in " : "out ") + std::to_string(int(inReason)));
    });
    support::ShowActive(*window);
    ASSERT_EQ(window->GetFocusedNode(), first.get());

    second->SetEnabled(false);
    second->SetKeyboardFocus(FocusChangeReason::kProgram);
    EXPECT_EQ(window->GetFocusedNode(), first.get());
    second->SetEnabled(true);
    EXPECT_EQ(window->GetFocusedNode(), second.get());

    third->SetVisible(false);
    third->SetKeyboardFocus(FocusChangeReason::kProgram);
    first->SetKeyboardFocus(FocusChangeReason::kKeyboard); // counts, being later
    third->SetVisible(true);
    EXPECT_EQ(window->GetFocusedNode(), first.get());

    third->SetVisible(false);
    third->SetKeyboardFocus(FocusChangeReason::kProgram);
    support::PressKey(Qt::Key_Tab); // a person is somewhere else
    third->SetVisible(true);
    EXPECT_EQ(window->GetFocusedNode(), second.get());
    support::PressKey(Qt::Key_Tab);
    EXPECT_EQ(window->GetFocusedNode(), third.get());
    EXPECT_THAT(told, testing::ElementsAre("in 3", "out 0", "in 0", "out 0"));
}
