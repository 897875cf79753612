#pragma once

// The window of a dialog that is made of parts. Included by sources of kioui only.

#include <kioui/controls/TextButton.h>
#include <kioui/layout/SmartLayout.h>
#include <kioui/ui/Dialog.h>

#include <functional>
#include <vector>

namespace kioui::dialogs {

/// Around everything in a dialog, between its parts, and between what belongs together.
inline constexpr float kMargin = 16;
inline constexpr float kGap = 16;
inline constexpr float kSmallGap = 8;

/// Leaves to whoever made it what closing does and where things lie.
///
/// Threading: UI thread only.
class DialogWindow final : public ui::UI_Dialog {
public:
    using UI_Dialog::UI_Dialog;
    std::function<void()> closeRequested;
    std::function<void(SizeT<float>)> sizeChanged;

protected:
    void UI_CloseRequested() override;
    void UI_SizeChanged(const RectT<float>& inBounds) override;
};
using DialogWindowPtr = boost::intrusive_ptr<DialogWindow>;

/// Buttons at the right, the first of them where the platform has OK. Empty references are left out.
layout::SmartLayoutPtr MakeButtonRow(const std::vector<ui::UI_TextButtonPtr>& inButtons,
                                     const drawbot::SupplierInterface& inSupplier);

/// "OK" and the like in the user's language.
ui::UTF16String OKText();
ui::UTF16String CancelText();
ui::UTF16String YesText();
ui::UTF16String NoText();

} // namespace kioui::dialogs
