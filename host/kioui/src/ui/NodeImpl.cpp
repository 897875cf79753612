#include "NodeImpl.h"

#include "PendingFocus.h"
#include "Watcher.h"

#include <kioui/ui/Window.h>

#include <kiocore/config/Errors.h>

#include <QApplication>

#include <algorithm>
#include <string>
#include <unordered_map>

namespace kioui::ui {
namespace {

/// Which node a widget belongs to. A widget that died leaves its entry to whoever gets its address, or to its
/// node's end.
std::unordered_map<const QWidget*, UI_Node::Impl*>& Owners()
{
    static std::unordered_map<const QWidget*, UI_Node::Impl*> owners;
    return owners;
}

void RequireToFit(const UI_Node* inParent, const UI_Node& inChild)
{
    if (dynamic_cast<const UI_OSWindow*>(&inChild) != nullptr) {
        throw kiocore::kio_exception("a window (" + inChild.GetNodeID() + ") cannot be put into a node",
                                     kiocore::kError_BadArgument);
    }
    for (const UI_Node* at = inParent; at != nullptr; at = at->GetParent()) {
        if (at == &inChild) {
            throw kiocore::kio_exception("the node " + inChild.GetNodeID() +
                                             " cannot be put into itself or into what lies in it",
                                         kiocore::kError_BadArgument);
        }
    }
}

void PutNowhere(QWidget* inWidget)
{
    if (inWidget != nullptr) {
        inWidget->hide();
        inWidget->setParent(nullptr);
    }
}

} // namespace

void RequireApplication(const char* inClassName)
{
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        throw kiocore::kio_exception(std::string(inClassName) +
                                         ": there is no application object yet; make a "
                                         "kioui::ui::ScApplication before the first node",
                                     kiocore::kError_BadArgument);
    }
}

UI_Node* NodeOf(const QWidget* inWidget)
{
    for (; inWidget != nullptr; inWidget = inWidget->parentWidget()) {
        const auto found = Owners().find(inWidget);
        if (found != Owners().end() && found->second->widget == inWidget) {
            return found->second->node;
        }
    }
    return nullptr;
}

QWidget* WindowWidgetOf(const UI_Node* inNode)
{
    QWidget* const widget = inNode != nullptr ? inNode->GetImpl().widget.data() : nullptr;
    QWidget* const window = widget != nullptr ? widget->window() : nullptr;
    // A node that lies nowhere is a window for Qt.
    return dynamic_cast<UI_OSWindow*>(NodeOf(window)) != nullptr ? window : nullptr;
}

UI_Node::Impl::Impl(QWidget* inWidget)
    : widget(inWidget), address(inWidget), watcher(std::make_unique<Watcher>(*this))
{
    Owners()[inWidget] = this;
    inWidget->installEventFilter(watcher.get());
}

UI_Node::Impl::~Impl()
{
    watcher.reset();
    ForgetNotedFocus(*this);
    for (const UI_NodePtr& child : children) {
        child->mImpl->parent = nullptr;
        if (child->use_count() > 1) { // somebody else wants it whole
            PutNowhere(child->mImpl->widget);
        }
    }
    children.clear();
    const auto owned = Owners().find(address);
    if (owned != Owners().end() && owned->second == this) {
        Owners().erase(owned);
    }
    if (widget) {
        DeleteWidget(widget);
    }
}

void UI_Node::Impl::Adopt(const UI_NodePtr& inChild)
{
    RequireToFit(node, *inChild);
    QWidget* const content = Content();
    if (content == nullptr) {
        return;
    }
    Impl& impl = *inChild->mImpl;
    if (impl.parent != nullptr) {
        impl.parent->mImpl->Unlist(*inChild);
    }
    children.push_back(inChild);
    impl.parent = node;
    if (impl.widget) {
        if (impl.widget->parentWidget() != content) {
            impl.widget->setParent(content);
        }
        impl.widget->setVisible(!impl.isHidden);
    }
}

void UI_Node::Impl::Unlist(UI_Node& inChild)
{
    std::erase(children, &inChild);
}

void UI_Node::Impl::LetGoOf(UI_Node& inChild)
{
    const auto found = std::find(children.begin(), children.end(), &inChild);
    if (found == children.end()) {
        return;
    }
    const UI_NodePtr keep = *found;
    children.erase(found);
    keep->mImpl->parent = nullptr;
    PutNowhere(keep->mImpl->widget);
}

void UI_Node::Impl::TellSize()
{
    if (node != nullptr) {
        CallHost("UI_SizeChanged of a node", [this] { node->UI_SizeChanged(FromQt(widget->geometry())); });
    }
}

} // namespace kioui::ui
