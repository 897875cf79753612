#pragma once

#include <kioui/layout/SmartLayout.h>
#include <kioui/ui/Dialog.h>
#include <kioui/ui/SubView.h>

namespace TR {

using kiocore::UTF16String;
using kioui::RectT;

/// A dialog with an area for content above OK and Cancel, which keep their places at every size and scale.
///
/// Threading: UI thread only.
class KIO_EXPORT EffectPluginManagerBaseDialog : public kioui::UI_Dialog {
public:
    /// @param inSupplier  measures and draws; outlives the dialog. Null is the default one.
    /// @param inParent    stays behind the dialog; may be null.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    EffectPluginManagerBaseDialog(const kioui::SupplierInterface* inSupplier, const UTF16String& inTitle,
                                  kioui::UI_Node* inParent);
    ~EffectPluginManagerBaseDialog() override;

    /// For hosts that let nobody leave with OK before something has changed.
    void SetOKButtonEnabled(bool inEnabled) const;
    /// What the derived dialog fills. Never empty.
    kioui::ui::UI_SubViewPtr GetContentArea() const { return mContentArea; }

    void UI_ScaleChanged(float inBefore, float inNow, const RectT<int>& inBounds) override;
    /// Lays everything out in a rectangle, or in the dialog as it is when the rectangle is empty.
    virtual void UpdateSmartLayout(const RectT<float>& inBounds);
    void UI_Show(bool inShow) override;
    void UI_SizeChanged(const RectT<float>& inBounds) override;
    /// The content area has these bounds now, in the dialog.
    virtual void OnContentAreaSizeChanged(const RectT<float>& inBounds);

private:
    void CreateControls();
    void LayoutButtonsAndContentArea();

    kioui::ui::UI_SubViewPtr mContentArea;
    kioui::controls::UI_TextButtonPtr mOKButton;
    kioui::controls::UI_TextButtonPtr mCancelButton;
    kioui::layout::SmartLayoutPtr mRootLayout;
};

} // namespace TR
