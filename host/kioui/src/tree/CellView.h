#pragma once

// The cells that nodes lie in. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

#include <QRect>

#include <memory>
#include <vector>

class QWidget;

namespace kioui::controls {

class CellView final : public UI_CellView {
public:
    /// @param inColumn  in the order of appending.
    CellView(UI_MultiColumnTreeRow& inRow, int inColumn) : mRow(inRow), mColumn(inColumn) {}
    ~CellView() override;
    CellView(const CellView&) = delete;
    CellView& operator=(const CellView&) = delete;

    void SetNode(const ui::UI_NodePtr& inNode) override;
    ui::UI_NodePtr GetNode() const override { return mNode; }
    void CentreNode(bool inCentre) override;
    RectT<float> GetBounds() const override;
    void SetMouseEventFunction(std::function<bool(UI_CellView*, ui::UI_MouseEvent&)> inFunction) override
    {
        mMouseEvent = std::move(inFunction);
    }

    UI_MultiColumnTreeRow& Row() const { return mRow; }
    int Column() const { return mColumn; }

    /// Asks the mouse function. @return whether the event is dealt with.
    bool Offer(ui::UI_MouseEvent& ioEvent);
    /// Shows or no longer shows the check box in the cell, if there is one, as pressed.
    void ShowPressed(bool inPressed);

    /// Lays the node over the cell and shows it.
    void Place();
    /// Puts the node where it costs nothing until the row comes into view again. The keyboard focus goes to
    /// the tree, and comes back with the row unless it went elsewhere meanwhile.
    void Park();
    /// The node, which is no longer here; its widget lies where it lay.
    ui::UI_NodePtr GiveUpNode();
    /// The node's widget; null without one.
    QWidget* Widget() const;

private:
    UI_MultiColumnTree::State& Tree() const;
    QRect NodePlace() const;
    void LetGo();

    UI_MultiColumnTreeRow& mRow;
    const int mColumn;
    ui::UI_NodePtr mNode;
    bool mIsCentred = false;
    std::function<bool(UI_CellView*, ui::UI_MouseEvent&)> mMouseEvent;
};

/// Shared only for as long as a cell's own function runs.
using CellViewPtr = std::shared_ptr<CellView>;

struct UI_MultiColumnTreeRow::Cells {
    std::vector<CellViewPtr> byColumn; // in the order of appending; shorter than that at times, with gaps
};

/// Null where there is none yet.
CellViewPtr CellOf(const UI_MultiColumnTreeRow& inRow, int inColumn);

} // namespace kioui::controls
