#include "RowSelection.h"

#include "TreeState.h"
#include "TreeView.h"

#include <QItemSelectionModel>

namespace kioui::controls {

void RowSelection::Select(const UI_MultiColumnTreeRowPtr& inRow, bool inSelect, bool inExtend, bool inNotify)
{
    TreeView* view = mTree.view;
    if (view == nullptr || !inRow || inRow->GetTree() != &mTree.tree || !mTree.model.Holds(*inRow) ||
        mTree.model.Columns().empty()) {
        return;
    }
    const QModelIndex index = mTree.model.index(int(inRow->GetKept().index), 0);
    if (inSelect) {
        inRow->GetKept().isSelected = true; // a row that a person cannot select can be selected now
        mChanged.push_back(inRow);
    }
    QItemSelectionModel::SelectionFlags command = QItemSelectionModel::Rows;
    command |= !inExtend  ? (inSelect ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::Clear)
               : inSelect ? QItemSelectionModel::Select
                          : QItemSelectionModel::Deselect;
    view->selectionModel()->select(index, command);
    view->SetCurrentQuietly(index);
    if (!inNotify) {
        for (const UI_MultiColumnTreeRowPtr& row : std::exchange(mChanged, {})) {
            row->GetKept().isToldSelected = row->GetKept().isSelected;
        }
    }
}

UI_MultiColumnTree::Rows RowSelection::Selected() const
{
    UI_MultiColumnTree::Rows selected;
    if (mTree.view != nullptr && mTree.view->selectionModel()->hasSelection()) {
        for (const UI_MultiColumnTreeRowPtr& row : mTree.model.Rows()) {
            if (row->IsSelected()) {
                selected.push_back(row);
            }
        }
    }
    return selected;
}

void RowSelection::Mark(int inFirst, int inLast, bool inIsSelected)
{
    for (int place = inFirst; place <= inLast; ++place) {
        UI_MultiColumnTreeRow* row = mTree.model.RowAt(place);
        if (row != nullptr && std::exchange(row->GetKept().isSelected, inIsSelected) != inIsSelected) {
            mChanged.emplace_back(row);
        }
    }
}

void RowSelection::OnChanged(const QItemSelection& inSelected, const QItemSelection& inDeselected)
{
    if (mIsQuiet) {
        return;
    }
    for (const QItemSelectionRange& range : inDeselected) {
        Mark(range.top(), range.bottom(), false);
    }
    for (const QItemSelectionRange& range : inSelected) {
        Mark(range.top(), range.bottom(), true);
    }
    mTree.SettleSoon();
}

void RowSelection::Tell()
{
    UI_MultiColumnTree::Rows rows;
    for (const UI_MultiColumnTreeRowPtr& row : std::exchange(mChanged, {})) {
        UI_MultiColumnTreeRow::Kept& kept = row->GetKept();
        if (kept.tree == &mTree.tree && kept.isToldSelected != kept.isSelected) {
            kept.isToldSelected = kept.isSelected;
            rows.push_back(row);
        }
    }
    if (!rows.empty() && changed) {
        const auto function = changed; // it may set another
        function(rows);
    }
}

void RowSelection::Restore()
{
    TreeView* view = mTree.view;
    if (view == nullptr || mTree.model.Columns().empty()) {
        return;
    }
    QItemSelection selection;
    const int lastColumn = mTree.model.columnCount() - 1;
    const UI_MultiColumnTree::Rows& rows = mTree.model.Rows();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::size_t first = row;
        while (row < rows.size() && rows[row]->GetKept().isSelected) {
            ++row;
        }
        if (row > first) {
            selection.append(QItemSelectionRange(mTree.model.index(int(first), 0),
                                                 mTree.model.index(int(row) - 1, lastColumn)));
        }
    }
    mIsQuiet = true;
    view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    mIsQuiet = false;
}

void RowSelection::Forget(UI_MultiColumnTreeRow& inRow)
{
    inRow.GetKept().isSelected = false;
    inRow.GetKept().isToldSelected = false;
}

} // namespace kioui::controls
