#pragma once

// The widget of the titles. Included by sources of kioui only.

#include <QHeaderView>

#include <functional>
#include <optional>

namespace kioui::controls {

/// A header whose last divider can be taken from its right, too, so that a last column of no width can be
/// dragged wider again. Qt takes a divider left of a column of some width for the column before it already.
class HeaderView final : public QHeaderView {
public:
    explicit HeaderView(QWidget* inParent);
    /// Once it belongs to the tree, which has ideas of its own about headers.
    void TakeCharge();

    /// Called when the divider right of a column was double-clicked.
    void SetBestFitFunction(std::function<void(int inColumn)> inFunction)
    {
        mBestFit = std::move(inFunction);
    }

protected:
    bool viewportEvent(QEvent* inEvent) override;
    void mousePressEvent(QMouseEvent* inEvent) override;
    void mouseMoveEvent(QMouseEvent* inEvent) override;
    void mouseReleaseEvent(QMouseEvent* inEvent) override;
    void mouseDoubleClickEvent(QMouseEvent* inEvent) override;

private:
    struct Drag {
        int column = -1;
        int widthAtPress = 0;
        int pressedAt = 0;
    };
    int LastColumn() const;
    bool IsBehindLastDivider(const QPoint& inPlace) const;

    std::function<void(int)> mBestFit;
    std::optional<Drag> mDrag; // of the last divider
};

} // namespace kioui::controls
