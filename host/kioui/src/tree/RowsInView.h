#pragma once

// Which rows can be seen, and the nodes in their cells. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

namespace kioui::controls {

/// Only the rows in view have nodes in the view, so that scrolling costs the same however many rows were
/// shown before.
class RowsInView {
public:
    explicit RowsInView(UI_MultiColumnTree::State& inTree) : mTree(inTree) {}

    /// Something moved, came or went.
    void MarkDirty() { mIsDirty = true; }
    bool IsDirty() const { return mIsDirty; }
    /// Tells of rows that came into view, and lays out nodes. Calls the visibility function.
    void Update();
    const UI_MultiColumnTree::Rows& Rows() const { return mRows; }
    std::vector<ui::UI_NodePtr> Nodes() const;

    UI_MultiColumnTree::RowFunction visibilityChanged;

private:
    UI_MultiColumnTree::Rows Wanted() const;
    void OrderTabs() const;

    UI_MultiColumnTree::State& mTree;
    UI_MultiColumnTree::Rows mRows; // told of, in the order shown
    bool mIsDirty = false;
};

} // namespace kioui::controls
