#pragma once

// What windows and dialogs ask of their node. Included by sources of kioui only.

#include "NodeImpl.h"
#include "TabOrder.h"

#include <QCloseEvent>
#include <QEvent>

#include <functional>

namespace kioui::ui {

/// The node's side of a window's widget.
class WindowHooks {
public:
    virtual ~WindowHooks();
    /// Gives the focus to the first node of the window that takes it, if nobody has it.
    virtual void FocusFirst() = 0;

    std::function<void()> closeRequested; ///< empty once the node is on its way out
    std::function<void()> screenMayHaveChanged;

protected:
    void RequestClose(const QWidget* inWidget);
};

/// The hooks of a window's widget, null for null.
WindowHooks* HooksOf(QWidget* inWindow);

/// A widget of Qt's as a window of ours.
template <typename Base>
class WindowWidget : public Base, public WindowHooks {
public:
    using Base::Base;

    void FocusFirst() override
    {
        if (this->focusWidget() == nullptr) {
            focusNextPrevChild(true);
        }
    }

protected:
    bool focusNextPrevChild(bool inNext) override
    {
        // Where Tab goes is found out when it is pressed, so that nodes come and go without a thought of it.
        if (UI_Node* node = NodeOf(this)) {
            OrderTabs(*node);
        }
        return Base::focusNextPrevChild(inNext);
    }

    void closeEvent(QCloseEvent* inEvent) override
    {
        inEvent->ignore(); // the node hides it, or does not
        RequestClose(this);
    }

    bool event(QEvent* inEvent) override
    {
        const bool result = Base::event(inEvent);
        if (inEvent->type() == QEvent::ScreenChangeInternal && screenMayHaveChanged) {
            const ScWidgetEvent scope(this);
            CallHost("UI_ScaleChanged of a window", std::function<void()>(screenMayHaveChanged));
        }
        return result;
    }
};

} // namespace kioui::ui
