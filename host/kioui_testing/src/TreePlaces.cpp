#include <kioui_testing/UserEvents.h>

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <kiocore/config/Errors.h>

#include <QHeaderView>

#include <string>

namespace kioui::testing {

using controls::UI_MultiColumnTree;
using controls::UI_MultiColumnTreeHeaderRow;
using controls::UI_MultiColumnTreeRow;

PointT<float> MiddleOfCell(UI_MultiColumnTree& inTree, const UI_MultiColumnTreeRow& inRow,
                           std::uint32_t inPosition)
{
    inTree.ScrollToRow(&inRow);
    ui::ScApplication::RunPending();
    const RectT<float> cell = inTree.GetCellBounds(&inRow, inPosition);
    if (inRow.GetTree() != &inTree ||
        inTree.GetHeaderRow()->GetColumnAt(inPosition) == UI_MultiColumnTreeHeaderRow::kNoColumn) {
        throw kiocore::kio_exception(
            "the tree \"" + inTree.GetNodeID() + "\" has no cell of that row in column " +
                std::to_string(inPosition) + "; it has " + std::to_string(inTree.CountRows(false)) +
                " rows and " + std::to_string(inTree.GetHeaderRow()->GetCountOfColumns()) + " columns",
            kiocore::kError_BadArgument);
    }
    return inTree.ToWindow({(cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2});
}

PointT<float> MiddleOfTitle(const UI_MultiColumnTree& inTree, std::uint32_t inColumnID)
{
    const auto header = inTree.GetHeaderRow();
    const std::uint32_t position = header->GetIndexOfColumn(inColumnID);
    if (position == UI_MultiColumnTreeHeaderRow::kNoColumn) {
        throw kiocore::kio_exception("the tree \"" + inTree.GetNodeID() + "\" has no column " +
                                         std::to_string(inColumnID),
                                     kiocore::kError_BadArgument);
    }
    float left = 0;
    if (const auto* view = qobject_cast<const QHeaderView*>(header->GetImpl().widget.data())) {
        left = -float(view->offset()); // scrolled with the rows
    }
    for (std::uint32_t before = 0; before < position; ++before) {
        left += header->GetColumnWidth(header->GetColumnAt(before));
    }
    const float width = header->GetColumnWidth(inColumnID);
    return header->ToWindow({left + width / 2, header->GetBounds().Height() / 2});
}

} // namespace kioui::testing
