#include "Conversions.h"

#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace kioui::ui {

RectT<float> FromQt(const QRect& inRect)
{
    return {float(inRect.x()), float(inRect.y()), float(inRect.x() + inRect.width()),
            float(inRect.y() + inRect.height())};
}

QRect ToQt(const RectT<float>& inRect)
{
    const int left = int(std::lround(inRect.left));
    const int top = int(std::lround(inRect.top));
    return {left, top, std::max(0, int(std::lround(inRect.right)) - left),
            std::max(0, int(std::lround(inRect.bottom)) - top)};
}

Qt::FocusReason ToQt(FocusChangeReason inReason)
{
    switch (inReason) {
    case FocusChangeReason::kKeyboard:
        return Qt::TabFocusReason;
    case FocusChangeReason::kMouse:
        return Qt::MouseFocusReason;
    case FocusChangeReason::kWindow:
        return Qt::ActiveWindowFocusReason;
    case FocusChangeReason::kProgram:
        return Qt::OtherFocusReason;
    }
    return Qt::OtherFocusReason;
}

FocusChangeReason FromQt(Qt::FocusReason inReason)
{
    switch (inReason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
        return FocusChangeReason::kKeyboard;
    case Qt::MouseFocusReason:
        return FocusChangeReason::kMouse;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        return FocusChangeReason::kWindow;
    default:
        return FocusChangeReason::kProgram;
    }
}

MouseButton FromQt(Qt::MouseButton inButton)
{
    switch (inButton) {
    case Qt::LeftButton:
        return MouseButton::kLeft;
    case Qt::RightButton:
        return MouseButton::kRight;
    case Qt::MiddleButton:
        return MouseButton::kMiddle;
    default:
        return MouseButton::kNone;
    }
}

MouseEventType TypeOf(const QMouseEvent& inEvent)
{
    switch (inEvent.type()) {
    case QEvent::MouseButtonPress:
        return MouseEventType::kPress;
    case QEvent::MouseButtonRelease:
        return MouseEventType::kRelease;
    case QEvent::MouseButtonDblClick:
        return MouseEventType::kDoublePress;
    default:
        return MouseEventType::kMove;
    }
}

} // namespace kioui::ui
