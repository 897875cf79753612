#include "UiPlace.h"

#include "../../support/LocalText.h"

#include <kioui_testing/UserEvents.h>

namespace trhost::ui {
namespace {

using kiocore::utility::ToUTF8;
using kioui::PointT;
using kioui::RectT;
using kioui::UI_Node;
using kioui::UI_NodePtr;
using kioui::controls::UI_MultiColumnTree;
using kioui::controls::UI_MultiColumnTreeHeaderRow;

void CollectIDs(const UI_Node& inNode, std::string& ioIDs)
{
    for (const UI_NodePtr& child : inNode.GetChildren()) {
        if (const std::string id = child->GetNodeID(); !id.empty()) {
            ioIDs += (ioIDs.empty() ? "" : ", ") + id;
        }
        CollectIDs(*child, ioIDs);
    }
}

UI_Node* FirstTreeIn(UI_Node& inNode)
{
    if (dynamic_cast<UI_MultiColumnTree*>(&inNode) != nullptr) {
        return &inNode;
    }
    for (const UI_NodePtr& child : inNode.GetChildren()) {
        if (UI_Node* found = FirstTreeIn(*child)) {
            return found;
        }
    }
    return nullptr;
}

/// Texts of a row's cells, as messages show them.
std::string RowText(const UI_MultiColumnTree& inTree, std::uint32_t inIndex)
{
    const auto row = inTree.GetRowAt(inIndex);
    std::string text;
    for (std::uint32_t position = 0; position < inTree.GetHeaderRow()->GetCountOfColumns(); ++position) {
        const std::string cell = ToUTF8(inTree.GetCellText(row.get(), position));
        text += cell.empty() ? "" : (text.empty() ? "" : " | ") + cell;
    }
    return '"' + text + '"';
}

bool HasCell(const UI_MultiColumnTree& inTree, std::uint32_t inIndex, const kiocore::UTF16String& inText)
{
    const auto row = inTree.GetRowAt(inIndex);
    for (std::uint32_t position = 0; position < inTree.GetHeaderRow()->GetCountOfColumns(); ++position) {
        if (inTree.GetCellText(row.get(), position) == inText) {
            return true;
        }
    }
    return false;
}

} // namespace

UiPlace::UiPlace(kioui::UI_OSWindow& inWindow, const UiTarget& inTarget) : mTarget(inTarget)
{
    FindNode(inWindow);
    if (mTarget.kind == UiTarget::Kind::kTitle || mTarget.kind == UiTarget::Kind::kCell) {
        FindColumn();
    }
    if (mTarget.kind == UiTarget::Kind::kRow || mTarget.kind == UiTarget::Kind::kCell) {
        FindRow();
    }
}

void UiPlace::FindNode(kioui::UI_OSWindow& inWindow)
{
    mNode = mTarget.node.empty() ? FirstTreeIn(inWindow) : inWindow.FindNode(mTarget.node);
    if (mNode) {
        return;
    }
    std::string ids;
    CollectIDs(inWindow, ids);
    throw UiMismatch(
        mTarget.node.empty()
            ? LocalText("$$$/Halcyon/TrHost/UiScript/NoTree=found no tree in the window \"@0\", "
                        "expected one with the column @1#{@0: title of a window @1: title of a "
                        "column}",
                        {ToUTF8(inWindow.GetText()), mTarget.column.AsText()})
            : LocalText("$$$/Halcyon/TrHost/UiScript/NoNode=found no node @0 in the window \"@1\", "
                        "which has: @2#{@0: ID of a node @1: title of a window @2: IDs of nodes}",
                        {mTarget.node, ToUTF8(inWindow.GetText()), ids}));
}

UI_MultiColumnTree& UiPlace::Tree() const
{
    auto* tree = dynamic_cast<UI_MultiColumnTree*>(mNode.get());
    if (tree == nullptr) {
        throw UiMismatch(LocalText("$$$/Halcyon/TrHost/UiScript/IsNoTree=found a @1 as @0, expected a "
                                   "UI_MultiColumnTree#{@0: ID of a node @1: a class}",
                                   {mTarget.node, mNode->GetClassName()}));
    }
    return *tree;
}

void UiPlace::FindColumn()
{
    const auto header = Tree().GetHeaderRow();
    std::string titles;
    for (mPosition = 0; mPosition < header->GetCountOfColumns(); ++mPosition) {
        mColumnID = header->GetColumnAt(mPosition);
        const std::string title = ToUTF8(header->GetColumnTitle(mColumnID));
        if (mTarget.column.id ? mColumnID == *mTarget.column.id : title == mTarget.column.title) {
            return;
        }
        titles += (titles.empty() ? "" : ", ") + ('"' + title + "\" (#" + std::to_string(mColumnID) + ')');
    }
    throw UiMismatch(LocalText("$$$/Halcyon/TrHost/UiScript/NoColumn=found no column @0; there are: @1#{@0: "
                               "title of a column @1: titles of columns}",
                               {mTarget.column.AsText(), titles}));
}

void UiPlace::FindRow()
{
    const UI_MultiColumnTree& tree = Tree();
    const std::uint32_t count = tree.CountRows(false);
    const kiocore::UTF16String text = kiocore::utility::ToUTF16(mTarget.rowText);
    for (std::uint32_t index = 0; index < count && !mRow; ++index) {
        if (mTarget.rowNumber > 0 ? index + 1 == mTarget.rowNumber : HasCell(tree, index, text)) {
            mRow = tree.GetRowAt(index);
        }
    }
    if (!mRow) {
        std::string rows;
        constexpr std::uint32_t kMostShown = 10;
        for (std::uint32_t index = 0; index < std::min(count, kMostShown); ++index) {
            rows += (rows.empty() ? "" : ", ") + RowText(tree, index);
        }
        throw UiMismatch(
            LocalText("$$$/Halcyon/TrHost/UiScript/NoRow=found no @0 among @1 rows: @2@3#{@0: a row "
                      "as a script names it @1: a number @2: texts of rows @3: \", ...\" or nothing}",
                      {mTarget.AsText(), std::to_string(count), rows, count > kMostShown ? ", ..." : ""}));
    }
}

UI_Node* UiPlace::Node() const
{
    switch (mTarget.kind) {
    case UiTarget::Kind::kNode:
        return mNode.get();
    case UiTarget::Kind::kCell: {
        const auto* cell = mRow->GetCellView(mPosition);
        return cell != nullptr ? cell->GetNode().get() : nullptr;
    }
    case UiTarget::Kind::kRow:
    case UiTarget::Kind::kTitle:
        return nullptr;
    }
    return nullptr;
}

RectT<float> UiPlace::Bounds() const
{
    PointT<float> middle;
    kioui::SizeT<float> size;
    switch (mTarget.kind) {
    case UiTarget::Kind::kNode:
        middle = kioui::testing::MiddleOf(*mNode);
        size = {mNode->GetBounds().Width(), mNode->GetBounds().Height()};
        break;
    case UiTarget::Kind::kRow:
    case UiTarget::Kind::kCell: {
        middle = kioui::testing::MiddleOfCell(Tree(), *mRow, mPosition);
        const RectT<float> cell = Tree().GetCellBounds(mRow.get(), mPosition);
        size = {cell.Width(), cell.Height()};
        break;
    }
    case UiTarget::Kind::kTitle: {
        const auto header = Tree().GetHeaderRow();
        middle = kioui::testing::MiddleOfTitle(Tree(), mColumnID);
        size = {header->GetColumnWidth(mColumnID), header->GetBounds().Height()};
        break;
    }
    }
    return {middle.x - size.width / 2, middle.y - size.height / 2, middle.x + size.width / 2,
            middle.y + size.height / 2};
}

PointT<float> UiPlace::Point() const
{
    const RectT<float> bounds = Bounds();
    if (!mTarget.at) {
        return {(bounds.left + bounds.right) / 2, (bounds.top + bounds.bottom) / 2};
    }
    return {(mTarget.at->x < 0 ? bounds.right : bounds.left) + mTarget.at->x,
            (mTarget.at->y < 0 ? bounds.bottom : bounds.top) + mTarget.at->y};
}

} // namespace trhost::ui
