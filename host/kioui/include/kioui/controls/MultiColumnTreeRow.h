#pragma once

#include <kioui/ui/SubView.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kioui::controls {

class UI_MultiColumnTree;

/// The place of one cell, for nodes that lie in it: has no widget of its own, its bounds are the cell's. What
/// is put into it is shown over the cell wherever the row and the column go, is transparent to the mouse (the
/// cell's mouse function sees all of it) unless it is hot text, and leaves the arrow and page keys to the
/// tree.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_CellView {
public:
    virtual ~UI_CellView();
    /// Shares the node; null takes out what is in it.
    virtual void SetNode(const ui::UI_NodePtr& inNode) = 0;
    /// What lies in the cell; empty when nothing does.
    virtual ui::UI_NodePtr GetNode() const = 0;
    /// How the node lies in the cell: in the middle in the size it prefers, or over all of it (which is how
    /// nodes lie at first).
    virtual void CentreNode(bool inCentre) = 0;
    /// Width and height of the cell; empty when row or column are gone.
    virtual RectT<float> GetBounds() const = 0;
    /// Sees presses and releases of the mouse in the cell before the tree does; a release comes to the cell
    /// that the pointer is over then, wherever it was pressed. @return true when the event is dealt with.
    virtual void SetMouseEventFunction(std::function<bool(UI_CellView*, ui::UI_MouseEvent&)> inFunction) = 0;
};

/// One row of a multi-column tree. Cheap: holds nothing until it is shown.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_MultiColumnTreeRow : public boost::intrusive_ref_counter<UI_MultiColumnTreeRow> {
public:
    /// @param inSelectable  whether a person can select it.
    /// @param inTree        put into this tree at once, at the end; null for a row to be appended later.
    UI_MultiColumnTreeRow(bool inSelectable, UI_MultiColumnTree* inTree);
    ~UI_MultiColumnTreeRow();
    UI_MultiColumnTreeRow(const UI_MultiColumnTreeRow&) = delete;
    UI_MultiColumnTreeRow& operator=(const UI_MultiColumnTreeRow&) = delete;
    /// Rows lie close together, as thousands of them come and go at once.
    static void* operator new(std::size_t inBytes);
    static void operator delete(void* inRow, std::size_t inBytes);

    /// The cell of the column at this position, made on first asking; the row owns it, and drops it when it
    /// leaves its tree. Null for positions that are no column, and while the row is in no tree.
    UI_CellView* GetCellView(std::uint32_t inPosition);
    /// Null once it was removed.
    UI_MultiColumnTree* GetTree() const { return mKept.tree; }
    bool IsSelected() const { return mKept.isSelected && mKept.tree != nullptr; }

    /// For the sources of kioui: what the tree keeps with its row.
    struct Cells;
    struct Kept {
        explicit Kept(bool inSelectable);
        ~Kept();
        UI_MultiColumnTree* tree = nullptr;
        std::unique_ptr<Cells> cells; // empty until a cell is asked for
        std::uint32_t index = 0;      // in the order shown
        bool isSelectable;
        bool isSelected = false;
        bool isToldSelected = false; // as the selection function knows it
        bool isInView = false;
    };
    Kept& GetKept() { return mKept; }
    const Kept& GetKept() const { return mKept; }

private:
    Kept mKept;
};
using UI_MultiColumnTreeRowPtr = boost::intrusive_ptr<UI_MultiColumnTreeRow>;

} // namespace kioui::controls
