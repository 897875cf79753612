#pragma once

#include <kioui/ui/Node.h>

namespace kioui::ui {

/// A window of the desktop.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_OSWindow : public UI_Node {
public:
    /// @param inParent  the node whose window this one belongs to and stays in front of; may be null.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_OSWindow(const UTF16String& inTitle, UI_Node* inParent);
    ~UI_OSWindow() override;
    const char* GetClassName() const override { return "UI_OSWindow"; }

    /// The title.
    UTF16String GetText() const override;
    void SetTitle(const UTF16String& inTitle);
    /// Fractions are rounded up.
    void SetMinimumSize(SizeT<float> inSize);
    SizeT<float> GetMinimumSize() const;
    void SetSize(SizeT<float> inSize);
    /// Device pixels per unit where the window is now.
    float GetUIScale() const;
    /// The node that has the keyboard focus; null when it lies elsewhere.
    UI_Node* GetFocusedNode() const;

    /// When it is shown and nothing in it has the focus, the first node that Tab comes by gets it.
    virtual void UI_Show(bool inShow);

protected:
    UI_OSWindow(std::unique_ptr<Impl> inImpl, const UTF16String& inTitle);

    /// For destructors: events on the way out do not come here any more.
    void PrepareToGo();
    /// The window came to a display of another scale.
    /// @param inBounds  in device pixels.
    virtual void UI_ScaleChanged(float inBefore, float inNow, const RectT<int>& inBounds);
    /// The user asked to close it by the window's own means. Hides it.
    virtual void UI_CloseRequested();

private:
    friend struct UI_Node::Impl;
    void FollowScale();

    float mScale; // that was told last
};

} // namespace kioui::ui

namespace kioui {
using ui::UI_OSWindow;
} // namespace kioui
