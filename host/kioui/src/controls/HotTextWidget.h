#pragma once

// A link as a widget. Included by sources of kioui only.

#include <QAbstractButton>

namespace kioui::controls {

/// Qt's links are parts of rich texts: they have no room to be shortened in, no way to be clicked by the
/// space bar or a screen reader, and take what they show for HTML. A button has all that; only its face, one
/// line of text, is a link's.
///
/// Threading: UI thread only.
class HotTextWidget final : public QAbstractButton {
public:
    explicit HotTextWidget(const QString& inButtonText);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// What is shown of the text.
    QString ShownText() const;

protected:
    void paintEvent(QPaintEvent* inEvent) override;
    void keyPressEvent(QKeyEvent* inEvent) override;
    bool event(QEvent* inEvent) override;
};

} // namespace kioui::controls
