#include <TR/ProgressDialog.h>

#include <cstdint>
#include <limits>

namespace TR {

using kioui::dialogs::UI_ProgressDialog;

namespace {

constexpr std::uint32_t kFullProgress = 1000;

} // namespace

ProgressDialog::ProgressDialog(const UTF16String& inTitle,
                               kiocore::InterfaceRef<ZOL::IBatchOperation> inOperation,
                               const kioui::SupplierInterface* inSupplier, kioui::UI_Node* inParent)
    : ProgressDialog(inTitle, std::move(inOperation), inSupplier, inParent, true, {}, false)
{}

ProgressDialog::ProgressDialog(const UTF16String& inTitle,
                               kiocore::InterfaceRef<ZOL::IBatchOperation> inOperation,
                               const kioui::SupplierInterface* inSupplier, kioui::UI_Node* inParent,
                               bool inCancellable, const UTF16String& inMessage, bool inUnknownProgress)
    : mDialog(std::make_unique<UI_ProgressDialog>(inSupplier, inTitle, inMessage, inParent, false,
                                                  inCancellable, false)),
      mOperation(std::move(inOperation))
{
    if (inUnknownProgress) {
        mDialog->SetUnknownProgress(true);
    }
}

ProgressDialog::~ProgressDialog()
{
    StopListening();
}

void ProgressDialog::Start()
{
    ListenTo(mOperation->GetStationID());
    mOperation->Start();
    if (!mDialog->RunModal()) {
        mCancelled = true;
        mOperation->Abort();
    }
}

void ProgressDialog::ListenToMessage(const kiocore::messaging::Message& inMessage)
{
    if (const auto* progress = dynamic_cast<const ZOL::UpdateOperationProgressMessage*>(&inMessage)) {
        OnUpdateOperationProgressMessage(progress->GetProgress());
    } else if (const auto* text = dynamic_cast<const ZOL::UpdateOperationDescriptionMessage*>(&inMessage)) {
        OnUpdateOperationDescriptionMessage(text->GetDescription());
    } else if (dynamic_cast<const ZOL::OperationCompleteMessage*>(&inMessage) != nullptr) {
        OnOperationComplete();
    }
}

void ProgressDialog::OnUpdateOperationProgressMessage(float inProgress)
{
    // A product of floats, cut off: 0.4567 is 456. More than all is passed on, as far as the type goes.
    const float thousandths = inProgress * float(kFullProgress);
    constexpr float kBeyond = 4294967296.0f;
    const std::uint32_t done = thousandths >= kBeyond ? std::numeric_limits<std::uint32_t>::max()
                               : thousandths > 0      ? std::uint32_t(thousandths)
                                                      : 0;
    mDialog->SetProgress(done, kFullProgress, {});
}

void ProgressDialog::OnUpdateOperationDescriptionMessage(const UTF16String& inDescription)
{
    mDialog->SetExtraText(inDescription);
}

void ProgressDialog::OnOperationComplete()
{
    mDialog->EndAsCompleted();
}

} // namespace TR
