#pragma once

#include <ZOL/BatchOperation.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/messaging/Listener.h>
#include <kioui/dialogs/ProgressDialog.h>

#include <memory>

namespace TR {

using kiocore::UTF16String;

/// Runs a batch operation and shows how far it is. The user can cancel it.
///
/// Threading: UI thread only. The operation runs where it likes; its messages come here on the UI thread.
class KIO_EXPORT ProgressDialog : public kiocore::messaging::Listener {
public:
    /// @param inSupplier, inParent  as for any dialog; may be null.
    /// @throws kio_exception (kError_BadArgument) without an application object.
    ProgressDialog(const UTF16String& inTitle, kiocore::InterfaceRef<ZOL::IBatchOperation> inOperation,
                   const kioui::SupplierInterface* inSupplier, kioui::UI_Node* inParent);
    /// @param inCancellable      whether the user can cancel.
    /// @param inMessage          stands above the bar.
    /// @param inUnknownProgress  the bar moves without saying how far, until the operation does.
    ProgressDialog(const UTF16String& inTitle, kiocore::InterfaceRef<ZOL::IBatchOperation> inOperation,
                   const kioui::SupplierInterface* inSupplier, kioui::UI_Node* inParent, bool inCancellable,
                   const UTF16String& inMessage, bool inUnknownProgress);
    ~ProgressDialog() override;

    /// Starts the operation and returns when it is over, or was cancelled and has stopped. Once. What the
    /// operation's Start throws passes through.
    void Start();
    /// Whether the user cancelled; after Start.
    bool Cancelled() const { return mCancelled; }

    void ListenToMessage(const kiocore::messaging::Message& inMessage) override;

    kioui::dialogs::UI_ProgressDialog& GetDialog() const { return *mDialog; }

private:
    void OnUpdateOperationProgressMessage(float inProgress);
    void OnUpdateOperationDescriptionMessage(const UTF16String& inDescription);
    void OnOperationComplete();

    std::unique_ptr<kioui::dialogs::UI_ProgressDialog> mDialog;
    bool mCancelled = false;
    kiocore::InterfaceRef<ZOL::IBatchOperation> mOperation;
};

} // namespace TR
