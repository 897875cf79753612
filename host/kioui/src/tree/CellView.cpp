#include "CellView.h"

#include "TreeState.h"
#include "TreeView.h"
#include "ui/NodeImpl.h"

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/HotText.h>

#include <QWidget>

#include <algorithm>

namespace kioui::controls {

CellViewPtr CellOf(const UI_MultiColumnTreeRow& inRow, int inColumn)
{
    const auto& cells = inRow.GetKept().cells;
    const bool isOne = cells && inColumn >= 0 && std::size_t(inColumn) < cells->byColumn.size();
    return isOne ? cells->byColumn[std::size_t(inColumn)] : CellViewPtr();
}

CellView::~CellView()
{
    LetGo();
}

UI_MultiColumnTree::State& CellView::Tree() const
{
    return mRow.GetTree()->GetState();
}

QWidget* CellView::Widget() const
{
    return mNode ? mNode->GetImpl().widget.data() : nullptr;
}

void CellView::SetNode(const ui::UI_NodePtr& inNode)
{
    if (inNode == mNode || mRow.GetTree() == nullptr) {
        return;
    }
    LetGo();
    if (!inNode) {
        return;
    }
    inNode->RemoveFromParent();
    mNode = inNode;
    mNode->GetImpl().parent = mRow.GetTree();
    UI_MultiColumnTree::State& tree = Tree();
    tree.cellOfNode[mNode.get()] = this;
    if (QWidget* widget = Widget()) {
        // The cell sees the mouse instead, all of it: also what happens beside a box.
        const bool isHot = dynamic_cast<UI_HotTextButton*>(mNode.get()) != nullptr;
        widget->setAttribute(Qt::WA_TransparentForMouseEvents, !isHot);
        widget->installEventFilter(&tree.cellKeys);
    }
    if (mRow.GetKept().isInView) {
        tree.rowsInView.MarkDirty();
        Place();
    } else {
        Park();
    }
}

ui::UI_NodePtr CellView::GiveUpNode()
{
    if (!mNode) {
        return {};
    }
    ShowPressed(false);
    ui::UI_NodePtr node = std::exchange(mNode, nullptr);
    ui::UI_Node::Impl& impl = node->GetImpl();
    UI_MultiColumnTree::State& tree = static_cast<UI_MultiColumnTree*>(impl.parent)->GetState();
    impl.parent = nullptr;
    tree.cellOfNode.erase(node.get());
    if (QWidget* widget = impl.widget) {
        widget->removeEventFilter(&tree.cellKeys);
        widget->setAttribute(Qt::WA_TransparentForMouseEvents, false);
        if (widget->hasFocus() && tree.view) {
            tree.view->setFocus(Qt::OtherFocusReason); // or nobody had it
        }
    }
    return node;
}

void CellView::LetGo()
{
    const ui::UI_NodePtr node = GiveUpNode();
    if (QWidget* widget = node ? node->GetImpl().widget.data() : nullptr;
        widget != nullptr && node->use_count() > 1) { // somebody else wants it whole
        widget->hide();
        widget->setParent(nullptr);
    }
}

void CellView::CentreNode(bool inCentre)
{
    mIsCentred = inCentre;
    if (mNode && mRow.GetKept().isInView) {
        Place();
    }
}

RectT<float> CellView::GetBounds() const
{
    if (mRow.GetTree() == nullptr) {
        return {};
    }
    const QRect cell = Tree().CellRect(mRow, mColumn);
    return {0, 0, float(cell.width()), float(cell.height())};
}

bool CellView::Offer(ui::UI_MouseEvent& ioEvent)
{
    if (!mMouseEvent) {
        return false;
    }
    const auto function = mMouseEvent; // it may set another
    bool isDealtWith = false;
    ui::CallHost("The mouse function of a cell",
                 [&] { isDealtWith = function(this, ioEvent) || ioEvent.handled; });
    return isDealtWith;
}

void CellView::ShowPressed(bool inPressed)
{
    if (auto* box = dynamic_cast<UI_Checkbox*>(mNode.get())) {
        box->ShowPressed(inPressed && box->IsEnabled());
    }
}

QRect CellView::NodePlace() const
{
    QRect cell = Tree().CellRect(mRow, mColumn);
    cell.setWidth(std::max(0, cell.width() - kGridLineWidth));
    if (!mIsCentred) {
        return cell;
    }
    const SizeT<float> preferred = mNode->GetPreferredSize();
    const QSize size = QSize(int(preferred.width), int(preferred.height)).boundedTo(cell.size());
    return {cell.x() + (cell.width() - size.width()) / 2, cell.y() + (cell.height() - size.height()) / 2,
            size.width(), size.height()};
}

void CellView::Place()
{
    QWidget* widget = Widget();
    TreeView* view = mRow.GetTree() != nullptr ? Tree().view.data() : nullptr;
    if (widget == nullptr || view == nullptr) {
        return;
    }
    if (widget->parentWidget() != view->viewport()) {
        widget->setParent(view->viewport());
    }
    const QRect place = NodePlace();
    widget->setGeometry(place);
    widget->setVisible(!place.isEmpty() && !mNode->GetImpl().isHidden);
}

void CellView::Park()
{
    QWidget* widget = Widget();
    TreeView* view = mRow.GetTree() != nullptr ? Tree().view.data() : nullptr;
    if (widget == nullptr || view == nullptr || widget->parentWidget() == view->ParkingPlace()) {
        return;
    }
    const bool hadFocus = widget->hasFocus();
    if (hadFocus) {
        view->setFocus(Qt::OtherFocusReason);
    }
    widget->hide();
    widget->setParent(view->ParkingPlace());
    if (hadFocus) {
        widget->setFocus(Qt::OtherFocusReason); // Qt gives it once it is shown, unless somebody else gets it
    }
}

} // namespace kioui::controls
