#include "CellDelegate.h"

#include "TreeState.h"
#include "TreeView.h"
#include "drawbot/PainterDrawbot.h"
#include "ui/NodeImpl.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>

namespace kioui::controls {

void CellDelegate::DrawGround(QPainter& inPainter, const QStyleOptionViewItem& inOption,
                              const QModelIndex& inIndex) const
{
    QStyleOptionViewItem option(inOption);
    option.index = inIndex;
    const QStyle& style = *option.widget->style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &option, &inPainter, option.widget);
    const int colour = style.styleHint(QStyle::SH_Table_GridLineColor, &option, option.widget);
    inPainter.fillRect(QRect(option.rect.right(), option.rect.top(), kGridLineWidth, option.rect.height()),
                       QColor::fromRgb(static_cast<QRgb>(colour)));
}

void CellDelegate::paint(QPainter* inPainter, const QStyleOptionViewItem& inOption,
                         const QModelIndex& inIndex) const
{
    if (inOption.rect.isEmpty()) {
        return;
    }
    DrawGround(*inPainter, inOption, inIndex);
    UI_MultiColumnTreeRow* row = mTree.model.RowAt(inIndex.row());
    if (!mTree.drawCell || row == nullptr || row->GetTree() == nullptr) {
        return;
    }
    drawbot::PainterDrawbot drawbot(*inPainter);
    ui::CallHost("The draw cell function of a tree", [&] {
        mTree.drawCell(&drawbot, row, std::uint32_t(mTree.PositionOf(inIndex.column())),
                       ui::FromQt(inOption.rect));
    });
}

QSize CellDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {0, mTree.view != nullptr ? mTree.view->RowHeight() : 0};
}

} // namespace kioui::controls
