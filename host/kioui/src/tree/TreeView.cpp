#include "TreeView.h"

#include "TreeState.h"
#include "ui/NodeImpl.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>

#include <algorithm>

namespace kioui::controls {
namespace {

bool IsTabKey(const QEvent& inEvent)
{
    if (inEvent.type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent&>(inEvent).key();
    return key == Qt::Key_Tab || key == Qt::Key_Backtab;
}

} // namespace

TreeView::TreeView(QWidget* inParent) : QTreeView(inParent), mParkingPlace(new QWidget(this))
{
    mParkingPlace->hide();
    setRootIsDecorated(false);
    setIndentation(0);
    setUniformRowHeights(true);
    setItemsExpandable(false);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    FindRowHeight();
}

void TreeView::FindRowHeight()
{
    // Room for a line of text and for a check box, which the style may make taller.
    QStyleOptionButton box;
    box.initFrom(this);
    const int boxHeight = style()->sizeFromContents(QStyle::CT_CheckBox, &box, QSize(0, 0), this).height();
    mRowHeight = std::max({fontMetrics().height() + 6, boxHeight + 2, 1});
}

std::pair<int, int> TreeView::RowsShown() const
{
    const int count = model() != nullptr ? model()->rowCount() : 0;
    const int top = verticalOffset();
    const int bottom = top + viewport()->height();
    const int end = std::clamp((bottom + mRowHeight - 1) / mRowHeight, 0, count);
    return {std::clamp(top / mRowHeight, 0, end), end};
}

void TreeView::SetCurrentQuietly(const QModelIndex& inIndex)
{
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(inIndex, QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
}

void TreeView::scrollTo(const QModelIndex& inIndex, ScrollHint inHint)
{
    if (!inIndex.isValid()) {
        return;
    }
    // Up and down only: who goes from row to row does not want to be taken back to the first column.
    const int top = inIndex.row() * mRowHeight;
    const int room = viewport()->height() - mRowHeight;
    const int value = verticalScrollBar()->value();
    int wanted = value;
    switch (inHint) {
    case EnsureVisible:
        wanted = top < value || room < 0 ? top : std::max(value, top - room);
        break;
    case PositionAtTop:
        wanted = top;
        break;
    case PositionAtBottom:
        wanted = top - room;
        break;
    case PositionAtCenter:
        wanted = top - room / 2;
        break;
    }
    verticalScrollBar()->setValue(wanted);
}

void TreeView::keyboardSearch(const QString& inTyped)
{
    if (mHasTypeAhead) {
        QTreeView::keyboardSearch(inTyped);
    }
}

void TreeView::doItemsLayout()
{
    if (mTree == nullptr) {
        QTreeView::doItemsLayout();
        return;
    }
    const ScQtCall call(*mTree);
    QTreeView::doItemsLayout();
    mTree->rowsInView.MarkDirty();
}

bool TreeView::event(QEvent* inEvent)
{
    if (mTree == nullptr) {
        return QTreeView::event(inEvent);
    }
    const ui::ScWidgetEvent scope(this);
    if (IsTabKey(*inEvent)) {
        return QTreeView::event(inEvent); // only moves the focus, and who gets it may select rows
    }
    const ScQtCall call(*mTree);
    switch (inEvent->type()) {
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::Resize:
        mTree->rowsInView.MarkDirty();
        break;
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::ScreenChangeInternal:
        FindRowHeight();
        mTree->rowsInView.MarkDirty();
        break;
    default:
        break;
    }
    return QTreeView::event(inEvent);
}

bool TreeView::viewportEvent(QEvent* inEvent)
{
    if (mTree == nullptr) {
        return QTreeView::viewportEvent(inEvent);
    }
    const ui::ScWidgetEvent scope(viewport());
    switch (inEvent->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: {
        const ui::UI_NodePtr keep = &mTree->tree;
        if (mTree->mouse.Offer(*static_cast<QMouseEvent*>(inEvent))) {
            inEvent->accept();
            return true;
        }
        break;
    }
    case QEvent::Resize:
        mTree->rowsInView.MarkDirty();
        break;
    default:
        break;
    }
    const ScQtCall call(*mTree);
    return QTreeView::viewportEvent(inEvent);
}

void TreeView::PressKey(QKeyEvent& inEvent)
{
    if (mTree != nullptr) {
        const ScQtCall call(*mTree);
        keyPressEvent(&inEvent);
    }
}

void TreeView::keyPressEvent(QKeyEvent* inEvent)
{
    if (!mSelectsAll && inEvent->matches(QKeySequence::SelectAll)) {
        inEvent->ignore();
        return;
    }
    if (inEvent->key() == Qt::Key_Space && inEvent->modifiers() == Qt::NoModifier &&
        GiveSpaceToCell(*inEvent)) {
        return;
    }
    QTreeView::keyPressEvent(inEvent);
}

/// The space bar presses what is a keyboard target in the current row, also when a click has taken the focus
/// from there.
bool TreeView::GiveSpaceToCell(QKeyEvent& inEvent)
{
    const UI_MultiColumnTreeRow* row = mTree != nullptr ? mTree->model.RowAt(currentIndex().row()) : nullptr;
    if (row == nullptr || !row->IsSelected()) {
        return false;
    }
    for (const int column : mTree->ColumnsFromTheLeft()) {
        const CellViewPtr cell = CellOf(*row, column);
        QWidget* widget = cell ? cell->Widget() : nullptr;
        if (widget != nullptr && widget->isVisible() && widget->isEnabled() &&
            (widget->focusPolicy() & Qt::TabFocus) != 0) {
            widget->setFocus(Qt::OtherFocusReason);
            QCoreApplication::sendEvent(widget, &inEvent); // it gets the release by itself
            return true;
        }
    }
    return false;
}

void TreeView::scrollContentsBy(int inX, int inY)
{
    QTreeView::scrollContentsBy(inX, inY);
    if (mTree != nullptr) {
        mTree->rowsInView.MarkDirty();
        mTree->SettleUnlessInQt();
    }
}

void TreeView::selectionChanged(const QItemSelection& inSelected, const QItemSelection& inDeselected)
{
    QTreeView::selectionChanged(inSelected, inDeselected);
    if (mTree != nullptr) {
        mTree->selection.OnChanged(inSelected, inDeselected);
    }
}

} // namespace kioui::controls
