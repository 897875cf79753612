#include "RowModel.h"

#include <algorithm>

namespace kioui::controls {

UI_MultiColumnTreeRow* RowModel::RowAt(int inRow) const
{
    return inRow >= 0 && std::size_t(inRow) < mRows.size() ? mRows[std::size_t(inRow)].get() : nullptr;
}

bool RowModel::Holds(const UI_MultiColumnTreeRow& inRow) const
{
    return RowAt(int(inRow.GetKept().index)) == &inRow;
}

UI_MultiColumnTree::Rows RowModel::Replace(UI_MultiColumnTree::Rows inRows)
{
    beginResetModel();
    mRows.swap(inRows);
    std::uint32_t index = 0;
    for (const UI_MultiColumnTreeRowPtr& row : mRows) {
        row->GetKept().index = index++;
    }
    endResetModel();
    return inRows;
}

void RowModel::Append(const UI_MultiColumnTree::Rows& inRows)
{
    if (inRows.empty()) {
        return;
    }
    const int first = int(mRows.size());
    beginInsertRows({}, first, first + int(inRows.size()) - 1);
    for (const UI_MultiColumnTreeRowPtr& row : inRows) {
        row->GetKept().index = std::uint32_t(mRows.size());
        mRows.push_back(row);
    }
    endInsertRows();
}

int RowModel::ColumnOf(std::uint32_t inID) const
{
    const auto found = std::find_if(mColumns.begin(), mColumns.end(),
                                    [inID](const Column& column) { return column.id == inID; });
    return found != mColumns.end() ? int(found - mColumns.begin()) : -1;
}

void RowModel::AppendColumn(Column inColumn)
{
    const int place = int(mColumns.size());
    beginInsertColumns({}, place, place);
    mColumns.push_back(std::move(inColumn));
    endInsertColumns();
}

QModelIndex RowModel::index(int inRow, int inColumn, const QModelIndex& inParent) const
{
    const bool isOne =
        !inParent.isValid() && RowAt(inRow) && inColumn >= 0 && std::size_t(inColumn) < mColumns.size();
    return isOne ? createIndex(inRow, inColumn) : QModelIndex();
}

int RowModel::rowCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : int(mRows.size());
}

int RowModel::columnCount(const QModelIndex& inParent) const
{
    return inParent.isValid() ? 0 : int(mColumns.size());
}

bool RowModel::hasChildren(const QModelIndex& inParent) const
{
    return !inParent.isValid() && !mRows.empty();
}

Qt::ItemFlags RowModel::flags(const QModelIndex& inIndex) const
{
    const UI_MultiColumnTreeRow* row = RowAt(inIndex.row());
    if (row == nullptr) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    const UI_MultiColumnTreeRow::Kept& kept = row->GetKept();
    if (kept.isSelectable || kept.isSelected) { // what the program selected shows, too
        flags |= Qt::ItemIsSelectable;
    }
    return flags;
}

QVariant RowModel::data(const QModelIndex& inIndex, int inRole) const
{
    // What is seen is drawn; this is for those who cannot see it, and for typing.
    if (inRole != Qt::DisplayRole && inRole != Qt::AccessibleTextRole) {
        return {};
    }
    UI_MultiColumnTreeRow* row = RowAt(inIndex.row());
    return row != nullptr && row->GetTree() != nullptr ? mText(row, inIndex.column()) : QVariant();
}

QVariant RowModel::headerData(int inSection, Qt::Orientation inOrientation, int inRole) const
{
    const bool isOne =
        inOrientation == Qt::Horizontal && inSection >= 0 && std::size_t(inSection) < mColumns.size();
    if (!isOne || (inRole != Qt::DisplayRole && inRole != Qt::AccessibleTextRole)) {
        return {};
    }
    return mColumns[std::size_t(inSection)].title;
}

} // namespace kioui::controls
