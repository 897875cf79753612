#pragma once

// What a node holds: its widget and what Qt has no place for. Included by sources of kioui only.

#include "Conversions.h"
#include "WidgetEvents.h"

#include <kioui/ui/Node.h>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace kioui::ui {

/// @throws kio_exception (kError_BadArgument) naming the class when there is no application object.
void RequireApplication(const char* inClassName);
/// The widget that nodes made now belong to until they are put somewhere; null outside of a modal window.
QWidget* DefaultParentWidget();
/// The node that a widget, or the nearest one around it, belongs to; null when there is none.
KIO_EXPORT UI_Node* NodeOf(const QWidget* inWidget);
/// The widget of the window that a node lies in; null when it lies in none.
QWidget* WindowWidgetOf(const UI_Node* inNode);

struct UI_Node::Impl {
    /// @param inWidget  owned, unless Qt deletes it before.
    explicit Impl(QWidget* inWidget);
    virtual ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Where children's widgets go; the widget itself unless a node says otherwise.
    virtual QWidget* Content() const { return widget; }
    void Adopt(const UI_NodePtr& inChild);
    virtual void LetGoOf(UI_Node& inChild);
    /// The child goes elsewhere: its widget is not touched.
    virtual void Unlist(UI_Node& inChild);
    /// What lies in the node, front to back.
    virtual std::vector<UI_NodePtr> Children() const { return children; }
    void TellSize();

    QPointer<QWidget> widget;
    const QWidget* const address; // for comparison only: stays when the widget dies
    UI_Node* node = nullptr;
    UI_Node* parent = nullptr;
    std::vector<UI_NodePtr> children;
    bool isHidden = false;          // by the host, wherever it lies
    bool chainsItsChildren = false; // the node chains what lies in it for Tab, behind its own widget
    std::function<void(UI_Node*, FocusChangeReason)> focusChanged;
    std::function<bool(UI_Node*, UI_MouseEvent&)> mouseEvent;
    std::unique_ptr<QObject> watcher;
};

/// A new widget in a new implementation, for the constructors of nodes that are no windows. Not shown before
/// it is put somewhere.
template <typename WidgetType, typename... Arguments>
std::unique_ptr<UI_Node::Impl> NewImpl(const char* inClassName, Arguments&&... inArguments)
{
    RequireApplication(inClassName);
    auto impl = std::make_unique<UI_Node::Impl>(new WidgetType(std::forward<Arguments>(inArguments)...));
    if (QWidget* parent = DefaultParentWidget()) {
        impl->widget->setParent(parent);
        impl->widget->hide(); // or it would be shown with its window
    }
    return impl;
}

/// The node's widget as the class it was made of; null once it died.
template <typename WidgetType>
WidgetType* WidgetOf(const UI_Node& inNode)
{
    return static_cast<WidgetType*>(inNode.GetImpl().widget.data());
}

} // namespace kioui::ui
