#include "HotTextWidget.h"

#include "ui/Conversions.h"

#include <QFontMetrics>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyleOption>
#include <QStylePainter>
#include <QToolTip>

#include <cmath>

namespace kioui::controls {
namespace {

const int kMargin = 1; // for the frame that shows the focus

QString WholeText(const QAbstractButton& inButton)
{
    return ui::ToQt(ui::FromButtonText(inButton.text()));
}

} // namespace

HotTextWidget::HotTextWidget(const QString& inButtonText) : QAbstractButton(nullptr)
{
    setText(inButtonText);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

QSize HotTextWidget::sizeHint() const
{
    // Rounded up: shortening is decided by the exact width.
    const QFontMetricsF metrics(font());
    return {int(std::ceil(metrics.horizontalAdvance(WholeText(*this)))) + 2 * kMargin,
            int(std::ceil(metrics.height())) + 2 * kMargin};
}

QSize HotTextWidget::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

QString HotTextWidget::ShownText() const
{
    return QFontMetrics(font()).elidedText(WholeText(*this), Qt::ElideRight, width() - 2 * kMargin);
}

void HotTextWidget::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
    const int alignment = int(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter));
    painter.drawItemText(rect().adjusted(kMargin, kMargin, -kMargin, -kMargin), alignment, palette(),
                         isEnabled(), ShownText(), isEnabled() ? QPalette::Link : QPalette::WindowText);
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

void HotTextWidget::keyPressEvent(QKeyEvent* inEvent)
{
    if (inEvent->key() == Qt::Key_Return || inEvent->key() == Qt::Key_Enter) {
        click(); // links open by it, and it does not reach the dialog's default button
        return;
    }
    QAbstractButton::keyPressEvent(inEvent);
}

bool HotTextWidget::event(QEvent* inEvent)
{
    if (inEvent->type() == QEvent::ToolTip) {
        const QString whole = WholeText(*this);
        if (ShownText() != whole) {
            // HTML for certain, or Qt would guess by what the text looks like.
            QToolTip::showText(static_cast<QHelpEvent*>(inEvent)->globalPos(),
                               QLatin1String("<span>") + whole.toHtmlEscaped() + QLatin1String("</span>"),
                               this);
            return true;
        }
    }
    return QAbstractButton::event(inEvent);
}

} // namespace kioui::controls
