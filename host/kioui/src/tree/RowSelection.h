#pragma once

// Which rows are selected. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

class QItemSelection;

namespace kioui::controls {

/// Qt's selection model knows what is selected; rows remember it, so that it outlives a reset of the rows.
class RowSelection {
public:
    explicit RowSelection(UI_MultiColumnTree::State& inTree) : mTree(inTree) {}

    void Select(const UI_MultiColumnTreeRowPtr& inRow, bool inSelect, bool inExtend, bool inNotify);
    UI_MultiColumnTree::Rows Selected() const;

    /// From Qt: rows changed.
    void OnChanged(const QItemSelection& inSelected, const QItemSelection& inDeselected);
    /// Whether there is something to tell.
    bool HasNews() const { return !mChanged.empty(); }
    /// Calls the selection function.
    void Tell();

    /// Around a reset: the rows that remember being selected are selected again, and nobody is told.
    void Restore();
    /// The row leaves the tree.
    static void Forget(UI_MultiColumnTreeRow& inRow);

    std::function<void(const UI_MultiColumnTree::Rows&)> changed;

private:
    /// For rows that Qt does not know of yet.
    void SelectWithNextLayout(UI_MultiColumnTreeRow& inRow, bool inSelect, bool inExtend, bool inNotify);
    void Mark(int inFirst, int inLast, bool inIsSelected);

    UI_MultiColumnTree::State& mTree;
    UI_MultiColumnTree::Rows mChanged; // since the function was called; some perhaps back again
    bool mIsQuiet = false;
};

} // namespace kioui::controls
