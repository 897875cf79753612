#include "DialogWidget.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

namespace kioui::ui {
namespace {

bool IsTextField(const QWidget* inWidget)
{
    return qobject_cast<const QLineEdit*>(inWidget) != nullptr ||
           qobject_cast<const QTextEdit*>(inWidget) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(inWidget) != nullptr;
}

} // namespace

void DialogWidget::keyPressEvent(QKeyEvent* inEvent)
{
    const bool isReturn = inEvent->key() == Qt::Key_Return || inEvent->key() == Qt::Key_Enter;
    if (isReturn && !returnInTextCloses && IsTextField(focusWidget())) {
        return; // the field has done with it what it does
    }
    WindowWidget<QDialog>::keyPressEvent(inEvent);
}

} // namespace kioui::ui
