#include "NodeImpl.h"

#include <kiocore/config/Errors.h>

#include <QApplication>
#include <QFocusEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <string>

namespace kioui::ui {
namespace {

int sEventDepth = 0;
std::vector<QPointer<QWidget>>& WidgetsToDelete()
{
    static std::vector<QPointer<QWidget>> widgets;
    return widgets;
}

MouseButton FromQt(Qt::MouseButton inButton)
{
    switch (inButton) {
    case Qt::LeftButton:
        return MouseButton::kLeft;
    case Qt::RightButton:
        return MouseButton::kRight;
    case Qt::MiddleButton:
        return MouseButton::kMiddle;
    default:
        return MouseButton::kNone;
    }
}

/// Shows a node what happens to its widget.
class Watcher final : public QObject {
public:
    explicit Watcher(UI_Node::Impl& inImpl) : mImpl(inImpl) {}

    bool eventFilter(QObject* inWidget, QEvent* inEvent) override
    {
        if (inWidget != mImpl.widget || mImpl.node == nullptr) {
            return false;
        }
        switch (inEvent->type()) {
        case QEvent::FocusIn:
        case QEvent::FocusOut:
            TellFocus(static_cast<QFocusEvent&>(*inEvent));
            return false;
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
            return TellMouse(static_cast<QMouseEvent&>(*inEvent));
        case QEvent::Resize:
            mImpl.TellSize();
            return false;
        default:
            return false;
        }
    }

private:
    void TellFocus(const QFocusEvent& inEvent)
    {
        if (mImpl.focusChanged) {
            const ScWidgetEvent event;
            const UI_NodePtr keep = mImpl.node;
            const auto function = mImpl.focusChanged; // may be replaced by itself
            function(mImpl.node, ui::FromQt(inEvent.reason()));
        }
    }

    bool TellMouse(const QMouseEvent& inEvent)
    {
        if (!mImpl.mouseEvent) {
            return false;
        }
        UI_MouseEvent event;
        event.type = inEvent.type() == QEvent::MouseButtonPress      ? MouseEventType::kPress
                     : inEvent.type() == QEvent::MouseButtonRelease  ? MouseEventType::kRelease
                     : inEvent.type() == QEvent::MouseButtonDblClick ? MouseEventType::kDoublePress
                                                                     : MouseEventType::kMove;
        event.button = FromQt(inEvent.button());
        event.place = {float(inEvent.position().x()), float(inEvent.position().y())};
        const ScWidgetEvent scope;
        const UI_NodePtr keep = mImpl.node;
        const auto function = mImpl.mouseEvent;
        return function(mImpl.node, event);
    }

    UI_Node::Impl& mImpl;
};

} // namespace

RectT<float> FromQt(const QRect& inRect)
{
    return {float(inRect.x()), float(inRect.y()), float(inRect.x() + inRect.width()),
            float(inRect.y() + inRect.height())};
}

QRect ToQt(const RectT<float>& inRect)
{
    const int left = int(std::lround(inRect.left));
    const int top = int(std::lround(inRect.top));
    return {left, top, std::max(0, int(std::lround(inRect.right)) - left),
            std::max(0, int(std::lround(inRect.bottom)) - top)};
}

Qt::FocusReason ToQt(FocusChangeReason inReason)
{
    switch (inReason) {
    case FocusChangeReason::kKeyboard:
        return Qt::TabFocusReason;
    case FocusChangeReason::kMouse:
        return Qt::MouseFocusReason;
    case FocusChangeReason::kWindow:
        return Qt::ActiveWindowFocusReason;
    case FocusChangeReason::kProgram:
        return Qt::OtherFocusReason;
    }
    return Qt::OtherFocusReason;
}

FocusChangeReason FromQt(Qt::FocusReason inReason)
{
    switch (inReason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
        return FocusChangeReason::kKeyboard;
    case Qt::MouseFocusReason:
        return FocusChangeReason::kMouse;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        return FocusChangeReason::kWindow;
    default:
        return FocusChangeReason::kProgram;
    }
}

void RequireApplication(const char* inClassName)
{
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        throw kiocore::kio_exception(std::string(inClassName) +
                                         ": there is no application object yet; make a "
                                         "kioui::ui::ScApplication before the first node",
                                     kiocore::kError_BadArgument);
    }
}

ScWidgetEvent::ScWidgetEvent()
{
    ++sEventDepth;
}

ScWidgetEvent::~ScWidgetEvent()
{
    if (--sEventDepth == 0) {
        // Not at once: Qt is still in the widget's event. Its loop deletes them when it comes by.
        for (const QPointer<QWidget>& widget : std::exchange(WidgetsToDelete(), {})) {
            if (widget) {
                widget->deleteLater();
            }
        }
    }
}

void DeleteWidget(QWidget* inWidget)
{
    if (sEventDepth == 0) {
        delete inWidget;
        return;
    }
    inWidget->hide();
    inWidget->setParent(nullptr); // or it would die with a parent that goes earlier
    WidgetsToDelete().emplace_back(inWidget);
}

UI_Node::Impl::Impl(QWidget* inWidget) : widget(inWidget), watcher(std::make_unique<Watcher>(*this))
{
    inWidget->installEventFilter(watcher.get());
}

UI_Node::Impl::~Impl()
{
    watcher.reset();
    for (const UI_NodePtr& child : children) {
        Impl& impl = *child->mImpl;
        impl.parent = nullptr;
        if (child->use_count() > 1 && impl.widget) { // somebody else wants it whole
            impl.widget->hide();
            impl.widget->setParent(nullptr);
        }
    }
    children.clear();
    if (widget) {
        DeleteWidget(widget);
    }
}

void UI_Node::Impl::Adopt(const UI_NodePtr& inChild)
{
    inChild->RemoveFromParent();
    children.push_back(inChild);
    Impl& impl = *inChild->mImpl;
    impl.parent = node;
    QWidget* const content = Content();
    if (content != nullptr && impl.widget) {
        impl.widget->setParent(content);
        impl.widget->setVisible(!impl.isHidden);
    }
}

void UI_Node::Impl::LetGoOf(UI_Node& inChild)
{
    const auto found = std::find(children.begin(), children.end(), &inChild);
    if (found == children.end()) {
        return;
    }
    const UI_NodePtr keep = *found;
    children.erase(found);
    Impl& impl = *inChild.mImpl;
    impl.parent = nullptr;
    if (impl.widget) {
        impl.widget->hide();
        impl.widget->setParent(nullptr);
    }
}

void UI_Node::Impl::TellSize()
{
    if (node != nullptr) {
        node->UI_SizeChanged(FromQt(widget->geometry()));
    }
}

} // namespace kioui::ui
