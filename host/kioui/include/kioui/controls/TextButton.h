#pragma once

#include <kioui/controls/Control.h>

namespace kioui::controls {

/// A button with a text. Changed means clicked.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_TextButton : public UI_Control {
public:
    /// @throws kio_exception (kError_BadArgument) without an application object.
    explicit UI_TextButton(const UTF16String& inText);
    ~UI_TextButton() override;
    const char* GetClassName() const override { return "UI_TextButton"; }

    UTF16String GetText() const override;
    void SetText(const UTF16String& inText);
    /// As if a person had clicked it; a disabled one is not clicked.
    void Click();
};
using UI_TextButtonPtr = boost::intrusive_ptr<UI_TextButton>;

} // namespace kioui::controls
