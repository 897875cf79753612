#include "RowsInView.h"

#include "CellView.h"
#include "TreeState.h"
#include "TreeView.h"
#include "ui/WidgetEvents.h"

#include <algorithm>

namespace kioui::controls {
namespace {

template <typename Work>
void ForEachCell(const UI_MultiColumnTreeRow& inRow, const Work& inWork)
{
    if (inRow.GetKept().cells) {
        const std::vector<CellViewPtr> cells =
            inRow.GetKept().cells->byColumn; // focus functions may change it
        for (const CellViewPtr& cell : cells) {
            if (cell && cell->GetNode()) {
                inWork(*cell);
            }
        }
    }
}

} // namespace

UI_MultiColumnTree::Rows RowsInView::Wanted() const
{
    const TreeView* view = mTree.view;
    if (view == nullptr || !view->isVisible()) {
        return {};
    }
    const auto [first, end] = view->RowsShown();
    const UI_MultiColumnTree::Rows& rows = mTree.model.Rows();
    return {rows.begin() + first, rows.begin() + end};
}

void RowsInView::Update()
{
    mIsDirty = false;
    const UI_MultiColumnTree::Rows before = std::exchange(mRows, Wanted());
    const UI_MultiColumnTree::Rows now = mRows; // functions may lead here again
    UI_MultiColumnTree::Rows fresh;
    for (const UI_MultiColumnTreeRowPtr& row : now) {
        if (!std::exchange(row->GetKept().isInView, true)) {
            fresh.push_back(row);
        }
    }
    UI_MultiColumnTree::Rows gone;
    const std::uint32_t first = now.empty() ? 0 : now.front()->GetKept().index;
    for (const UI_MultiColumnTreeRowPtr& row : before) {
        UI_MultiColumnTreeRow::Kept& kept = row->GetKept();
        if (kept.tree == &mTree.tree && kept.isInView && kept.index - first >= now.size()) {
            kept.isInView = false;
            gone.push_back(row);
        }
    }
    const auto function = visibilityChanged;
    for (const UI_MultiColumnTreeRowPtr& row : fresh) {
        if (function && row->GetTree() == &mTree.tree && row->GetKept().isInView) {
            ui::CallHost("The row visibility function of a tree", [&] { function(row.get()); });
        }
    }
    for (const UI_MultiColumnTreeRowPtr& row : now) {
        if (row->GetTree() == &mTree.tree && row->GetKept().isInView) {
            ForEachCell(*row, [](CellView& cell) { cell.Place(); });
        }
    }
    // Last, so that the focus can go from a node that leaves to one that came.
    for (const UI_MultiColumnTreeRowPtr& row : gone) {
        if (row->GetTree() == &mTree.tree && !row->GetKept().isInView) {
            ForEachCell(*row, [](CellView& cell) { cell.Park(); });
        }
    }
    OrderTabs();
}

void RowsInView::OrderTabs() const
{
    QWidget* last = mTree.view;
    if (last == nullptr) {
        return;
    }
    const std::vector<int> columns = mTree.ColumnsFromTheLeft();
    for (const UI_MultiColumnTreeRowPtr& row : mRows) {
        if (!row->GetKept().cells) {
            continue;
        }
        for (const int column : columns) {
            const CellViewPtr cell = CellOf(*row, column);
            QWidget* widget = cell ? cell->Widget() : nullptr;
            if (widget != nullptr && widget->parentWidget() == mTree.view->viewport()) {
                if (last->nextInFocusChain() != widget) {
                    QWidget::setTabOrder(last, widget);
                }
                last = widget;
            }
        }
    }
}

std::vector<ui::UI_NodePtr> RowsInView::Nodes() const
{
    std::vector<ui::UI_NodePtr> nodes;
    const std::vector<int> columns = mTree.ColumnsFromTheLeft();
    for (const UI_MultiColumnTreeRowPtr& row : mRows) {
        for (const int column : columns) {
            if (const CellViewPtr cell = CellOf(*row, column); cell && cell->GetNode()) {
                nodes.push_back(cell->GetNode());
            }
        }
    }
    return nodes;
}

} // namespace kioui::controls
