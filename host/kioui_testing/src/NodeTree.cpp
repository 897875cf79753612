#include <kioui_testing/NodeTree.h>

#include "NodeWriter.h"
#include "ui/NodeImpl.h"

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/controls/ProgressBar.h>
#include <kioui/controls/SearchBox.h>

#include <QPushButton>

namespace kioui::testing {
namespace {

using controls::UI_Checkbox;
using controls::UI_MultiColumnTree;
using controls::UI_MultiColumnTreeHeaderRow;
using controls::UI_MultiColumnTreeRow;
using controls::UI_ProgressBar;
using controls::UI_SearchBox;
using ui::UI_Node;

bool IsDefaultButton(const UI_Node& inNode)
{
    const auto* button = qobject_cast<const QPushButton*>(inNode.GetImpl().widget.data());
    return button != nullptr && button->isDefault();
}

bool IsUnknown(const UI_Node& inNode)
{
    if (const auto* search = dynamic_cast<const UI_SearchBox*>(&inNode)) {
        return !search->GetValue();
    }
    const auto* bar = dynamic_cast<const UI_ProgressBar*>(&inNode);
    return bar != nullptr && bar->IsUnknownProgress();
}

} // namespace

std::vector<const char*> StatesOf(const UI_Node& inNode)
{
    const auto* box = dynamic_cast<const UI_Checkbox*>(&inNode);
    const std::pair<bool, const char*> states[] = {
        {inNode.IsVisible(), "visible"},
        {inNode.IsEnabled(), "enabled"},
        {inNode.HasKeyboardFocus(), "focused"},
        {inNode.IsKeyboardTarget(), "keyboardTarget"},
        {box != nullptr && box->IsChecked(), "checked"},
        {IsDefaultButton(inNode), "default"},
        {IsUnknown(inNode), "unknown"},
    };
    std::vector<const char*> holding;
    for (const auto& [holds, word] : states) {
        if (holds) {
            holding.push_back(word);
        }
    }
    return holding;
}

namespace {

void Describe(UI_Node& inNode, NodeWriter& ioWriter);

struct RowInView {
    std::uint32_t number; // from 1, of all rows
    controls::UI_MultiColumnTreeRowPtr row;
};

std::vector<RowInView> RowsInView(const UI_MultiColumnTree& inTree)
{
    std::vector<RowInView> rows;
    const std::uint32_t count = inTree.CountRows(false);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (const auto row = inTree.GetRowAt(index); inTree.IsRowVisible(row.get())) {
            rows.push_back({index + 1, row});
        }
    }
    return rows;
}

/// What lies in the cells of a row.
std::vector<ui::UI_NodePtr> NodesInRow(UI_MultiColumnTreeRow& inRow, std::uint32_t inColumnCount)
{
    std::vector<ui::UI_NodePtr> nodes;
    for (std::uint32_t position = 0; position < inColumnCount; ++position) {
        const auto* cell = inRow.GetCellView(position);
        if (const ui::UI_NodePtr node = cell != nullptr ? cell->GetNode() : nullptr) {
            nodes.push_back(node);
        }
    }
    return nodes;
}

void DescribeColumns(const UI_MultiColumnTreeHeaderRow& inHeader, NodeWriter& ioWriter)
{
    ioWriter.BeginArray("columns");
    for (std::uint32_t position = 0; position < inHeader.GetCountOfColumns(); ++position) {
        const std::uint32_t column = inHeader.GetColumnAt(position);
        const bool isSorted = inHeader.GetSortColumn() == column;
        ioWriter.BeginObject();
        ioWriter.Member("id", double(column));
        ioWriter.Member("title", kiocore::UTF16View(inHeader.GetColumnTitle(column)));
        ioWriter.Member("width", inHeader.GetColumnWidth(column));
        ioWriter.Member("sort", std::string_view(!isSorted                    ? ""
                                                 : inHeader.IsSortAscending() ? "ascending"
                                                                              : "descending"));
        ioWriter.EndObject();
    }
    ioWriter.EndArray();
}

void DescribeRow(const UI_MultiColumnTree& inTree, UI_MultiColumnTreeRow& inRow, std::uint32_t inNumber,
                 NodeWriter& ioWriter)
{
    const std::uint32_t columnCount = inTree.GetHeaderRow()->GetCountOfColumns();
    ioWriter.BeginObject();
    ioWriter.Member("number", double(inNumber));
    ioWriter.Member("state",
                    inRow.IsSelected() ? std::vector<const char*>{"selected"} : std::vector<const char*>());
    ioWriter.BeginArray("cells");
    for (std::uint32_t position = 0; position < columnCount; ++position) {
        ioWriter.Element(inTree.GetCellText(&inRow, position));
    }
    ioWriter.EndArray();
    ioWriter.BeginArray("nodes");
    for (const ui::UI_NodePtr& node : NodesInRow(inRow, columnCount)) {
        Describe(*node, ioWriter);
    }
    ioWriter.EndArray();
    ioWriter.EndObject();
}

void DescribeRows(const UI_MultiColumnTree& inTree, NodeWriter& ioWriter)
{
    DescribeColumns(*inTree.GetHeaderRow(), ioWriter);
    ioWriter.Member("rowCount", double(inTree.CountRows(false)));
    ioWriter.BeginArray("rows");
    for (const RowInView& inView : RowsInView(inTree)) {
        DescribeRow(inTree, *inView.row, inView.number, ioWriter);
    }
    ioWriter.EndArray();
}

/// Children, without those that lie in cells: they come with their rows.
std::vector<ui::UI_NodePtr> ChildrenOf(const UI_Node& inNode)
{
    std::vector<ui::UI_NodePtr> children = inNode.GetChildren();
    if (const auto* tree = dynamic_cast<const UI_MultiColumnTree*>(&inNode)) {
        const std::uint32_t columnCount = tree->GetHeaderRow()->GetCountOfColumns();
        for (const RowInView& inView : RowsInView(*tree)) {
            for (const ui::UI_NodePtr& node : NodesInRow(*inView.row, columnCount)) {
                std::erase(children, node);
            }
        }
    }
    return children;
}

void Describe(UI_Node& inNode, NodeWriter& ioWriter)
{
    const RectT<float> bounds = inNode.GetBounds();
    const PointT<float> corner = inNode.ToWindow({0, 0});
    ioWriter.BeginObject();
    ioWriter.Member("id", std::string_view(inNode.GetNodeID()));
    ioWriter.Member("class", std::string_view(inNode.GetClassName()));
    ioWriter.Member("text", kiocore::UTF16View(inNode.GetText()));
    ioWriter.Member("name", kiocore::UTF16View(inNode.GetAccessibleName()));
    ioWriter.Member("bounds", std::vector<double>{corner.x, corner.y, bounds.Width(), bounds.Height()});
    ioWriter.Member("state", StatesOf(inNode));
    ioWriter.BeginArray("children");
    for (const ui::UI_NodePtr& child : ChildrenOf(inNode)) {
        Describe(*child, ioWriter);
    }
    ioWriter.EndArray();
    if (const auto* bar = dynamic_cast<const UI_ProgressBar*>(&inNode)) {
        ioWriter.Member("done", bar->GetDone());
        ioWriter.Member("total", bar->GetTotal());
    }
    if (const auto* tree = dynamic_cast<const UI_MultiColumnTree*>(&inNode)) {
        DescribeRows(*tree, ioWriter);
    }
    ioWriter.EndObject();
}

} // namespace

std::string DescribeNodes(UI_Node& inNode)
{
    NodeWriter writer;
    Describe(inNode, writer);
    return writer.Text();
}

} // namespace kioui::testing
