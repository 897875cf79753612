#pragma once

#include <kioui/controls/Control.h>
#include <kioui/drawbot/Drawbot.h>

namespace kioui::controls {

/// A text that is clicked like a link, with the mouse, Return or the space bar. Changed means clicked. What
/// does not fit is shortened at the end, and shown whole as a tool tip.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_HotTextButton : public UI_Control {
public:
    /// @throws kio_exception (kError_BadArgument) without an application object.
    explicit UI_HotTextButton(const UTF16String& inText);
    ~UI_HotTextButton() override;
    const char* GetClassName() const override { return "UI_HotTextButton"; }

    UTF16String GetText() const override;
    void SetText(const UTF16String& inText);
    /// In whole units, of the em.
    void SetFontSize(float inSize);
    float GetFontSize() const;
    void Click();
};
using UI_HotTextButtonPtr = boost::intrusive_ptr<UI_HotTextButton>;

/// Hot text that is a web address. It opens nothing by itself: its changed function does.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_HotTextURL : public UI_HotTextButton {
public:
    /// @param inFont  what it is drawn in; empty is the user interface's own.
    UI_HotTextURL(const UTF16String& inURL, const drawbot::FontRef& inFont);
    ~UI_HotTextURL() override;
    const char* GetClassName() const override { return "UI_HotTextURL"; }
};
using UI_HotTextURLPtr = boost::intrusive_ptr<UI_HotTextURL>;

} // namespace kioui::controls
