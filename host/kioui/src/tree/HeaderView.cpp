#include "HeaderView.h"

#include <QHoverEvent>
#include <QMouseEvent>
#include <QStyle>

#include <algorithm>

namespace kioui::controls {

HeaderView::HeaderView(QWidget* inParent) : QHeaderView(Qt::Horizontal, inParent)
{
    connect(this, &QHeaderView::sectionHandleDoubleClicked, this, [this](int column) {
        if (mBestFit) {
            mBestFit(column);
        }
    });
}

void HeaderView::TakeCharge()
{
    setSectionsMovable(true);
    setFirstSectionMovable(true);
    setSectionsClickable(true);
    setHighlightSections(false);
    setStretchLastSection(false);
    setMinimumSectionSize(0); // widths are the program's and the person's, down to none
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setSortIndicator(-1, Qt::AscendingOrder);
    setSortIndicatorShown(true);
}

int HeaderView::LastColumn() const
{
    return count() > 0 ? logicalIndex(count() - 1) : -1;
}

bool HeaderView::IsBehindLastDivider(const QPoint& inPlace) const
{
    const int last = LastColumn();
    if (last < 0) {
        return false;
    }
    const int divider = sectionViewportPosition(last) + sectionSize(last);
    const int grip = style()->pixelMetric(QStyle::PM_HeaderGripMargin, nullptr, this);
    return inPlace.x() >= divider && inPlace.x() < divider + grip;
}

bool HeaderView::viewportEvent(QEvent* inEvent)
{
    const bool isDone = QHeaderView::viewportEvent(inEvent);
    if (inEvent->type() == QEvent::HoverMove || inEvent->type() == QEvent::HoverEnter) {
        if (IsBehindLastDivider(static_cast<QHoverEvent*>(inEvent)->position().toPoint())) {
            setCursor(Qt::SplitHCursor);
        }
    }
    return isDone;
}

void HeaderView::mousePressEvent(QMouseEvent* inEvent)
{
    const QPoint place = inEvent->position().toPoint();
    if (inEvent->button() == Qt::LeftButton && IsBehindLastDivider(place)) {
        mDrag = Drag{LastColumn(), sectionSize(LastColumn()), place.x()};
        return;
    }
    QHeaderView::mousePressEvent(inEvent);
}

void HeaderView::mouseMoveEvent(QMouseEvent* inEvent)
{
    const QPoint place = inEvent->position().toPoint();
    if (mDrag) {
        resizeSection(mDrag->column, std::max(0, mDrag->widthAtPress + place.x() - mDrag->pressedAt));
        return;
    }
    QHeaderView::mouseMoveEvent(inEvent);
    if (inEvent->buttons() == Qt::NoButton && IsBehindLastDivider(place)) {
        setCursor(Qt::SplitHCursor);
    }
}

void HeaderView::mouseReleaseEvent(QMouseEvent* inEvent)
{
    if (mDrag) {
        mDrag.reset();
        return;
    }
    QHeaderView::mouseReleaseEvent(inEvent);
}

void HeaderView::mouseDoubleClickEvent(QMouseEvent* inEvent)
{
    if (inEvent->button() == Qt::LeftButton && IsBehindLastDivider(inEvent->position().toPoint())) {
        emit sectionHandleDoubleClicked(LastColumn());
        return;
    }
    QHeaderView::mouseDoubleClickEvent(inEvent);
}

} // namespace kioui::controls
