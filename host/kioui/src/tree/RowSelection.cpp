#include "RowSelection.h"

#include "TreeState.h"
#include "TreeView.h"
#include "ui/WidgetEvents.h"

#include <QItemSelectionModel>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kioui::controls {

void RowSelection::Select(const UI_MultiColumnTreeRowPtr& inRow, bool inSelect, bool inExtend, bool inNotify)
{
    TreeView* view = mTree.view;
    if (view == nullptr || !inRow || inRow->GetTree() != &mTree.tree || mTree.model.Columns().empty()) {
        return;
    }
    if (!mTree.model.Holds(*inRow)) {
        SelectWithNextLayout(*inRow, inSelect, inExtend, inNotify);
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

void RowSelection::SelectWithNextLayout(UI_MultiColumnTreeRow& inRow, bool inSelect, bool inExtend,
                                        bool inNotify)
{
    const auto mark = [this, inNotify](UI_MultiColumnTreeRow& row, bool isSelected) {
        UI_MultiColumnTreeRow::Kept& kept = row.GetKept();
        if (std::exchange(kept.isSelected, isSelected) != isSelected) {
            mChanged.emplace_back(&row);
        }
        kept.isToldSelected = inNotify ? kept.isToldSelected : isSelected;
    };
    if (!inExtend) {
        for (const UI_MultiColumnTree::Rows* rows : {&mTree.model.Rows(), &std::as_const(mTree.appended)}) {
            for (const UI_MultiColumnTreeRowPtr& row : *rows) {
                mark(*row, false);
            }
        }
    }
    mark(inRow, inSelect);
    mTree.isSelectionToBeShown = true;
}

UI_MultiColumnTree::Rows RowSelection::Selected() const
{
    UI_MultiColumnTree::Rows selected;
    const auto collect = [&selected](const UI_MultiColumnTree::Rows& rows) {
        std::copy_if(rows.begin(), rows.end(), std::back_inserter(selected),
                     [](const UI_MultiColumnTreeRowPtr& row) { return row->IsSelected(); });
    };
    if (mTree.view != nullptr) {
        if (mTree.isSelectionToBeShown || mTree.view->selectionModel()->hasSelection()) {
            collect(mTree.model.Rows());
        }
        collect(mTree.appended);
    }
    return selected;
}

void RowSelection::Mark(int inFirst, int inLast, bool inIsSelected)
{
    for (int place = inFirst; place <= inLast; ++place) {
        UI_MultiColumnTreeRow* row = mTree.model.RowAt(place);
        if (row == nullptr || (inIsSelected && !row->GetKept().isSelectable)) {
            continue; // Qt takes what a person cannot select into its ranges, and leaves it out when asked
        }
        if (std::exchange(row->GetKept().isSelected, inIsSelected) != inIsSelected) {
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
        ui::CallHost("The selection function of a tree", [&] { function(rows); });
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
