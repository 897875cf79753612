#pragma once

#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Window.h>

namespace kioui::controls {
class UI_TextButton;
}

namespace kioui::ui {

using UI_TextButtonPtr = boost::intrusive_ptr<controls::UI_TextButton>;

/// A window that is answered before anything else of its parent goes on.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_Dialog : public UI_OSWindow {
public:
    enum Result : int { kResult_None = 0, kResult_OK = 1, kResult_Cancel = 2 };

    /// @param inSupplier  measures and draws; outlives the dialog. Null is the default one.
    /// @param inParent    the node whose window it belongs to and stays in front of; null is the main
    ///     top-level window, if there is one.
    UI_Dialog(const drawbot::SupplierInterface* inSupplier, const UTF16String& inTitle, UI_Node* inParent);
    ~UI_Dialog() override;
    const char* GetClassName() const override { return "UI_Dialog"; }

    const drawbot::SupplierInterface* GetSupplier() const { return mSupplier; }

    /// inOK ends the dialog with kResult_OK and is clicked by Return; inCancel with kResult_Cancel and is
    /// clicked by Escape and when the window is closed. Either may be empty. The buttons' changed functions
    /// stay the host's: they are called first, so that an end of theirs counts. What is disabled is not
    /// clicked.
    void SetButtons(const UI_TextButtonPtr& inOK, const UI_TextButtonPtr& inCancel);
    /// Whether Return in a text field clicks OK; it does until told otherwise.
    void SetTextEditReturnClosesDialog(bool inCloses);
    /// Whether the size is taken from the last run and kept for the next, under the node ID.
    void SetSaveAndRestoreSize(bool inSaves);
    /// Gives it the size to start with (the kept one, or what SetSize gave; at least its minimum size and at
    /// most what the screen has room for) and puts it over the middle of its parent, or of the screen.
    void Position();

    /// Shows the dialog and returns once it was answered; other windows take no input meanwhile, posted work
    /// runs. An end that was asked for before the run ends it at once, and is forgotten by it.
    /// @return what EndModal was given; kResult_Cancel for Escape and for the window closed, also when it
    /// went
    ///     with its parent.
    /// @throws kio_exception (kError_BadArgument) when it runs modally already.
    int RunModal();
    /// Ends the modal run, or the next when none is under way. Of several ends the first counts.
    void EndModal(int inResult);
    bool IsRunningModal() const;

    /// Whether the platform has OK at the right end of a button row (and Cancel left of it) or before Cancel.
    static bool IsOKRightmost();

    void UI_Show(bool inShow) override;

protected:
    /// Escape, or the window's own means, without a Cancel button to be clicked. Ends a modal run with
    /// kResult_Cancel; hides a dialog that does not run modally.
    void UI_CloseRequested() override;

private:
    struct State;
    void KeepSizeIfShown();

    const drawbot::SupplierInterface* mSupplier;
    std::unique_ptr<State> mState;
};
using UI_DialogPtr = boost::intrusive_ptr<UI_Dialog>;

} // namespace kioui::ui

namespace kioui {
using ui::UI_Dialog;
} // namespace kioui
