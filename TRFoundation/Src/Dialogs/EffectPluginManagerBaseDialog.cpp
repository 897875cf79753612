#include <TR/EffectPluginManagerBaseDialog.h>

#include <kiocore/config/Localizer.h>

#include <utility>

namespace TR {

using kiocore::config::Localizer;
using kioui::controls::UI_TextButton;
using kioui::layout::MakeTextButtonLayout;
using kioui::layout::SmartLayoutBuilder;
using Direction = SmartLayoutBuilder::Direction;

namespace {

constexpr float kMargin = 15; // around everything, and between content and buttons
constexpr float kGapBetweenButtons = 10;

} // namespace

EffectPluginManagerBaseDialog::EffectPluginManagerBaseDialog(const kioui::SupplierInterface* inSupplier,
                                                             const UTF16String& inTitle,
                                                             kioui::UI_Node* inParent)
    : UI_Dialog(inSupplier, inTitle, inParent)
{
    CreateControls();
    LayoutButtonsAndContentArea();
}

EffectPluginManagerBaseDialog::~EffectPluginManagerBaseDialog() = default;

void EffectPluginManagerBaseDialog::CreateControls()
{
    mContentArea = new kioui::ui::UI_SubView;
    mContentArea->SetNodeID("Content Area");
    mOKButton = new UI_TextButton(Localizer::GetText("$$$/kioui/dialogs/OK=OK"));
    mOKButton->SetNodeID("OK");
    mCancelButton = new UI_TextButton(Localizer::GetText("$$$/kioui/dialogs/Cancel=Cancel"));
    mCancelButton->SetNodeID("Cancel");
    AddChild(mContentArea);
    AddChild(mOKButton);
    AddChild(mCancelButton);
    SetButtons(mOKButton, mCancelButton);
}

void EffectPluginManagerBaseDialog::LayoutButtonsAndContentArea()
{
    const auto measuring = GetSupplier()->NewMeasuringDrawbot();
    auto atTheEnd = MakeTextButtonLayout(mOKButton, *measuring);
    auto beforeIt = MakeTextButtonLayout(mCancelButton, *measuring);
    if (!IsOKRightmost()) {
        std::swap(atTheEnd, beforeIt);
    }
    SmartLayoutBuilder buttons(Direction::kRightToLeft);
    buttons.SetCrossAlignment(kioui::layout::CrossAlignment::kCentre)
        .Append(atTheEnd)
        .AppendSpace(kGapBetweenButtons)
        .Append(beforeIt)
        .AppendFlexibleSpace(kGapBetweenButtons);

    SmartLayoutBuilder column(Direction::kTopToBottom);
    column.SetMargin(kMargin)
        .Append(mContentArea, {0, 0}, {1, 1})
        .AppendSpace(kMargin)
        .Append(buttons.Build(), {1, 0});
    mRootLayout = column.Build();
}

void EffectPluginManagerBaseDialog::SetOKButtonEnabled(bool inEnabled) const
{
    mOKButton->SetEnabled(inEnabled);
}

void EffectPluginManagerBaseDialog::UI_ScaleChanged(float inBefore, float inNow, const RectT<int>& inBounds)
{
    UI_Dialog::UI_ScaleChanged(inBefore, inNow, inBounds);
    UpdateSmartLayout({});
}

void EffectPluginManagerBaseDialog::UpdateSmartLayout(const RectT<float>& inBounds)
{
    if (!mRootLayout) {
        return;
    }
    const RectT<float> bounds = inBounds.IsEmpty() ? GetBounds() : inBounds;
    mRootLayout->Apply({0, 0, bounds.Width(), bounds.Height()});
    OnContentAreaSizeChanged(mContentArea->GetBounds());
}

void EffectPluginManagerBaseDialog::UI_Show(bool inShow)
{
    if (inShow) {
        UpdateSmartLayout({});
    }
    UI_Dialog::UI_Show(inShow);
}

void EffectPluginManagerBaseDialog::UI_SizeChanged(const RectT<float>& inBounds)
{
    UI_Dialog::UI_SizeChanged(inBounds);
    UpdateSmartLayout(inBounds);
}

void EffectPluginManagerBaseDialog::OnContentAreaSizeChanged(const RectT<float>&) {}

} // namespace TR
