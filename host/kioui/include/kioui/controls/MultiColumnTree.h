#pragma once

#include <kioui/controls/MultiColumnTreeHeaderRow.h>
#include <kioui/controls/MultiColumnTreeRow.h>
#include <kioui/drawbot/Drawbot.h>

#include <vector>

namespace kioui::controls {

/// A list of rows with columns; of one level, as SetAllowChildren(false) has it. Texts are drawn by whoever
/// fills it, controls lie in cell views. Made for tens of thousands of rows: nothing is made for a row before
/// it is shown.
///
/// Threading: UI thread only. Functions are called unlocked and may change the tree, but not destroy it.
class KIO_EXPORT UI_MultiColumnTree : public ui::UI_Node {
public:
    using RowFunction = std::function<void(UI_MultiColumnTreeRow*)>;
    using Rows = std::vector<UI_MultiColumnTreeRowPtr>;
    using DrawCellFunction = std::function<void(drawbot::Drawbot*, UI_MultiColumnTreeRow*,
                                                std::uint32_t inPosition, const RectT<float>& inCell)>;
    using CellTextFunction = std::function<ui::UTF16String(UI_MultiColumnTreeRow*, std::uint32_t inPosition)>;

    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_MultiColumnTree();
    ~UI_MultiColumnTree() override;
    const char* GetClassName() const override { return "UI_MultiColumnTree"; }

    /// @throws kio_exception (kError_BadArgument) for true: nothing in the house nests rows.
    void SetAllowChildren(bool inAllow);
    /// Ctrl+A selects all rows; it does until told otherwise.
    void SetSelectAllByAKey(bool inSelects);
    /// Typing selects the next row that begins with what was typed; it does until told otherwise.
    void SetSelectByNonArrowKeys(bool inSelects);
    /// Whether a person can select rows.
    void SetUserSelectableRows(bool inSelectable);

    /// The titles. Never empty.
    UI_MultiColumnTreeHeaderRowPtr GetHeaderRow() const;

    /// Appended rows stand behind those there are; while a column is sorted by, they go where they belong by
    /// the time anybody looks. Null is ignored.
    /// @param inParent  must be null: there is one level.
    /// @param inLayOut  lays out at once, unless deferred; else with the next layout.
    /// @throws kio_exception (kError_BadArgument) for a parent, and for a row that is in a tree already.
    void AppendRow(const UI_MultiColumnTreeRowPtr& inRow, UI_MultiColumnTreeRow* inParent, bool inLayOut);
    /// Drops all rows with their cell views. Selected rows that come back in the same deferral stay selected.
    void RemoveAllRows();
    /// @param inVisibleOnly  counts only rows of which something can be seen now.
    std::uint32_t CountRows(bool inVisibleOnly) const;
    /// In the order shown; null beyond the last.
    UI_MultiColumnTreeRowPtr GetRowAt(std::uint32_t inIndex) const;
    /// Whether something of the row can be seen: it is scrolled into view and the tree is shown.
    bool IsRowVisible(const UI_MultiColumnTreeRow* inRow) const;

    /// Arrow keys go on from this row. Scrolls nothing.
    /// @param inExtend  keeps what is selected already.
    /// @param inNotify  calls the selection function when anything changed.
    void SelectRow(const UI_MultiColumnTreeRowPtr& inRow, bool inSelect, bool inExtend, bool inNotify);
    /// In the order shown.
    Rows GetSelectedRows() const;
    /// Scrolls as little as possible.
    void ScrollToRow(const UI_MultiColumnTreeRow* inRow);

    /// By the header's sort column, by keys asked for once per row; the order of a dictionary, equal keys
    /// stay as they stood. Without a sort column nothing moves.
    void SortTree();

    /// A row came into view (after each population: once, unless it went out of view meanwhile). Called after
    /// the layout.
    void SetRowVisibilityChangedFunction(RowFunction inFunction);
    void SetDrawCellFunction(DrawCellFunction inFunction);
    void SetCellSortDataFunction(CellTextFunction inFunction);
    /// What a cell says to a person who does not see it: read aloud, typed after, and listed by test tools.
    void SetCellTextFunction(CellTextFunction inFunction);
    ui::UTF16String GetCellText(const UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition) const;
    /// Where a cell lies in the tree's coordinates, also outside of what is shown; empty when row or column
    /// are gone.
    RectT<float> GetCellBounds(const UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition) const;
    /// Called with the rows that were selected or no longer are, once the event that did it is over. Rows
    /// that left the tree are not among them.
    void SetRowsSelectionChangedFunction(std::function<void(const Rows&)> inFunction);

    /// Until the outermost goes, rows come and go without a layout; then there is one. The scroll position
    /// and the selection survive where the rows do.
    class KIO_EXPORT ScDeferLayoutForOpenAndCloseRow {
    public:
        explicit ScDeferLayoutForOpenAndCloseRow(UI_MultiColumnTree& inTree);
        ~ScDeferLayoutForOpenAndCloseRow();
        ScDeferLayoutForOpenAndCloseRow(const ScDeferLayoutForOpenAndCloseRow&) = delete;
        ScDeferLayoutForOpenAndCloseRow& operator=(const ScDeferLayoutForOpenAndCloseRow&) = delete;

    private:
        boost::intrusive_ptr<UI_MultiColumnTree> mTree;
    };

    /// For the sources of kioui: what there is beside the widget.
    struct State;
    State& GetState() const { return *mState; }

private:
    std::unique_ptr<State> mState;
};
using UI_MultiColumnTreePtr = boost::intrusive_ptr<UI_MultiColumnTree>;

} // namespace kioui::controls
