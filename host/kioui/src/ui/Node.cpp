#include "NodeImpl.h"
#include "PendingFocus.h"

#include <kioui/ui/Window.h>

#include <kiocore/config/Localizer.h>

#include <algorithm>

namespace kioui::ui {

UI_Node::UI_Node(std::unique_ptr<Impl> inImpl) : mImpl(std::move(inImpl))
{
    mImpl->node = this;
}

UI_Node::~UI_Node()
{
    mImpl->node = nullptr; // events on the way out would meet half a node
}

bool UI_Node::IsAlive() const
{
    return !mImpl->widget.isNull();
}

void UI_Node::SetNodeID(std::string_view inNodeID)
{
    if (QWidget* widget = mImpl->widget) {
        widget->setObjectName(QString::fromUtf8(inNodeID.data(), qsizetype(inNodeID.size())));
    }
}

std::string UI_Node::GetNodeID() const
{
    return mImpl->widget ? mImpl->widget->objectName().toStdString() : std::string();
}

void UI_Node::SetAccessibleName(const UTF16String& inName)
{
    if (QWidget* widget = mImpl->widget) {
        widget->setAccessibleName(ToQt(inName));
    }
}

UTF16String UI_Node::GetAccessibleName() const
{
    if (!mImpl->widget) {
        return {};
    }
    const UTF16String name = FromQt(mImpl->widget->accessibleName());
    return name.empty() ? GetText() : name;
}

UTF16String UI_Node::GetText() const
{
    return {};
}

void UI_Node::AddChild(const UI_NodePtr& inChild)
{
    if (inChild) {
        mImpl->Adopt(inChild);
    }
}

void UI_Node::RemoveFromParent()
{
    if (mImpl->parent != nullptr) {
        mImpl->parent->mImpl->LetGoOf(*this);
    }
}

UI_Node* UI_Node::GetParent() const
{
    return mImpl->parent;
}

std::vector<UI_NodePtr> UI_Node::GetChildren() const
{
    return mImpl->Children();
}

UI_Node* UI_Node::FindNode(std::string_view inNodeID)
{
    if (GetNodeID() == inNodeID) {
        return this;
    }
    for (const UI_NodePtr& child : GetChildren()) {
        if (UI_Node* found = child->FindNode(inNodeID)) {
            return found;
        }
    }
    return nullptr;
}

RectT<float> UI_Node::GetBounds() const
{
    return mImpl->widget ? FromQt(mImpl->widget->geometry()) : RectT<float>();
}

void UI_Node::SetBounds(const RectT<float>& inBounds)
{
    if (QWidget* widget = mImpl->widget) {
        widget->setGeometry(ToQt(inBounds));
    }
}

SizeT<float> UI_Node::GetPreferredSize() const
{
    if (!mImpl->widget) {
        return {};
    }
    mImpl->widget->ensurePolished();
    const QSize size = mImpl->widget->sizeHint().expandedTo(mImpl->widget->minimumSizeHint());
    return {float(std::max(0, size.width())), float(std::max(0, size.height()))};
}

PointT<float> UI_Node::ToWindow(PointT<float> inPoint) const
{
    if (!mImpl->widget) {
        return inPoint;
    }
    const QPointF point = mImpl->widget->mapTo(mImpl->widget->window(), QPointF(inPoint.x, inPoint.y));
    return {float(point.x()), float(point.y())};
}

bool UI_Node::IsVisible() const
{
    return mImpl->widget && mImpl->widget->isVisible();
}

void UI_Node::SetVisible(bool inVisible)
{
    if (auto* window = dynamic_cast<UI_OSWindow*>(this)) {
        window->UI_Show(inVisible);
        return;
    }
    mImpl->isHidden = !inVisible;
    if (mImpl->widget && mImpl->parent != nullptr) { // else once it is put somewhere
        mImpl->widget->setVisible(inVisible);
    }
}

bool UI_Node::IsEnabled() const
{
    return mImpl->widget && mImpl->widget->isEnabled();
}

void UI_Node::SetEnabled(bool inEnabled)
{
    if (QWidget* widget = mImpl->widget) {
        widget->setEnabled(inEnabled);
    }
}

bool UI_Node::IsKeyboardTarget() const
{
    return mImpl->widget && (mImpl->widget->focusPolicy() & Qt::TabFocus) != 0;
}

void UI_Node::SetKeyboardTarget(bool inTarget)
{
    if (QWidget* widget = mImpl->widget) {
        const int policy = widget->focusPolicy();
        widget->setFocusPolicy(Qt::FocusPolicy(inTarget ? policy | Qt::TabFocus : policy & ~Qt::TabFocus));
    }
}

bool UI_Node::HasKeyboardFocus() const
{
    return mImpl->widget && mImpl->widget->hasFocus();
}

void UI_Node::SetKeyboardFocus(FocusChangeReason inReason)
{
    if (mImpl->widget) {
        GiveFocus(*mImpl, ToQt(inReason));
    }
}

void UI_Node::SetFocusChangedFunction(std::function<void(UI_Node*, FocusChangeReason)> inFunction)
{
    mImpl->focusChanged = std::move(inFunction);
}

void UI_Node::SetMouseEventFunction(std::function<bool(UI_Node*, UI_MouseEvent&)> inFunction)
{
    mImpl->mouseEvent = std::move(inFunction);
}

void UI_Node::UI_SizeChanged(const RectT<float>&) {}

void ThrowInvalidTypeConversion()
{
    throw kiocore::kio_exception(
        kiocore::config::Localizer::GetText(
            "$$$/kiocore/utility/Error/InvalidTypeConversion=Invalid type conversion."),
        kiocore::kError_BadConversion);
}

} // namespace kioui::ui
