#pragma once

// Shows a node what happens to its widget. Included by sources of kioui only.

#include "NodeImpl.h"

class QFocusEvent;
class QMouseEvent;

namespace kioui::ui {

/// Filters the events of one node's widget.
///
/// Threading: UI thread only.
class Watcher final : public QObject {
public:
    explicit Watcher(UI_Node::Impl& inImpl) : mImpl(inImpl) {}
    bool eventFilter(QObject* inWidget, QEvent* inEvent) override;

private:
    void TellFocus(const QFocusEvent& inEvent);
    bool TellMouse(const QMouseEvent& inEvent);

    UI_Node::Impl& mImpl;
};

} // namespace kioui::ui
