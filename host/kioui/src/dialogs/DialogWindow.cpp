#include "DialogWindow.h"

#include <kiocore/config/Localizer.h>

namespace kioui::dialogs {

using kiocore::config::Localizer;

void DialogWindow::UI_CloseRequested()
{
    if (const auto function = closeRequested) {
        function();
    }
}

void DialogWindow::UI_SizeChanged(const RectT<float>& inBounds)
{
    if (sizeChanged) {
        sizeChanged({inBounds.Width(), inBounds.Height()});
    }
}

layout::SmartLayoutPtr MakeButtonRow(const std::vector<ui::UI_TextButtonPtr>& inButtons,
                                     const drawbot::SupplierInterface& inSupplier)
{
    using Builder = layout::SmartLayoutBuilder;
    const auto measuring = inSupplier.NewMeasuringDrawbot();
    const bool isOKRightmost = ui::UI_Dialog::IsOKRightmost();
    Builder row(isOKRightmost ? Builder::Direction::kRightToLeft : Builder::Direction::kLeftToRight);
    if (!isOKRightmost) {
        row.AppendFlexibleSpace(0);
    }
    bool isFirst = true;
    for (const ui::UI_TextButtonPtr& button : inButtons) {
        if (!button) {
            continue;
        }
        if (!std::exchange(isFirst, false)) {
            row.AppendSpace(kSmallGap);
        }
        row.Append(layout::MakeTextButtonLayout(button, *measuring));
    }
    if (isOKRightmost) {
        row.AppendFlexibleSpace(0);
    }
    return row.Build();
}

ui::UTF16String OKText()
{
    return Localizer::GetText("$$$/kioui/dialogs/OK=OK");
}

ui::UTF16String CancelText()
{
    return Localizer::GetText("$$$/kioui/dialogs/Cancel=Cancel");
}

ui::UTF16String YesText()
{
    return Localizer::GetText("$$$/kioui/dialogs/Yes=Yes");
}

ui::UTF16String NoText()
{
    return Localizer::GetText("$$$/kioui/dialogs/No=No");
}

} // namespace kioui::dialogs
