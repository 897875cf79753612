#pragma once

// What the mouse does in cells. Included by sources of kioui only.

#include "CellView.h"

class QMouseEvent;

namespace kioui::controls {

/// Takes the mouse to the cell that it is over, before the tree sees it, and shows the box in a pressed cell
/// as pressed for as long as the pointer is over it.
class CellMouse {
public:
    explicit CellMouse(UI_MultiColumnTree::State& inTree) : mTree(inTree) {}

    /// @return whether the tree is not to see it. Calls functions of cells.
    bool Offer(const QMouseEvent& inEvent);

private:
    CellViewPtr CellAt(const QPoint& inPlace) const;
    void ShowPressed(const CellViewPtr& inUnderPointer);

    UI_MultiColumnTree::State& mTree;
    std::weak_ptr<CellView> mPressed;
    bool mIsPressDealtWith = false;
};

} // namespace kioui::controls
