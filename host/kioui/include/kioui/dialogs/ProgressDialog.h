#pragma once

#include <kioui/ui/Dialog.h>

#include <cstdint>
#include <memory>

namespace kioui::dialogs {

using drawbot::SupplierInterface;
using ui::UI_Node;
using ui::UTF16String;

/// Shows how far long work is. Made of a window ("ProgressDialog"), the message ("Message"), a bar
/// ("ProgressBar"), a line below it ("ExtraText") and, if the work can be cancelled, a button ("Cancel").
///
/// Threading: UI thread only.
class KIO_EXPORT UI_ProgressDialog {
public:
    /// @param inMessage          above the bar; may be empty.
    /// @param inStartsUnknown    the bar moves without saying how far until SetProgress.
    /// @param inCancellable      offers to cancel; without, neither Escape nor the window's own means close
    /// it.
    /// @param inShowsPercentage  the bar says it in figures too.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_ProgressDialog(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                      const UTF16String& inMessage, UI_Node* inParent, bool inStartsUnknown,
                      bool inCancellable, bool inShowsPercentage);
    ~UI_ProgressDialog();
    UI_ProgressDialog(const UI_ProgressDialog&) = delete;
    UI_ProgressDialog& operator=(const UI_ProgressDialog&) = delete;

    /// @param inDone  may be more than inTotal: kept as it is, shown as a full bar.
    /// @param inText  replaces the message; empty leaves it.
    void SetProgress(std::uint32_t inDone, std::uint32_t inTotal, const UTF16String& inText);
    void SetUnknownProgress(bool inUnknown);
    /// The line below the bar; shortened in the middle when it is too long.
    void SetExtraText(const UTF16String& inText);

    /// Shows the dialog and returns once it has ended.
    /// @return true when it ended as completed, also before this was called; false when the user cancelled.
    bool RunModal();
    /// The work is done: ends the modal run, or the next one at once. Ignored once the user has cancelled.
    void EndAsCompleted();

    ui::UI_Dialog& GetWindow() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace kioui::dialogs
