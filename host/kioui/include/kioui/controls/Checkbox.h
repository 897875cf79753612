#pragma once

#include <kioui/controls/Control.h>

namespace kioui::controls {

/// Threading: UI thread only.
class KIO_EXPORT UI_Checkbox : public UI_Control {
public:
    /// @param inText  may be empty; set an accessible name then.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    explicit UI_Checkbox(const UTF16String& inText);
    ~UI_Checkbox() override;
    const char* GetClassName() const override { return "UI_Checkbox"; }

    UTF16String GetText() const override;
    bool IsChecked() const;
    /// Does not call the changed function.
    void SetChecked(bool inChecked);
    /// As if a person had clicked it: toggles, then calls the changed function. A disabled one is not
    /// clicked.
    void Click();
    /// Shows it pressed without pressing it, for mouse events that are handled elsewhere.
    void ShowPressed(bool inPressed);
    /// Leaves mouse events to what lies beneath it.
    void SetTransparentToMouse(bool inTransparent);
};
using UI_CheckboxPtr = boost::intrusive_ptr<UI_Checkbox>;

} // namespace kioui::controls
