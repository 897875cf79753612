#include <kioui/dialogs/MessageBox.h>

#include "Answers.h"
#include "DialogWindow.h"
#include "MessageIcon.h"
#include "ui/NodeImpl.h"

#include <kioui/controls/StaticText.h>

#include <kiocore/debug/Trace.h>

#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace kioui::dialogs {
namespace {

using controls::UI_StaticText;
using controls::UI_StaticTextPtr;
using controls::UI_TextButton;
using layout::SmartLayoutBuilder;
using layout::SmartLayoutPtr;
using ui::UI_TextButtonPtr;

constexpr float kMinimumTextWidth = 320;

std::vector<UTF16String> TextsOf(UI_MessageBox::Button inButtons)
{
    switch (inButtons) {
    case UI_MessageBox::Button::kNone:
        return {};
    case UI_MessageBox::Button::kOK:
        return {OKText()};
    case UI_MessageBox::Button::kOKCancel:
        return {OKText(), CancelText()};
    case UI_MessageBox::Button::kYesNo:
        return {YesText(), NoText()};
    case UI_MessageBox::Button::kYesNoCancel:
        return {YesText(), NoText(), CancelText()};
    }
    return {};
}

/// Room on the display for a window with its frame.
SizeT<float> LargestSize(const UI_Node& inWindow)
{
    const QWidget* const widget = inWindow.GetImpl().widget;
    const QSize screen = widget != nullptr ? widget->screen()->availableSize() : QSize();
    return {float(screen.width()) * 0.9f, float(screen.height()) * 0.9f};
}

} // namespace

struct UI_MessageBox::State {
    State(const SupplierInterface* inSupplier, const UTF16String& inTitle, const UTF16String& inMessage,
          int inDefaultButton, std::vector<UTF16String> inButtonTexts, Icon inIcon,
          const UI_NodePtr& inParent);
    ~State();

    void AddButtons();
    void Answer(int inNumber);
    float WidthBesideText() const;
    SmartLayoutPtr LayoutFor(float inWindowWidth) const;
    SizeT<float> BestSize() const;
    void Prepare();

    const DialogWindowPtr window;
    const UI_NodePtr icon;
    const UI_StaticTextPtr message;
    std::vector<UI_NodePtr> belowMessage;
    const std::vector<UTF16String> texts;
    std::vector<UI_TextButtonPtr> buttons; // by number; empty where a text is
    const int defaultButton;
    PointT<float> place;
    std::shared_ptr<Callback> callback;
    int answer = 0;
};

UI_MessageBox::State::State(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                            const UTF16String& inMessage, int inDefaultButton,
                            std::vector<UTF16String> inButtonTexts, Icon inIcon, const UI_NodePtr& inParent)
    : window(new DialogWindow(inSupplier, inTitle, inParent.get())), icon(new MessageIcon(inIcon)),
      message(new UI_StaticText(inMessage)), texts(std::move(inButtonTexts)), defaultButton(inDefaultButton)
{
    window->SetNodeID("MessageBox");
    window->closeRequested = [this] { window->EndModal(0); };
    window->sizeChanged = [this](SizeT<float> inSize) {
        LayoutFor(inSize.width)->Apply({0, 0, inSize.width, inSize.height});
    };
    window->GetImpl().widget->setAccessibleDescription(ui::ToQt(inMessage)); // read when the box comes up
    message->SetNodeID("Message");
    window->AddChild(icon);
    window->AddChild(message);
    for (const UTF16String& text : texts) {
        const int number = int(buttons.size()) + 1;
        UI_TextButtonPtr button;
        if (!text.empty()) {
            button = new UI_TextButton(text);
            button->SetNodeID("Button" + std::to_string(number));
            button->SetChangedFunction(
                [this, number](controls::UI_ControlChangedMessage*) { Answer(number); });
        }
        buttons.push_back(button);
    }
    AddButtons();
}

UI_MessageBox::State::~State()
{
    window->closeRequested = nullptr;
    window->sizeChanged = nullptr;
    for (const UI_TextButtonPtr& button : buttons) {
        if (button) {
            button->SetChangedFunction(nullptr);
        }
    }
}

/// Puts the buttons behind all other nodes, in the order that they stand from left to right.
void UI_MessageBox::State::AddButtons()
{
    std::vector<UI_TextButtonPtr> ordered = buttons;
    if (ui::UI_Dialog::IsOKRightmost()) {
        std::reverse(ordered.begin(), ordered.end());
    }
    for (const UI_TextButtonPtr& button : ordered) {
        window->AddChild(button);
    }
}

void UI_MessageBox::State::Answer(int inNumber)
{
    if (answer == 0) {
        answer = inNumber;
        window->EndModal(inNumber);
    }
}

float UI_MessageBox::State::WidthBesideText() const
{
    return kMargin + icon->GetPreferredSize().width + kGap + kMargin;
}

SmartLayoutPtr UI_MessageBox::State::LayoutFor(float inWindowWidth) const
{
    using Direction = SmartLayoutBuilder::Direction;
    const float textWidth = std::max(0.0f, inWindowWidth - WidthBesideText());
    SmartLayoutBuilder column(Direction::kTopToBottom);
    column.Append(message, {0, message->GetHeightForWidth(textWidth)}, {1, 0});
    for (const UI_NodePtr& node : belowMessage) {
        column.AppendSpace(kSmallGap).Append(node, {1, 0});
    }
    SmartLayoutBuilder top(Direction::kLeftToRight);
    top.Append(icon).AppendSpace(kGap).Append(column.Build(), {1, 0});
    SmartLayoutBuilder all(Direction::kTopToBottom);
    all.SetMargin(kMargin).Append(top.Build(), {1, 0}).AppendFlexibleSpace(kGap);
    all.Append(MakeButtonRow(buttons, *window->GetSupplier()), {1, 0});
    return all.Build();
}

/// As wide as what it holds asks for; wider, so that it becomes lower, when it does not fit the display.
SizeT<float> UI_MessageBox::State::BestSize() const
{
    float textWidth = std::max(kMinimumTextWidth, message->GetPreferredSize().width);
    for (const UI_NodePtr& node : belowMessage) {
        textWidth = std::max(textWidth, node->GetPreferredSize().width);
    }
    const SizeT<float> largest = LargestSize(*window);
    float width = WidthBesideText() + textWidth;
    SizeT<float> size = LayoutFor(width)->GetMinimumSize();
    while (size.height > largest.height && width < largest.width) {
        width = std::min(std::floor(largest.width), std::ceil(width * 1.25f));
        size = LayoutFor(width)->GetMinimumSize();
    }
    // The row of buttons may be wider than the text, which then needs less height.
    width = std::max(width, size.width);
    return {width, LayoutFor(width)->GetMinimumSize().height};
}

void UI_MessageBox::State::Prepare()
{
    answer = 0;
    const SizeT<float> size = BestSize();
    window->SetMinimumSize(size);
    window->SetSize(size);
    if (place == PointT<float>()) {
        window->Position();
    } else {
        window->SetBounds({place.x, place.y, place.x + size.width, place.y + size.height});
    }
    LayoutFor(size.width)->Apply({0, 0, size.width, size.height});
    for (std::size_t number = 1; number <= buttons.size(); ++number) {
        const UI_TextButtonPtr& button = buttons[number - 1];
        auto* widget = button ? ui::WidgetOf<QPushButton>(*button) : nullptr;
        if (widget == nullptr) {
            continue;
        }
        widget->setAutoDefault(defaultButton > 0); // or Qt would choose one
        if (int(number) == defaultButton) {
            widget->setDefault(true);
            button->SetKeyboardFocus(FocusChangeReason::kProgram);
        }
    }
}

UI_MessageBox::UI_MessageBox(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                             const UTF16String& inMessage, int inDefaultButton, Button inButtons, Icon inIcon,
                             const UI_NodePtr& inParent, unsigned int inHelpID, float inX, float inY,
                             std::shared_ptr<Callback> inCallback, bool inTextIsSelectable)
    : mState(std::make_unique<State>(inSupplier, inTitle, inMessage, inDefaultButton, TextsOf(inButtons),
                                     inIcon, inParent))
{
    KIO_HOST_CALL("kioui::dialogs::UI_MessageBox::UI_MessageBox", inTitle, inMessage, inDefaultButton,
                  int(inButtons), int(inIcon), inHelpID, inX, inY, inTextIsSelectable);
    mState->place = {inX, inY};
    mState->callback = std::move(inCallback);
    mState->message->SetSelectable(inTextIsSelectable);
}

UI_MessageBox::UI_MessageBox(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                             const UTF16String& inMessage, int inDefaultButton,
                             const std::vector<UTF16String>& inButtonTexts, Icon inIcon,
                             const UI_NodePtr& inParent)
    : mState(std::make_unique<State>(inSupplier, inTitle, inMessage, inDefaultButton, inButtonTexts, inIcon,
                                     inParent))
{
    KIO_HOST_CALL("kioui::dialogs::UI_MessageBox::UI_MessageBox", inTitle, inMessage, inDefaultButton,
                  int(inIcon));
}

UI_MessageBox::~UI_MessageBox() = default;

int UI_MessageBox::Show()
{
    KIO_HOST_CALL("kioui::dialogs::UI_MessageBox::Show", mState->window->GetText());
    const std::shared_ptr<Callback> callback = mState->callback;
    const auto inUsersPlace = messagebox::AnswerInTheUsersPlace(
        {mState->window->GetText(), mState->message->GetText(), mState->texts});
    if (!inUsersPlace) {
        mState->Prepare();
        mState->window->RunModal();
    }
    const int answer = inUsersPlace.value_or(mState->answer);
    if (callback && *callback) {
        (*callback)(answer);
    }
    return answer;
}

void UI_MessageBox::Close()
{
    KIO_HOST_CALL("kioui::dialogs::UI_MessageBox::Close");
    if (mState->window->IsRunningModal()) {
        mState->window->EndModal(0);
    }
}

void UI_MessageBox::AddBelowMessage(const UI_NodePtr& inNode)
{
    KIO_HOST_CALL("kioui::dialogs::UI_MessageBox::AddBelowMessage");
    if (inNode) {
        mState->belowMessage.push_back(inNode);
        mState->window->AddChild(inNode);
        mState->AddButtons(); // Tab comes to them last
    }
}

ui::UI_Dialog& UI_MessageBox::GetWindow() const
{
    return *mState->window;
}

} // namespace kioui::dialogs
