#include <kioui/controls/MultiColumnTreeHeaderRow.h>

#include "TreeState.h"
#include "TreeView.h"
#include "ui/NodeImpl.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace kioui::controls {
namespace {

/// What Qt takes for a width.
constexpr float kWidest = 1048575;

} // namespace

UI_MultiColumnTreeHeaderRow::UI_MultiColumnTreeHeaderRow(std::unique_ptr<Impl> inImpl,
                                                         UI_MultiColumnTree* inTree)
    : UI_Node(std::move(inImpl)), mTree(inTree)
{}

UI_MultiColumnTreeHeaderRow::~UI_MultiColumnTreeHeaderRow() = default;

HeaderView* UI_MultiColumnTreeHeaderRow::Header() const
{
    return mTree != nullptr ? mTree->GetState().Header() : nullptr;
}

int UI_MultiColumnTreeHeaderRow::ColumnOf(std::uint32_t inColumnID) const
{
    return Header() != nullptr ? mTree->GetState().model.ColumnOf(inColumnID) : -1;
}

void UI_MultiColumnTreeHeaderRow::AppendColumn(std::uint32_t inColumnID, const ui::UTF16String& inTitle,
                                               float inWidth)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::AppendColumn", inColumnID, inTitle, inWidth);
    if (Header() == nullptr) {
        return;
    }
    if (inColumnID == kNoColumn || ColumnOf(inColumnID) >= 0) {
        throw kiocore::kio_exception("UI_MultiColumnTreeHeaderRow: there can be no other column of id " +
                                         std::to_string(inColumnID),
                                     kiocore::kError_BadArgument);
    }
    UI_MultiColumnTree::State& tree = mTree->GetState();
    const ScQtCall call(tree);
    tree.model.AppendColumn({inColumnID, ui::ToQt(inTitle)});
    tree.selection.Restore(); // of all columns
    SetColumnWidth(inColumnID, inWidth);
}

std::uint32_t UI_MultiColumnTreeHeaderRow::GetCountOfColumns() const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetCountOfColumns");
    return Header() != nullptr ? std::uint32_t(Header()->count()) : 0;
}

std::uint32_t UI_MultiColumnTreeHeaderRow::GetColumnAt(std::uint32_t inPosition) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetColumnAt", inPosition);
    const int column = Header() != nullptr ? mTree->GetState().ColumnAt(inPosition) : -1;
    return column >= 0 ? mTree->GetState().model.Columns()[std::size_t(column)].id : kNoColumn;
}

std::uint32_t UI_MultiColumnTreeHeaderRow::GetIndexOfColumn(std::uint32_t inColumnID) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetIndexOfColumn", inColumnID);
    const int column = ColumnOf(inColumnID);
    return column >= 0 ? std::uint32_t(Header()->visualIndex(column)) : kNoColumn;
}

ui::UTF16String UI_MultiColumnTreeHeaderRow::GetColumnTitle(std::uint32_t inColumnID) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetColumnTitle", inColumnID);
    const int column = ColumnOf(inColumnID);
    return column >= 0 ? ui::FromQt(mTree->GetState().model.Columns()[std::size_t(column)].title)
                       : ui::UTF16String();
}

float UI_MultiColumnTreeHeaderRow::GetColumnWidth(std::uint32_t inColumnID) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetColumnWidth", inColumnID);
    const int column = ColumnOf(inColumnID);
    return column >= 0 ? float(Header()->sectionSize(column)) : 0;
}

void UI_MultiColumnTreeHeaderRow::SetColumnWidth(std::uint32_t inColumnID, float inWidth)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::SetColumnWidth", inColumnID, inWidth);
    const int column = ColumnOf(inColumnID);
    if (column >= 0 && !std::isnan(inWidth)) {
        const ScQtCall call(mTree->GetState());
        Header()->resizeSection(column, int(std::lround(std::clamp(inWidth, 0.0F, kWidest))));
    }
}

void UI_MultiColumnTreeHeaderRow::MoveColumn(std::uint32_t inColumnID, std::uint32_t inPosition,
                                             bool inLayOut)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::MoveColumn", inColumnID, inPosition,
                  inLayOut);
    const int column = ColumnOf(inColumnID);
    if (column >= 0) {
        const ScQtCall call(mTree->GetState());
        const auto last = std::uint32_t(Header()->count()) - 1;
        Header()->moveSection(Header()->visualIndex(column), int(std::min(inPosition, last)));
    }
}

std::uint32_t UI_MultiColumnTreeHeaderRow::GetSortColumn() const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetSortColumn");
    const int column = Header() != nullptr ? Header()->sortIndicatorSection() : -1;
    return column >= 0 ? mTree->GetState().model.Columns()[std::size_t(column)].id : kNoColumn;
}

bool UI_MultiColumnTreeHeaderRow::IsSortAscending() const
{
    return Header() == nullptr || Header()->sortIndicatorOrder() == Qt::AscendingOrder;
}

void UI_MultiColumnTreeHeaderRow::SetSortColumn(std::uint32_t inColumnID, bool inAscending)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::SetSortColumn", inColumnID, inAscending);
    const int column = ColumnOf(inColumnID);
    if (column < 0 && (inColumnID != kNoColumn || Header() == nullptr)) {
        return;
    }
    const Qt::SortOrder order = inAscending ? Qt::AscendingOrder : Qt::DescendingOrder;
    if (Header()->sortIndicatorSection() == column && Header()->sortIndicatorOrder() == order) {
        mTree->SortTree(); // Qt says nothing, but texts may have changed
    } else {
        Header()->setSortIndicator(column, order);
    }
}

void UI_MultiColumnTreeHeaderRow::SetBestFitWidthFunction(BestFitFunction inFunction)
{
    if (mTree != nullptr) {
        mTree->GetState().bestFit = std::move(inFunction);
    }
}

float UI_MultiColumnTreeHeaderRow::GetBestFitWidth(std::uint32_t inColumnID, bool inTitleOnly) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTreeHeaderRow::GetBestFitWidth", inColumnID, inTitleOnly);
    if (mTree == nullptr || !mTree->GetState().bestFit) {
        return 0;
    }
    const BestFitFunction function = mTree->GetState().bestFit; // it may set another
    return function(inColumnID, inTitleOnly);
}

} // namespace kioui::controls
