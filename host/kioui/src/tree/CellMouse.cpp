#include "CellMouse.h"

#include "TreeState.h"
#include "TreeView.h"
#include "ui/NodeImpl.h"

#include <QMouseEvent>

namespace kioui::controls {

CellViewPtr CellMouse::CellAt(const QPoint& inPlace) const
{
    const QModelIndex index = mTree.view->indexAt(inPlace);
    const UI_MultiColumnTreeRow* row = index.isValid() ? mTree.model.RowAt(index.row()) : nullptr;
    return row != nullptr ? CellOf(*row, index.column()) : nullptr;
}

void CellMouse::ShowPressed(const CellViewPtr& inUnderPointer)
{
    if (const CellViewPtr pressed = mPressed.lock()) {
        pressed->ShowPressed(pressed == inUnderPointer);
    }
}

bool CellMouse::Offer(const QMouseEvent& inEvent)
{
    const QPoint place = inEvent.position().toPoint();
    const CellViewPtr cell = mTree.view->viewport()->rect().contains(place) ? CellAt(place) : nullptr;
    const bool isLeft = inEvent.button() == Qt::LeftButton;
    ui::UI_MouseEvent event;
    event.type = ui::TypeOf(inEvent);
    event.button = ui::FromQt(inEvent.button());
    if (event.type == ui::MouseEventType::kMove) {
        ShowPressed(cell);
        return mIsPressDealtWith && inEvent.buttons() != Qt::NoButton; // or the tree would select on the way
    }
    if (event.type == ui::MouseEventType::kRelease) {
        if (isLeft) {
            ShowPressed(nullptr);
            mPressed.reset();
        }
    } else {
        mIsPressDealtWith = false;
        // Two presses in a row come as one and a double one; a cell can tell them apart, a box cannot.
        if (isLeft && event.type == ui::MouseEventType::kPress) {
            ShowPressed(nullptr); // of a press whose release never came
            mPressed = cell;
            ShowPressed(cell);
        }
    }
    if (!cell) {
        return false;
    }
    const QPoint corner = mTree.CellRect(cell->Row(), cell->Column()).topLeft();
    event.place = {float(inEvent.position().x() - corner.x()), float(inEvent.position().y() - corner.y())};
    const bool isDealtWith = cell->Offer(event);
    if (event.type == ui::MouseEventType::kRelease) {
        return false; // the tree has to know that the button is up; a release selects nothing
    }
    mIsPressDealtWith = isDealtWith;
    return isDealtWith;
}

} // namespace kioui::controls
