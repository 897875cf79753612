#pragma once

// The widget of the tree. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

#include <QTreeView>

#include <utility>

namespace kioui::controls {

/// Right and left edges of cells have one line between them.
constexpr int kGridLineWidth = 1;

/// Shows rows of one height; takes what happens to it to the tree.
class TreeView final : public QTreeView {
public:
    explicit TreeView(QWidget* inParent);

    /// Null from the time on when the node is gone.
    void SetTree(UI_MultiColumnTree::State* inTree) { mTree = inTree; }
    void SetSelectAll(bool inAllowed) { mSelectsAll = inAllowed; }
    void SetTypeAhead(bool inAllowed) { mHasTypeAhead = inAllowed; }

    int RowHeight() const { return mRowHeight; }
    /// The first row of which something can be seen, and the one behind the last.
    std::pair<int, int> RowsShown() const;
    /// Of a row, in the viewport, wherever it is scrolled to.
    int TopOfRow(int inRow) const { return inRow * mRowHeight - verticalOffset(); }
    /// Arrow keys go on from here; selects and scrolls nothing.
    void SetCurrentQuietly(const QModelIndex& inIndex);
    /// Nodes of rows out of view belong to this, which is never shown and never moves.
    QWidget* ParkingPlace() { return mParkingPlace; }
    /// What Qt has put off, so that there is enough to scroll.
    void LayOutNow() { executeDelayedItemsLayout(); }
    /// As if it had been pressed with the tree having the focus.
    void PressKey(QKeyEvent& inEvent);

    void scrollTo(const QModelIndex& inIndex, ScrollHint inHint) override;
    void keyboardSearch(const QString& inTyped) override;
    void doItemsLayout() override;

protected:
    bool event(QEvent* inEvent) override;
    bool viewportEvent(QEvent* inEvent) override;
    void keyPressEvent(QKeyEvent* inEvent) override;
    void scrollContentsBy(int inX, int inY) override;
    void selectionChanged(const QItemSelection& inSelected, const QItemSelection& inDeselected) override;

private:
    void FindRowHeight();
    bool GiveSpaceToCell(QKeyEvent& inEvent);

    UI_MultiColumnTree::State* mTree = nullptr;
    QWidget* const mParkingPlace;
    int mRowHeight = 1;
    bool mSelectsAll = true;
    bool mHasTypeAhead = true;
};

} // namespace kioui::controls
