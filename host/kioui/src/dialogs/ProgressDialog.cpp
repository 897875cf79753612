#include <kioui/dialogs/ProgressDialog.h>

#include "DialogWindow.h"

#include <kioui/controls/ProgressBar.h>
#include <kioui/controls/StaticText.h>

#include <kiocore/debug/Trace.h>

#include <algorithm>

namespace kioui::dialogs {
namespace {

using controls::UI_ProgressBar;
using controls::UI_ProgressBarPtr;
using controls::UI_StaticText;
using controls::UI_StaticTextPtr;
using controls::UI_TextButton;
using layout::SmartLayoutBuilder;
using layout::SmartLayoutPtr;

constexpr float kContentWidth = 420; // a path's beginning and its file's name find room

enum class Outcome { kNone, kCompleted, kCancelled };

} // namespace

struct UI_ProgressDialog::State {
    State(const SupplierInterface* inSupplier, const UTF16String& inTitle, const UTF16String& inMessage,
          UI_Node* inParent, bool inCancellable);
    ~State();

    void SetMessage(const UTF16String& inText);
    void End(Outcome inOutcome);
    SmartLayoutPtr LayoutFor(float inWindowWidth) const;
    void FitContent();

    const DialogWindowPtr window;
    const UI_StaticTextPtr message;
    const UI_ProgressBarPtr bar;
    const UI_StaticTextPtr extraText;
    const ui::UI_TextButtonPtr cancel; // empty when there is nothing to cancel
    Outcome outcome = Outcome::kNone;
};

UI_ProgressDialog::State::State(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                                const UTF16String& inMessage, UI_Node* inParent, bool inCancellable)
    : window(new DialogWindow(inSupplier, inTitle, inParent)), message(new UI_StaticText({})),
      bar(new UI_ProgressBar), extraText(new UI_StaticText({})),
      cancel(inCancellable ? new UI_TextButton(CancelText()) : nullptr)
{
    window->SetNodeID("ProgressDialog");
    message->SetNodeID("Message");
    bar->SetNodeID("ProgressBar");
    extraText->SetNodeID("ExtraText");
    extraText->SetTruncation(drawbot::TextTruncation::kMiddle);
    window->AddChild(message);
    window->AddChild(bar);
    window->AddChild(extraText);
    window->sizeChanged = [this](SizeT<float> inSize) {
        LayoutFor(inSize.width)->Apply({0, 0, inSize.width, inSize.height});
    };
    if (cancel) {
        cancel->SetNodeID("Cancel");
        cancel->SetChangedFunction([this](controls::UI_ControlChangedMessage*) { End(Outcome::kCancelled); });
        window->AddChild(cancel);
        window->closeRequested = [this] { End(Outcome::kCancelled); };
    }
    SetMessage(inMessage);
}

UI_ProgressDialog::State::~State()
{
    window->closeRequested = nullptr;
    window->sizeChanged = nullptr;
    if (cancel) {
        cancel->SetChangedFunction(nullptr);
    }
}

void UI_ProgressDialog::State::SetMessage(const UTF16String& inText)
{
    message->SetText(inText);
    message->SetVisible(!inText.empty());
    bar->SetAccessibleName(inText.empty() ? window->GetText() : inText);
    FitContent();
}

/// Of completing and cancelling, what comes first counts.
void UI_ProgressDialog::State::End(Outcome inOutcome)
{
    if (outcome == Outcome::kNone) {
        outcome = inOutcome;
        if (window->IsRunningModal()) {
            window->EndModal(inOutcome == Outcome::kCompleted ? ui::UI_Dialog::kResult_OK
                                                              : ui::UI_Dialog::kResult_Cancel);
        }
    }
}

SmartLayoutPtr UI_ProgressDialog::State::LayoutFor(float inWindowWidth) const
{
    SmartLayoutBuilder all(SmartLayoutBuilder::Direction::kTopToBottom);
    all.SetMargin(kMargin);
    if (!message->GetText().empty()) {
        const float width = std::max(0.0f, inWindowWidth - 2 * kMargin);
        all.Append(message, {0, message->GetHeightForWidth(width)}, {1, 0}).AppendSpace(kSmallGap);
    }
    all.Append(bar, {1, 0}).AppendSpace(kSmallGap).Append(extraText, {1, 0});
    if (cancel) {
        all.AppendFlexibleSpace(kGap).Append(MakeButtonRow({cancel}, *window->GetSupplier()), {1, 0});
    }
    return all.Build();
}

/// The dialog never becomes smaller: it would dance below the pointer.
void UI_ProgressDialog::State::FitContent()
{
    const RectT<float> bounds = window->GetBounds();
    const SizeT<float> before = window->GetMinimumSize();
    const float content = std::max(kContentWidth, message->GetPreferredSize().width);
    const float width = std::max(before.width, content + 2 * kMargin);
    const SizeT<float> least{width, std::max(before.height, LayoutFor(width)->GetMinimumSize().height)};
    window->SetMinimumSize(least);
    const SizeT<float> size{std::max(least.width, before.width > 0 ? bounds.Width() : 0),
                            std::max(least.height, before.width > 0 ? bounds.Height() : 0)};
    window->SetSize(size);
    LayoutFor(size.width)->Apply({0, 0, size.width, size.height});
}

UI_ProgressDialog::UI_ProgressDialog(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                                     const UTF16String& inMessage, UI_Node* inParent, bool inStartsUnknown,
                                     bool inCancellable, bool inShowsPercentage)
    : mState(std::make_unique<State>(inSupplier, inTitle, inMessage, inParent, inCancellable))
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::UI_ProgressDialog", inTitle, inMessage, inStartsUnknown,
                  inCancellable, inShowsPercentage);
    mState->bar->SetUnknownProgress(inStartsUnknown);
    mState->bar->SetShowsPercentage(inShowsPercentage);
}

UI_ProgressDialog::~UI_ProgressDialog() = default;

void UI_ProgressDialog::SetProgress(std::uint32_t inDone, std::uint32_t inTotal, const UTF16String& inText)
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::SetProgress", inDone, inTotal, inText);
    mState->bar->SetProgress(inDone, inTotal);
    if (!inText.empty() && inText != mState->message->GetText()) {
        mState->SetMessage(inText);
    }
}

void UI_ProgressDialog::SetUnknownProgress(bool inUnknown)
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::SetUnknownProgress", inUnknown);
    mState->bar->SetUnknownProgress(inUnknown);
}

void UI_ProgressDialog::SetExtraText(const UTF16String& inText)
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::SetExtraText", inText);
    mState->extraText->SetText(inText);
}

bool UI_ProgressDialog::RunModal()
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::RunModal");
    if (mState->outcome == Outcome::kNone) {
        mState->window->Position();
        mState->window->RunModal();
    }
    return mState->outcome == Outcome::kCompleted;
}

void UI_ProgressDialog::EndAsCompleted()
{
    KIO_HOST_CALL("kioui::dialogs::UI_ProgressDialog::EndAsCompleted");
    mState->End(Outcome::kCompleted);
}

ui::UI_Dialog& UI_ProgressDialog::GetWindow() const
{
    return *mState->window;
}

} // namespace kioui::dialogs
