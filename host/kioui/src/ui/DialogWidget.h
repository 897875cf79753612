#pragma once

// The widget of a dialog. Included by sources of kioui only.

#include "WindowWidget.h"

#include <QDialog>

namespace kioui::ui {

/// What Escape and the window's own means do is the node's to say.
///
/// Threading: UI thread only.
class DialogWidget final : public WindowWidget<QDialog> {
public:
    using WindowWidget<QDialog>::WindowWidget;

    void reject() override { RequestClose(this); }

    bool returnInTextCloses = true;

protected:
    void keyPressEvent(QKeyEvent* inEvent) override;
};

} // namespace kioui::ui
