#pragma once

#include <kioui/ui/Node.h>

#include <cstdint>
#include <functional>

namespace kioui::controls {

class UI_MultiColumnTree;
class HeaderView;

/// The titles of a tree's columns: a click sorts (again: the other way round), a drag moves a column, a drag
/// of a divider sets a width, a double click on a divider asks for the best one. Columns have an id each; a
/// position counts from the left, from 0.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_MultiColumnTreeHeaderRow : public ui::UI_Node {
public:
    static constexpr std::uint32_t kNoColumn = 0xFFFFFFFF;

    ~UI_MultiColumnTreeHeaderRow() override;
    const char* GetClassName() const override { return "UI_MultiColumnTreeHeaderRow"; }

    /// Right of the columns there are.
    /// @throws kio_exception (kError_BadArgument) when the id is taken.
    void AppendColumn(std::uint32_t inColumnID, const ui::UTF16String& inTitle, float inWidth);
    std::uint32_t GetCountOfColumns() const;
    /// The id of the column at a position; kNoColumn beyond the last.
    std::uint32_t GetColumnAt(std::uint32_t inPosition) const;
    /// The position of a column; kNoColumn when there is none with that id.
    std::uint32_t GetIndexOfColumn(std::uint32_t inColumnID) const;
    /// Empty when there is no such column.
    ui::UTF16String GetColumnTitle(std::uint32_t inColumnID) const;
    /// 0 when there is no such column.
    float GetColumnWidth(std::uint32_t inColumnID) const;
    /// Kept to whole units; 0 is allowed and comes back as 0 (a divider to drag stays). Unknown ids are
    /// ignored.
    void SetColumnWidth(std::uint32_t inColumnID, float inWidth);
    /// Positions beyond the last are the last. Unknown ids are ignored.
    /// @param inLayOut  lays out at once; else with the next layout.
    void MoveColumn(std::uint32_t inColumnID, std::uint32_t inPosition, bool inLayOut);

    /// The column that rows are sorted by; kNoColumn until a title was clicked or SetSortColumn called.
    std::uint32_t GetSortColumn() const;
    bool IsSortAscending() const;
    /// Sorts the tree by it as a click would.
    void SetSortColumn(std::uint32_t inColumnID, bool inAscending);

    /// @return the width that shows everything of a column, or of its title only.
    using BestFitFunction = std::function<float(std::uint32_t inColumnID, bool inTitleOnly)>;
    void SetBestFitWidthFunction(BestFitFunction inFunction);
    /// What the function answers; 0 without one.
    float GetBestFitWidth(std::uint32_t inColumnID, bool inTitleOnly) const;

private:
    friend class UI_MultiColumnTree;
    UI_MultiColumnTreeHeaderRow(std::unique_ptr<Impl> inImpl, UI_MultiColumnTree* inTree);
    HeaderView* Header() const;
    int ColumnOf(std::uint32_t inColumnID) const;

    UI_MultiColumnTree* mTree; // null once the tree has gone
};
using UI_MultiColumnTreeHeaderRowPtr = boost::intrusive_ptr<UI_MultiColumnTreeHeaderRow>;

} // namespace kioui::controls
