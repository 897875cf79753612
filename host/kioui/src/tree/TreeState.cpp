#include "TreeState.h"

#include "TreeView.h"
#include "ui/NodeImpl.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTimer>

#include <utility>

namespace kioui::controls {
namespace {

/// Functions that change the tree each time they are called would keep it busy for ever.
constexpr int kMostRounds = 20;

} // namespace

bool CellKeys::eventFilter(QObject* inWidget, QEvent* inEvent)
{
    if (inEvent->type() != QEvent::KeyPress || mTree.view == nullptr) {
        return false;
    }
    auto& key = *static_cast<QKeyEvent*>(inEvent);
    switch (key.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End: {
        const ui::ScWidgetEvent scope(static_cast<QWidget*>(inWidget)); // its row may go
        mTree.view->PressKey(key);
        return true;
    }
    default:
        return false;
    }
}

UI_MultiColumnTree::State::State(UI_MultiColumnTree& inTree, TreeView& inView)
    : tree(inTree), view(&inView), model([this](UI_MultiColumnTreeRow* row, int column) {
          const int position = PositionOf(column);
          return cellText && position >= 0 ? ui::ToQt(cellText(row, std::uint32_t(position))) : QString();
      }),
      delegate(*this), cellKeys(*this), mouse(*this), rowsInView(*this), selection(*this)
{
    auto* header = new HeaderView(&inView);
    inView.setHeader(header);
    // Qt's own best fit asks for texts that Qt does not draw.
    QObject::disconnect(header, SIGNAL(sectionHandleDoubleClicked(int)), &inView, nullptr);
    header->TakeCharge();
    inView.setModel(&model);
    inView.setItemDelegate(&delegate);
    inView.SetTree(this);
    const auto onMoved = [this] {
        rowsInView.MarkDirty();
        SettleUnlessInQt();
    };
    QObject::connect(header, &QHeaderView::sectionResized, &cellKeys, onMoved);
    QObject::connect(header, &QHeaderView::sectionMoved, &cellKeys, [this, onMoved] {
        view->viewport()->update();
        onMoved();
    });
    QObject::connect(header, &QHeaderView::sortIndicatorChanged, &cellKeys, [this] { tree.SortTree(); });
    header->SetBestFitFunction([this](int column) {
        const std::uint32_t id = model.Columns()[std::size_t(column)].id;
        if (bestFit) {
            const UI_MultiColumnTreeHeaderRowPtr row = headerRow;
            row->SetColumnWidth(id, row->GetBestFitWidth(id, false));
        }
    });
}

void UI_MultiColumnTree::State::Close()
{
    deferrals = 1; // nothing is laid out any more
    Drop(Rows(model.Rows()));
    Drop(std::exchange(appended, {}));
    wereSelected.clear();
    if (view) {
        view->SetTree(nullptr);
        view->setItemDelegate(nullptr);
        view->setModel(nullptr);
    }
}

HeaderView* UI_MultiColumnTree::State::Header() const
{
    return view ? static_cast<HeaderView*>(view->header()) : nullptr;
}

QRect UI_MultiColumnTree::State::CellRect(const UI_MultiColumnTreeRow& inRow, int inColumn) const
{
    const HeaderView* header = Header();
    if (header == nullptr || inRow.GetTree() != &tree || !model.Holds(inRow) || inColumn < 0 ||
        inColumn >= header->count()) {
        return {};
    }
    return {header->sectionViewportPosition(inColumn), view->TopOfRow(int(inRow.GetKept().index)),
            header->sectionSize(inColumn), view->RowHeight()};
}

std::vector<int> UI_MultiColumnTree::State::ColumnsFromTheLeft() const
{
    std::vector<int> columns;
    if (const HeaderView* header = Header()) {
        for (int position = 0; position < header->count(); ++position) {
            columns.push_back(header->logicalIndex(position));
        }
    }
    return columns;
}

int UI_MultiColumnTree::State::ColumnAt(std::uint32_t inPosition) const
{
    const HeaderView* header = Header();
    return header != nullptr && inPosition < std::uint32_t(header->count())
               ? header->logicalIndex(int(inPosition))
               : -1;
}

int UI_MultiColumnTree::State::PositionOf(int inColumn) const
{
    const HeaderView* header = Header();
    return header != nullptr ? header->visualIndex(inColumn) : -1;
}

void UI_MultiColumnTree::State::Append(const UI_MultiColumnTreeRowPtr& inRow, bool inLayOut)
{
    UI_MultiColumnTreeRow::Kept& kept = inRow->GetKept();
    if (!model.Holds(*inRow)) { // nor does what it was elsewhere matter
        RowSelection::Forget(*inRow);
    }
    kept.tree = &tree;
    appended.push_back(inRow);
    if (deferrals > 0) {
        return;
    }
    if (inLayOut && !IsSorted()) {
        LayOut();
    } else {
        LayOutSoon(); // one by one, each would sort all
    }
}

void UI_MultiColumnTree::State::Drop(const Rows& inRows)
{
    Rows withCells; // what goes with cells may call the host, and that may change what rows there are
    for (const UI_MultiColumnTreeRowPtr& row : inRows) {
        UI_MultiColumnTreeRow::Kept& kept = row->GetKept();
        kept.isInView = false;
        kept.tree = nullptr;
        if (kept.cells) {
            withCells.push_back(row);
        }
        if (kept.isSelected) {
            wereSelected.push_back(row);
        }
    }
    for (const UI_MultiColumnTreeRowPtr& row : withCells) {
        const auto cells = std::move(row->GetKept().cells); // who asks meanwhile finds none
    }
}

void UI_MultiColumnTree::State::RemoveAll()
{
    if (!std::exchange(isCleared, true)) {
        Drop(model.Rows());
    }
    Drop(std::exchange(appended, {}));
    appended.reserve(model.Rows().size()); // most often as many come again
    LayOut();
}

bool UI_MultiColumnTree::State::IsSorted() const
{
    return sortText && Header() != nullptr && Header()->sortIndicatorSection() >= 0;
}

UI_MultiColumnTree::Rows UI_MultiColumnTree::State::RowsToBe()
{
    isToBeSorted = false;
    if (std::exchange(isCleared, false)) {
        return std::exchange(appended, {});
    }
    Rows rows = model.Rows();
    rows.insert(rows.end(), appended.begin(), appended.end());
    appended.clear();
    return rows;
}

void UI_MultiColumnTree::State::Sort(Rows& ioRows)
{
    const UI_MultiColumnTreePtr keep = &tree;
    const CellTextFunction function = sortText; // it may set another
    const auto position = std::uint32_t(PositionOf(Header()->sortIndicatorSection()));
    const bool isAscending = Header()->sortIndicatorOrder() == Qt::AscendingOrder;
    ui::CallHost("The sort function of a tree", [&] {
        sortOrder.Sort(
            ioRows, [&](UI_MultiColumnTreeRow* row) { return function(row, position); }, isAscending);
    });
}

void UI_MultiColumnTree::State::LayOut()
{
    if (deferrals > 0 || mIsLayingOut || !view) {
        return;
    }
    {
        const ScValue once(mIsLayingOut, true);
        for (int round = 0; round < kMostRounds && IsLayOutDue(); ++round) {
            const bool isReset = isCleared || isSelectionToBeShown || IsSorted();
            if (!isReset) {
                isToBeSorted = false;
                const ScQtCall call(*this);
                model.Append(std::exchange(appended, {}));
                rowsInView.MarkDirty();
                continue;
            }
            Rows rows = RowsToBe();
            if (IsSorted()) {
                Sort(rows); // a function that is asked for a text may change the rows; that comes next then
            }
            if (isCleared) {
                Drop(rows);
                continue;
            }
            Show(std::move(rows));
        }
    }
    if (IsLayOutDue()) {
        LayOutSoon();
    }
    SettleUnlessInQt();
}

void UI_MultiColumnTree::State::Show(Rows inRows)
{
    const ScQtCall call(*this);
    const int across = view->horizontalScrollBar()->value();
    const int down = view->verticalScrollBar()->value();
    const UI_MultiColumnTreeRowPtr current = model.RowAt(view->currentIndex().row());
    const bool isSelected =
        std::exchange(isSelectionToBeShown, false) || view->selectionModel()->hasSelection();
    const Rows before = model.Replace(std::move(inRows));
    for (const UI_MultiColumnTreeRowPtr& row : std::exchange(wereSelected, {})) {
        if (row->GetTree() != &tree) {
            RowSelection::Forget(*row);
        }
    }
    view->doItemsLayout();
    if (isSelected) {
        selection.Restore();
    }
    if (current && current->GetTree() == &tree && model.Holds(*current)) {
        view->SetCurrentQuietly(model.index(int(current->GetKept().index), 0));
    }
    view->horizontalScrollBar()->setValue(across);
    view->verticalScrollBar()->setValue(down);
}

void UI_MultiColumnTree::State::LayOutSoon()
{
    if (deferrals == 0 && view && !std::exchange(mIsLayOutDue, true)) {
        QTimer::singleShot(0, &cellKeys, [this] {
            mIsLayOutDue = false;
            LayOut();
        });
    }
}

void UI_MultiColumnTree::State::SettleUnlessInQt()
{
    if (callsIntoQt == 0 && deferrals == 0 && !mIsLayingOut && !mIsSettling) {
        Settle();
    }
}

void UI_MultiColumnTree::State::Settle()
{
    if (!rowsInView.IsDirty() && !selection.HasNews()) {
        return;
    }
    const UI_MultiColumnTreePtr keep = &tree;
    const ScValue once(mIsSettling, true);
    for (int round = 0; round < kMostRounds && (rowsInView.IsDirty() || selection.HasNews()); ++round) {
        if (rowsInView.IsDirty()) {
            rowsInView.Update();
        }
        selection.Tell();
    }
    if (rowsInView.IsDirty() || selection.HasNews()) {
        SettleSoon();
    }
}

void UI_MultiColumnTree::State::SettleSoon()
{
    if (view && !std::exchange(mIsSettleDue, true)) {
        QTimer::singleShot(0, &cellKeys, [this] {
            mIsSettleDue = false;
            SettleUnlessInQt();
        });
    }
}

} // namespace kioui::controls
