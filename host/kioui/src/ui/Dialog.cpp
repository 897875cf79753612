#include <kioui/ui/Dialog.h>

#include "ApplicationState.h"
#include "NodeImpl.h"

#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>

#include <kiocore/debug/Trace.h>

#include <QDialog>
#include <QEventLoop>
#include <QPushButton>
#include <QStyle>

#include <optional>

namespace kioui::ui {
namespace {

QWidget* WindowWidgetOf(UI_Node* inNode)
{
    QWidget* const widget = inNode != nullptr ? inNode->GetImpl().widget.data() : nullptr;
    return widget != nullptr ? widget->window() : nullptr;
}

/// What Escape and the window's own means do is the node's to say.
class DialogWidget final : public QDialog {
public:
    using QDialog::QDialog;
    std::function<void()> closeRequested;
    void reject() override
    {
        if (closeRequested) {
            const ScWidgetEvent event;
            closeRequested();
        }
    }
};

} // namespace

struct UI_Dialog::State {
    UI_TextButtonPtr ok;
    UI_TextButtonPtr cancel;
    bool returnCloses = true;
    bool savesSize = false;
    std::optional<int> end;
    QEventLoop* loop = nullptr;
};

UI_Dialog::UI_Dialog(const drawbot::SupplierInterface* inSupplier, const UTF16String& inTitle,
                     UI_Node* inParent)
    : UI_OSWindow(NewImpl<DialogWidget>("UI_Dialog", WindowWidgetOf(inParent)), inTitle),
      mSupplier(inSupplier != nullptr ? inSupplier : UI_NodeManager::GetDefaultDrawSupplier()),
      mState(std::make_unique<State>())
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::UI_Dialog", inTitle);
    WidgetOf<DialogWidget>(*this)->closeRequested = [this] { UI_CloseRequested(); };
}

UI_Dialog::~UI_Dialog()
{
    if (auto* widget = WidgetOf<DialogWidget>(*this)) {
        widget->closeRequested = nullptr;
    }
}

void UI_Dialog::SetButtons(const UI_TextButtonPtr& inOK, const UI_TextButtonPtr& inCancel)
{
    mState->ok = inOK;
    mState->cancel = inCancel;
    const auto ends = [this](const UI_TextButtonPtr& inButton, int inResult) {
        if (inButton) {
            inButton->SetChangedFunction([this, inResult](UI_ControlChangedMessage*) { EndModal(inResult); });
        }
    };
    ends(inOK, kResult_OK);
    ends(inCancel, kResult_Cancel);
    if (auto* button = inOK ? WidgetOf<QPushButton>(*inOK) : nullptr) {
        button->setDefault(true);
    }
}

void UI_Dialog::SetTextEditReturnClosesDialog(bool inCloses)
{
    mState->returnCloses = inCloses;
}

void UI_Dialog::SetSaveAndRestoreSize(bool inSaves)
{
    mState->savesSize = inSaves;
}

void UI_Dialog::Position()
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::Position");
}

int UI_Dialog::RunModal()
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::RunModal", GetNodeID());
    QWidget* const widget = GetImpl().widget;
    if (widget == nullptr) {
        return kResult_Cancel;
    }
    const boost::intrusive_ptr<UI_Dialog> keep(this);
    widget->setWindowModality(Qt::ApplicationModal);
    UI_Show(true);
    if (!mState->end) {
        WakeEventLoop(); // we may be inside of posted work ourselves: what is posted from now on has to run
        QEventLoop loop;
        mState->loop = &loop;
        loop.exec();
        mState->loop = nullptr;
    }
    UI_Show(false);
    return *std::exchange(mState->end, std::nullopt);
}

void UI_Dialog::EndModal(int inResult)
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::EndModal", inResult);
    if (!mState->end) {
        mState->end = inResult;
        if (mState->loop != nullptr) {
            mState->loop->quit();
        }
    }
}

bool UI_Dialog::IsRunningModal() const
{
    return mState->loop != nullptr;
}

bool UI_Dialog::IsOKRightmost()
{
    return true;
}

void UI_Dialog::UI_CloseRequested()
{
    EndModal(kResult_Cancel);
}

} // namespace kioui::ui
