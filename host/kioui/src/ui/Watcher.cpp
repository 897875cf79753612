#include "Watcher.h"

#include "PendingFocus.h"

#include <QFocusEvent>
#include <QMouseEvent>

namespace kioui::ui {

bool Watcher::eventFilter(QObject* inWidget, QEvent* inEvent)
{
    if (inWidget != mImpl.widget || mImpl.node == nullptr) {
        return false;
    }
    switch (inEvent->type()) {
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        TellFocus(static_cast<QFocusEvent&>(*inEvent));
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return TellMouse(static_cast<QMouseEvent&>(*inEvent));
    case QEvent::Resize:
        mImpl.TellSize();
        return false;
    case QEvent::Show:
    case QEvent::EnabledChange:
        GiveNotedFocus(mImpl);
        return false;
    default:
        return false;
    }
}

void Watcher::TellFocus(const QFocusEvent& inEvent)
{
    const FocusChangeReason reason = ui::FromQt(inEvent.reason());
    const bool isByAPerson = reason == FocusChangeReason::kKeyboard || reason == FocusChangeReason::kMouse;
    // Dialogs send such an event to themselves when they are shown, without having the focus.
    if (inEvent.gotFocus() && isByAPerson && mImpl.widget->hasFocus()) {
        ForgetNotedFocusAround(mImpl);
    }
    if (!mImpl.focusChanged) {
        return;
    }
    const ScWidgetEvent event; // of two widgets: the focus goes from one to the other
    const UI_NodePtr keep = mImpl.node;
    const auto function = mImpl.focusChanged; // may be replaced by itself
    CallHost("The focus function of a node", [&] { function(keep.get(), reason); });
}

bool Watcher::TellMouse(const QMouseEvent& inEvent)
{
    if (!mImpl.mouseEvent) {
        return false;
    }
    UI_MouseEvent event;
    event.type = TypeOf(inEvent);
    event.button = FromQt(inEvent.button());
    event.place = {float(inEvent.position().x()), float(inEvent.position().y())};
    const ScWidgetEvent scope(mImpl.widget);
    const UI_NodePtr keep = mImpl.node;
    const auto function = mImpl.mouseEvent;
    bool isDealtWith = false;
    CallHost("The mouse function of a node", [&] { isDealtWith = function(keep.get(), event); });
    return isDealtWith;
}

} // namespace kioui::ui
