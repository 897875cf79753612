#pragma once

// Paints cells. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

#include <QAbstractItemDelegate>

namespace kioui::controls {

/// Ground and selection are the style's, the text is drawn by whoever fills the tree.
class CellDelegate final : public QAbstractItemDelegate {
public:
    explicit CellDelegate(UI_MultiColumnTree::State& inTree) : mTree(inTree) {}

    void paint(QPainter* inPainter, const QStyleOptionViewItem& inOption,
               const QModelIndex& inIndex) const override;
    QSize sizeHint(const QStyleOptionViewItem& inOption, const QModelIndex& inIndex) const override;

private:
    void DrawGround(QPainter& inPainter, const QStyleOptionViewItem& inOption,
                    const QModelIndex& inIndex) const;

    UI_MultiColumnTree::State& mTree;
};

} // namespace kioui::controls
