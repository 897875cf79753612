#pragma once

// What a node holds: its widget and what Qt has no place for. Included by sources of kioui only.

#include <kioui/ui/Node.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <string_view>

namespace kioui::ui {

/// QString and UTF16String hold the same units.
inline QString ToQt(kiocore::utility::UTF16View inText)
{
    return QString(reinterpret_cast<const QChar*>(inText.data()), qsizetype(inText.size()));
}
inline UTF16String FromQt(const QString& inText)
{
    return UTF16String(reinterpret_cast<const char16_t*>(inText.utf16()), std::size_t(inText.size()));
}

RectT<float> FromQt(const QRect& inRect);
/// Snapped edge by edge, so that what touches goes on touching.
QRect ToQt(const RectT<float>& inRect);
Qt::FocusReason ToQt(FocusChangeReason inReason);
FocusChangeReason FromQt(Qt::FocusReason inReason);

/// @throws kio_exception (kError_BadArgument) naming the class when there is no application object.
void RequireApplication(const char* inClassName);
/// The widget that nodes made now belong to until they are put somewhere; null outside of a modal window.
QWidget* DefaultParentWidget();

/// Around calls into the host from a widget's own event: what is deleted meanwhile goes afterwards.
class ScWidgetEvent {
public:
    ScWidgetEvent();
    ~ScWidgetEvent();
    ScWidgetEvent(const ScWidgetEvent&) = delete;
    ScWidgetEvent& operator=(const ScWidgetEvent&) = delete;
};
/// Deletes a widget, at once or, during a widget's event, once all of them are over.
void DeleteWidget(QWidget* inWidget);

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
    /// What lies in the node, front to back.
    virtual std::vector<UI_NodePtr> Children() const { return children; }
    void TellSize();

    QPointer<QWidget> widget;
    UI_Node* node = nullptr;
    UI_Node* parent = nullptr;
    std::vector<UI_NodePtr> children;
    bool isHidden = false; // by the host, wherever it lies
    std::function<void(UI_Node*, FocusChangeReason)> focusChanged;
    std::function<bool(UI_Node*, UI_MouseEvent&)> mouseEvent;
    std::unique_ptr<QObject> watcher;
};

/// A new widget in a new implementation, for the constructors of nodes.
template <typename WidgetType, typename... Arguments>
std::unique_ptr<UI_Node::Impl> NewImpl(const char* inClassName, Arguments&&... inArguments)
{
    RequireApplication(inClassName);
    auto* widget = new WidgetType(std::forward<Arguments>(inArguments)...);
    if (widget->parentWidget() == nullptr && !widget->isWindow()) {
        widget->setParent(DefaultParentWidget());
    }
    return std::make_unique<UI_Node::Impl>(widget);
}

/// The node's widget as the class it was made of; null once it died.
template <typename WidgetType>
WidgetType* WidgetOf(const UI_Node& inNode)
{
    return static_cast<WidgetType*>(inNode.GetImpl().widget.data());
}

} // namespace kioui::ui
