#include <kioui/controls/MultiColumnTree.h>

#include "TreeState.h"
#include "TreeView.h"
#include "ui/NodeImpl.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>

namespace kioui::controls {
namespace {

struct TreeImpl final : ui::UI_Node::Impl {
    using Impl::Impl;

    UI_MultiColumnTree::State& Tree() const { return static_cast<UI_MultiColumnTree*>(node)->GetState(); }

    std::vector<ui::UI_NodePtr> Children() const override
    {
        std::vector<ui::UI_NodePtr> all = children;
        const std::vector<ui::UI_NodePtr> nodes = Tree().rowsInView.Nodes();
        all.insert(all.end(), nodes.begin(), nodes.end());
        return all;
    }

    CellView* CellOf(const ui::UI_Node& inChild) const
    {
        const auto& cells = Tree().cellOfNode;
        const auto found = cells.find(&inChild);
        return found != cells.end() ? found->second : nullptr;
    }

    void LetGoOf(ui::UI_Node& inChild) override
    {
        if (CellView* cell = CellOf(inChild)) {
            cell->SetNode(nullptr);
        } else {
            Impl::LetGoOf(inChild);
        }
    }

    void Unlist(ui::UI_Node& inChild) override
    {
        if (CellView* cell = CellOf(inChild)) {
            cell->GiveUpNode();
        } else {
            Impl::Unlist(inChild);
        }
    }
};

std::unique_ptr<ui::UI_Node::Impl> NewTreeImpl()
{
    ui::RequireApplication("UI_MultiColumnTree");
    auto impl = std::make_unique<TreeImpl>(new TreeView(ui::DefaultParentWidget()));
    impl->widget->hide(); // until it is put somewhere
    impl->chainsItsChildren = true;
    return impl;
}

struct HeaderImpl final : ui::UI_Node::Impl {
    using Impl::Impl;
    ~HeaderImpl() override { widget = nullptr; } // the tree's widget owns it
};

} // namespace

UI_MultiColumnTree::UI_MultiColumnTree()
    : UI_Node(NewTreeImpl()), mState(std::make_unique<State>(*this, *ui::WidgetOf<TreeView>(*this)))
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::UI_MultiColumnTree");
    auto impl = std::make_unique<HeaderImpl>(mState->Header());
    impl->parent = this;
    mState->headerRow = new UI_MultiColumnTreeHeaderRow(std::move(impl), this);
}

UI_MultiColumnTree::~UI_MultiColumnTree()
{
    mState->headerRow->mTree = nullptr;
    mState->headerRow->GetImpl().parent = nullptr;
    mState->Close();
    GetImpl().node = nullptr;
}

void UI_MultiColumnTree::SetAllowChildren(bool inAllow)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SetAllowChildren", inAllow);
    if (inAllow) {
        throw kiocore::kio_exception(
            "UI_MultiColumnTree: rows with children were asked for; there is one level only",
            kiocore::kError_BadArgument);
    }
}

void UI_MultiColumnTree::SetSelectAllByAKey(bool inSelects)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SetSelectAllByAKey", inSelects);
    if (mState->view) {
        mState->view->SetSelectAll(inSelects);
    }
}

void UI_MultiColumnTree::SetSelectByNonArrowKeys(bool inSelects)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SetSelectByNonArrowKeys", inSelects);
    if (mState->view) {
        mState->view->SetTypeAhead(inSelects);
    }
}

void UI_MultiColumnTree::SetUserSelectableRows(bool inSelectable)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SetUserSelectableRows", inSelectable);
    if (mState->view) {
        mState->view->setSelectionMode(inSelectable ? QAbstractItemView::ExtendedSelection
                                                    : QAbstractItemView::NoSelection);
    }
}

UI_MultiColumnTreeHeaderRowPtr UI_MultiColumnTree::GetHeaderRow() const
{
    return mState->headerRow;
}

void UI_MultiColumnTree::AppendRow(const UI_MultiColumnTreeRowPtr& inRow, UI_MultiColumnTreeRow* inParent,
                                   bool inLayOut)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::AppendRow", inParent != nullptr, inLayOut);
    if (inParent != nullptr) {
        throw kiocore::kio_exception(
            "UI_MultiColumnTree: a row was to lie in another; there is one level only",
            kiocore::kError_BadArgument);
    }
    if (!inRow || !mState->view) {
        return;
    }
    if (inRow->GetTree() != nullptr) {
        throw kiocore::kio_exception("UI_MultiColumnTree: a row was appended that is in a tree already",
                                     kiocore::kError_BadArgument);
    }
    mState->Append(inRow, inLayOut);
}

void UI_MultiColumnTree::RemoveAllRows()
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::RemoveAllRows");
    mState->RemoveAll();
}

std::uint32_t UI_MultiColumnTree::CountRows(bool inVisibleOnly) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::CountRows", inVisibleOnly);
    if (!mState->view) {
        return 0;
    }
    if (!inVisibleOnly) {
        return std::uint32_t((mState->isCleared ? 0 : mState->model.Rows().size()) + mState->appended.size());
    }
    mState->LayOut();
    if (!mState->view->isVisible()) {
        return 0;
    }
    const auto [first, end] = mState->view->RowsShown();
    return std::uint32_t(end - first);
}

UI_MultiColumnTreeRowPtr UI_MultiColumnTree::GetRowAt(std::uint32_t inIndex) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::GetRowAt", inIndex);
    if (!mState->view) {
        return {};
    }
    mState->LayOut();
    const std::size_t shown = mState->isCleared ? 0 : mState->model.Rows().size();
    if (inIndex < shown) {
        return mState->model.Rows()[inIndex];
    }
    return inIndex - shown < mState->appended.size() ? mState->appended[inIndex - shown]
                                                     : UI_MultiColumnTreeRowPtr();
}

bool UI_MultiColumnTree::IsRowVisible(const UI_MultiColumnTreeRow* inRow) const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::IsRowVisible");
    if (inRow == nullptr || inRow->GetTree() != this || !mState->view) {
        return false;
    }
    mState->LayOut();
    if (!mState->model.Holds(*inRow) || !mState->view->isVisible()) {
        return false;
    }
    const auto [first, end] = mState->view->RowsShown();
    const int index = int(inRow->GetKept().index);
    return index >= first && index < end;
}

void UI_MultiColumnTree::SelectRow(const UI_MultiColumnTreeRowPtr& inRow, bool inSelect, bool inExtend,
                                   bool inNotify)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SelectRow", inSelect, inExtend, inNotify);
    if (mState->view) {
        mState->LayOut();
        const ScQtCall call(*mState);
        mState->selection.Select(inRow, inSelect, inExtend, inNotify);
    }
}

UI_MultiColumnTree::Rows UI_MultiColumnTree::GetSelectedRows() const
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::GetSelectedRows");
    mState->LayOut();
    return mState->selection.Selected();
}

void UI_MultiColumnTree::ScrollToRow(const UI_MultiColumnTreeRow* inRow)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::ScrollToRow");
    if (inRow == nullptr || inRow->GetTree() != this || !mState->view) {
        return;
    }
    mState->LayOut();
    if (mState->model.Holds(*inRow)) {
        const ScQtCall call(*mState);
        mState->view->LayOutNow();
        mState->view->scrollTo(mState->model.index(int(inRow->GetKept().index), 0),
                               QAbstractItemView::EnsureVisible);
    }
}

void UI_MultiColumnTree::SortTree()
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::SortTree");
    mState->isToBeSorted = true;
    mState->LayOut();
}

void UI_MultiColumnTree::SetRowVisibilityChangedFunction(RowFunction inFunction)
{
    mState->rowsInView.visibilityChanged = std::move(inFunction);
}

void UI_MultiColumnTree::SetDrawCellFunction(DrawCellFunction inFunction)
{
    mState->drawCell = std::move(inFunction);
}

void UI_MultiColumnTree::SetCellSortDataFunction(CellTextFunction inFunction)
{
    mState->sortText = std::move(inFunction);
}

void UI_MultiColumnTree::SetCellTextFunction(CellTextFunction inFunction)
{
    mState->cellText = std::move(inFunction);
}

ui::UTF16String UI_MultiColumnTree::GetCellText(const UI_MultiColumnTreeRow* inRow,
                                                std::uint32_t inPosition) const
{
    if (inRow == nullptr || inRow->GetTree() != this || !mState->cellText ||
        mState->ColumnAt(inPosition) < 0) {
        return {};
    }
    return mState->cellText(const_cast<UI_MultiColumnTreeRow*>(inRow), inPosition);
}

RectT<float> UI_MultiColumnTree::GetCellBounds(const UI_MultiColumnTreeRow* inRow,
                                               std::uint32_t inPosition) const
{
    if (inRow == nullptr || inRow->GetTree() != this || !mState->view) {
        return {};
    }
    mState->LayOut();
    const int column = mState->ColumnAt(inPosition);
    if (column < 0 || !mState->model.Holds(*inRow)) {
        return {};
    }
    return ui::FromQt(mState->CellRect(*inRow, column).translated(mState->view->viewport()->pos()));
}

void UI_MultiColumnTree::SetRowsSelectionChangedFunction(std::function<void(const Rows&)> inFunction)
{
    mState->selection.changed = std::move(inFunction);
}

UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow::ScDeferLayoutForOpenAndCloseRow(
    UI_MultiColumnTree& inTree)
    : mTree(&inTree)
{
    KIO_HOST_CALL("kioui::controls::UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow");
    ++mTree->mState->deferrals;
}

UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow::~ScDeferLayoutForOpenAndCloseRow()
{
    if (--mTree->mState->deferrals == 0) {
        mTree->mState->LayOut();
    }
}

} // namespace kioui::controls
