#pragma once

// The rows and columns as Qt's views see them. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

#include <QAbstractItemModel>
#include <QString>

#include <vector>

namespace kioui::controls {

/// Rows in the order shown, columns in the order appended; where a column stands is the header's.
///
/// Answers for any index, as a view may ask for one that it took before the rows changed.
class RowModel final : public QAbstractItemModel {
public:
    struct Column {
        std::uint32_t id = 0;
        QString title;
    };
    using TextFunction = std::function<QString(UI_MultiColumnTreeRow*, int inColumn)>;

    /// @param inText  what a cell says.
    explicit RowModel(TextFunction inText) : mText(std::move(inText)) {}

    const UI_MultiColumnTree::Rows& Rows() const { return mRows; }
    /// Null outside.
    UI_MultiColumnTreeRow* RowAt(int inRow) const;
    /// Whether the row is one of these and knows its place.
    bool Holds(const UI_MultiColumnTreeRow& inRow) const;
    /// In one reset. @return the rows there were.
    UI_MultiColumnTree::Rows Replace(UI_MultiColumnTree::Rows inRows);
    void Append(const UI_MultiColumnTree::Rows& inRows);

    const std::vector<Column>& Columns() const { return mColumns; }
    /// -1 when there is none.
    int ColumnOf(std::uint32_t inID) const;
    void AppendColumn(Column inColumn);

    QModelIndex index(int inRow, int inColumn, const QModelIndex& inParent = {}) const override;
    QModelIndex parent(const QModelIndex&) const override { return {}; }
    QModelIndex sibling(int inRow, int inColumn, const QModelIndex&) const override
    {
        return index(inRow, inColumn);
    }
    int rowCount(const QModelIndex& inParent = {}) const override;
    int columnCount(const QModelIndex& inParent = {}) const override;
    bool hasChildren(const QModelIndex& inParent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& inIndex) const override;
    QVariant data(const QModelIndex& inIndex, int inRole) const override;
    QVariant headerData(int inSection, Qt::Orientation inOrientation, int inRole) const override;

private:
    const TextFunction mText;
    UI_MultiColumnTree::Rows mRows;
    std::vector<Column> mColumns;
};

} // namespace kioui::controls
