#include <kioui/ui/Dialog.h>

#include "ApplicationState.h"
#include "DialogWidget.h"
#include "KeptSizes.h"
#include "WindowPlace.h"

#include <kioui/controls/TextButton.h>
#include <kioui/ui/NodeManager.h>

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QPushButton>
#include <QStyle>

#include <optional>

namespace kioui::ui {
namespace {

QWidget* ParentWidgetOf(const UI_Node* inParent)
{
    return WindowWidgetOf(inParent != nullptr ? inParent : TheApplicationState().mainWindow);
}

std::unique_ptr<UI_Node::Impl> NewDialogImpl(const UI_Node* inParent)
{
    RequireApplication("UI_Dialog");
    return std::make_unique<UI_Node::Impl>(new DialogWidget(ParentWidgetOf(inParent)));
}

} // namespace

/// What clicking one of the dialog's own buttons does.
struct DialogButton {
    UI_TextButtonPtr node;
    QMetaObject::Connection clicked;

    QPushButton* Widget() const { return node ? WidgetOf<QPushButton>(*node) : nullptr; }
    void MakeDefault(bool inDefault) const
    {
        if (QPushButton* button = Widget()) {
            button->setDefault(inDefault);
        }
    }
};

struct UI_Dialog::State {
    DialogButton ok;
    DialogButton cancel;
    bool savesSize = false;
    std::optional<int> end;
    QEventLoop* loop = nullptr;
};

namespace {

/// Says which loop waits for the dialog's end.
class ScRunning {
public:
    ScRunning(QEventLoop*& ioPlace, QEventLoop& inLoop) : mPlace(ioPlace) { mPlace = &inLoop; }
    ~ScRunning() { mPlace = nullptr; }
    ScRunning(const ScRunning&) = delete;
    ScRunning& operator=(const ScRunning&) = delete;

private:
    QEventLoop*& mPlace;
};

} // namespace

UI_Dialog::UI_Dialog(const drawbot::SupplierInterface* inSupplier, const UTF16String& inTitle,
                     UI_Node* inParent)
    : UI_OSWindow(NewDialogImpl(inParent), inTitle),
      mSupplier(inSupplier != nullptr ? inSupplier : UI_NodeManager::GetDefaultDrawSupplier()),
      mState(std::make_unique<State>())
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::UI_Dialog", inTitle);
    WidgetOf<DialogWidget>(*this)->closeRequested = [this] {
        const UI_NodePtr keep = this;
        const UI_TextButtonPtr cancel = mState->cancel.node;
        if (cancel && cancel->IsEnabled()) {
            cancel->Click();
        } else {
            UI_CloseRequested();
        }
    };
}

UI_Dialog::~UI_Dialog()
{
    PrepareToGo();
    KeepSizeIfShown();
}

void UI_Dialog::SetButtons(const UI_TextButtonPtr& inOK, const UI_TextButtonPtr& inCancel)
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::SetButtons");
    mState->ok.MakeDefault(false);
    // Beside the button's own function, so that a host that sets one does not take the dialog's end away.
    const auto setUp = [this](DialogButton& ioButton, const UI_TextButtonPtr& inNode, int inResult) {
        QObject::disconnect(ioButton.clicked);
        ioButton.node = inNode;
        if (const QPushButton* widget = ioButton.Widget()) {
            ioButton.clicked = QObject::connect(widget, &QPushButton::clicked, GetImpl().watcher.get(),
                                                [this, inResult] { EndModal(inResult); });
        }
    };
    setUp(mState->ok, inOK, kResult_OK);
    setUp(mState->cancel, inCancel, kResult_Cancel);
    mState->ok.MakeDefault(true);
}

void UI_Dialog::SetTextEditReturnClosesDialog(bool inCloses)
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::SetTextEditReturnClosesDialog", inCloses);
    if (auto* widget = WidgetOf<DialogWidget>(*this)) {
        widget->returnInTextCloses = inCloses;
    }
}

void UI_Dialog::SetSaveAndRestoreSize(bool inSaves)
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::SetSaveAndRestoreSize", inSaves);
    mState->savesSize = inSaves;
}

void UI_Dialog::Position()
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::Position");
    QWidget* const widget = GetImpl().widget;
    if (widget == nullptr) {
        return;
    }
    std::optional<QSize> size;
    if (mState->savesSize) {
        size = ReadKeptSize(GetNodeID());
    }
    if (!size) {
        size = widget->sizeHint();
        if (widget->testAttribute(Qt::WA_Resized)) {
            size = size->expandedTo(widget->size());
        }
    }
    PlaceWindow(*widget, *size);
}

void UI_Dialog::UI_Show(bool inShow)
{
    if (inShow) {
        mState->ok.MakeDefault(true); // it may have come into the dialog only now
    } else {
        KeepSizeIfShown();
    }
    UI_OSWindow::UI_Show(inShow);
}

void UI_Dialog::KeepSizeIfShown()
{
    const QWidget* const widget = GetImpl().widget;
    if (mState->savesSize && widget != nullptr && widget->isVisible()) {
        KeepSize(GetNodeID(), widget->size());
    }
}

int UI_Dialog::RunModal()
{
    KIO_HOST_CALL("kioui::ui::UI_Dialog::RunModal", GetNodeID());
    if (IsRunningModal()) {
        throw kiocore::kio_exception("UI_Dialog::RunModal: the dialog " + GetNodeID() +
                                         " runs modally already",
                                     kiocore::kError_BadArgument);
    }
    QWidget* const widget = GetImpl().widget;
    if (widget == nullptr) {
        return kResult_Cancel;
    }
    const boost::intrusive_ptr<UI_Dialog> keep(this);
    QEventLoop loop;
    const ScRunning running(mState->loop, loop);
    QObject::connect(widget, &QObject::destroyed, &loop, [this] { EndModal(kResult_Cancel); });
    widget->hide(); // Qt makes a window modal when it shows it
    widget->setWindowModality(Qt::ApplicationModal);
    UI_Show(true);
    if (!mState->end && IsAlive()) {
        const ScInnerEventLoop inner;
        WakeEventLoop(); // we may be inside of posted work ourselves: what is posted from now on has to run
        loop.exec();
    }
    UI_Show(false);
    return std::exchange(mState->end, std::nullopt).value_or(kResult_Cancel);
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
    KIO_HOST_CALL("kioui::ui::UI_Dialog::IsOKRightmost");
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        return false;
    }
    const int layout = QApplication::style()->styleHint(QStyle::SH_DialogButtonLayout);
    return layout == QDialogButtonBox::MacLayout || layout == QDialogButtonBox::GnomeLayout;
}

void UI_Dialog::UI_CloseRequested()
{
    if (IsRunningModal()) {
        EndModal(kResult_Cancel);
    } else {
        UI_OSWindow::UI_CloseRequested();
    }
}

} // namespace kioui::ui
