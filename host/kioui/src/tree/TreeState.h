#pragma once

// What a tree consists of, and when its functions are called. Included by sources of kioui only.

#include "CellDelegate.h"
#include "CellMouse.h"
#include "HeaderView.h"
#include "RowModel.h"
#include "RowSelection.h"
#include "RowsInView.h"
#include "SortOrder.h"

#include <kioui/controls/MultiColumnTree.h>

#include <QObject>
#include <QPointer>

#include <unordered_map>
#include <utility>

namespace kioui::controls {

class TreeView;

/// Leaves arrow and page keys, pressed in a node that lies in a cell, to the tree.
class CellKeys final : public QObject {
public:
    explicit CellKeys(UI_MultiColumnTree::State& inTree) : mTree(inTree) {}
    bool eventFilter(QObject* inWidget, QEvent* inEvent) override;

private:
    UI_MultiColumnTree::State& mTree;
};

/// Functions of the host are called when Qt is through with an event, never from its middle, so that they may
/// do to the tree what they like.
struct UI_MultiColumnTree::State {
    State(UI_MultiColumnTree& inTree, TreeView& inView);
    /// The tree goes; what is left of its widget does nothing any more.
    void Close();

    /// In the viewport; empty when row or column are gone.
    QRect CellRect(const UI_MultiColumnTreeRow& inRow, int inColumn) const;
    HeaderView* Header() const;
    std::vector<int> ColumnsFromTheLeft() const;
    /// -1 where there is none.
    int ColumnAt(std::uint32_t inPosition) const;
    int PositionOf(int inColumn) const;

    void Append(const UI_MultiColumnTreeRowPtr& inRow, bool inLayOut);
    void RemoveAll();
    /// Makes the rows what they are to be, unless deferred.
    void LayOut();
    void LayOutSoon();

    /// Calls what there is to call, unless Qt is at work or this is being done already.
    void SettleUnlessInQt();
    /// The same, or else when events are next dealt with.
    void SettleSoon();

    UI_MultiColumnTree& tree;
    QPointer<TreeView> view;
    RowModel model;
    CellDelegate delegate;
    CellKeys cellKeys;
    CellMouse mouse;
    RowsInView rowsInView;
    RowSelection selection;
    SortOrder sortOrder;
    UI_MultiColumnTreeHeaderRowPtr headerRow;
    std::unordered_map<const ui::UI_Node*, CellView*> cellOfNode;

    DrawCellFunction drawCell;
    CellTextFunction sortText;
    CellTextFunction cellText;
    UI_MultiColumnTreeHeaderRow::BestFitFunction bestFit;

    // What comes with the next layout.
    Rows appended;
    Rows wereSelected; // and left; some perhaps to come back
    bool isCleared = false;
    bool isToBeSorted = false;
    bool isSelectionToBeShown = false; // that rows remember and Qt does not know
    int deferrals = 0;
    int callsIntoQt = 0;

private:
    void Settle();
    bool IsSorted() const;
    bool IsLayOutDue() const
    {
        return isCleared || isToBeSorted || isSelectionToBeShown || !appended.empty();
    }
    Rows RowsToBe();
    void Sort(Rows& ioRows);
    void Show(Rows inRows);
    void Drop(const Rows& inRows);

    bool mIsSettling = false;
    bool mIsLayingOut = false;
    bool mIsSettleDue = false;
    bool mIsLayOutDue = false;
};

/// Sets a value for as long as this lives.
template <typename T>
class ScValue {
public:
    ScValue(T& ioPlace, T inValue) : mPlace(ioPlace), mBefore(std::exchange(ioPlace, inValue)) {}
    ~ScValue() { mPlace = mBefore; }
    ScValue(const ScValue&) = delete;
    ScValue& operator=(const ScValue&) = delete;

private:
    T& mPlace;
    const T mBefore;
};

/// While Qt is at work on the tree's widgets.
class ScQtCall {
public:
    explicit ScQtCall(UI_MultiColumnTree::State& inTree) : mTree(inTree) { ++mTree.callsIntoQt; }
    ~ScQtCall()
    {
        --mTree.callsIntoQt;
        mTree.SettleUnlessInQt();
    }
    ScQtCall(const ScQtCall&) = delete;
    ScQtCall& operator=(const ScQtCall&) = delete;

private:
    UI_MultiColumnTree::State& mTree;
};

} // namespace kioui::controls
