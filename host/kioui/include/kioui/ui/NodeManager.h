#pragma once

#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Node.h>

namespace kioui::ui {

class UI_OSWindow;
using UI_OSWindowPtr = boost::intrusive_ptr<UI_OSWindow>;

/// What all nodes of the program share.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_NodeManager {
public:
    /// For dialogs that nobody gives a supplier of their own. Null without an application object; owned by
    /// it.
    static const drawbot::SupplierInterface* GetDefaultDrawSupplier();

    /// The window that dialogs of no other window belong to; empty when there is none. Not shared: it stands
    /// for as long as the window lives.
    static UI_OSWindowPtr GetMainTopLevelWindow();
    static void SetMainTopLevelWindow(const UI_OSWindowPtr& inWindow);

    /// While it lives, nodes that are made without a place of their own belong to this window, so that they
    /// take its style and scale and never flash up as windows of their own. Nests.
    class KIO_EXPORT SetModalWindow {
    public:
        explicit SetModalWindow(UI_OSWindow& inWindow);
        ~SetModalWindow();
        SetModalWindow(const SetModalWindow&) = delete;
        SetModalWindow& operator=(const SetModalWindow&) = delete;

    private:
        UI_OSWindowPtr mBefore;
    };
};

/// Family and size of the user interface's fonts; 0 is the one that controls are labelled in, and the only
/// one. Empty and 0 without an application object, and for other numbers.
KIO_EXPORT UTF16String GetFontName(int inWhich);
KIO_EXPORT float GetFontSize(int inWhich);

} // namespace kioui::ui

namespace kioui {
using ui::UI_NodeManager;
} // namespace kioui
