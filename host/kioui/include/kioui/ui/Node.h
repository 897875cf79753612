#pragma once

#include <kiocore/Export.h>
#include <kiocore/config/Errors.h>
#include <kiocore/utility/UTF16String.h>
#include <kioui/Geometry.h>
#include <kioui/ui/Events.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kioui::ui {

using kiocore::UTF16String;

class UI_Node;
using UI_NodePtr = boost::intrusive_ptr<UI_Node>;

/// One element of a user interface: holds a native widget and reads its state from it. A parent shares its
/// children; a child knows its parent without sharing it. When the widget has died before its node, all
/// operations are harmless: questions answer empty, false or 0, orders do nothing.
///
/// The host's functions and overrides are called unlocked and may change, remove and let go of everything.
/// What they throw when the window system's events call them is reported as of posted work
/// (kiocore::threads::ReportException).
///
/// Threading: UI thread only.
class KIO_EXPORT UI_Node : public boost::intrusive_ref_counter<UI_Node> {
public:
    virtual ~UI_Node();
    UI_Node(const UI_Node&) = delete;
    UI_Node& operator=(const UI_Node&) = delete;

    /// The name of the class, "UI_Checkbox".
    virtual const char* GetClassName() const = 0;
    /// False once the widget has died.
    bool IsAlive() const;

    /// What tests and tools find the node by; stable, never translated.
    void SetNodeID(std::string_view inNodeID);
    std::string GetNodeID() const;
    /// What is read aloud for the node where that is not its text.
    void SetAccessibleName(const UTF16String& inName);
    UTF16String GetAccessibleName() const;
    /// The text that the node shows; empty where it shows none.
    virtual UTF16String GetText() const;

    /// Puts a node into this one, behind the children there are (which is the order of Tab). A node that lies
    /// elsewhere is taken from there.
    /// @throws kio_exception (kError_BadArgument) for windows, and for what this node lies in.
    void AddChild(const UI_NodePtr& inChild);
    /// Takes the node out of its parent, which lets go of it.
    void RemoveFromParent();
    UI_Node* GetParent() const;
    std::vector<UI_NodePtr> GetChildren() const;
    /// This node or the first below it with that ID; null when there is none.
    UI_Node* FindNode(std::string_view inNodeID);

    /// In the parent's coordinates; a window's are the screen's. Snapped to whole units.
    RectT<float> GetBounds() const;
    void SetBounds(const RectT<float>& inBounds);
    /// What the content asks for, in the theme's own terms.
    SizeT<float> GetPreferredSize() const;
    /// From this node's coordinates to those of the window it lies in.
    PointT<float> ToWindow(PointT<float> inPoint) const;

    /// Whether it can be seen: itself, all around it, and the window shown.
    bool IsVisible() const;
    /// Nodes are visible until told otherwise; a node that lies nowhere is seen, or not, once it is put
    /// somewhere. Windows start hidden: this is their UI_Show.
    void SetVisible(bool inVisible);
    bool IsEnabled() const;
    void SetEnabled(bool inEnabled);

    /// Whether Tab comes by. Nodes start as it is usual for their kind.
    bool IsKeyboardTarget() const;
    void SetKeyboardTarget(bool inTarget);
    bool HasKeyboardFocus() const;
    /// Nodes that are hidden, disabled or of a hidden window get it as soon as they can have it, unless it
    /// was given to another node of the window or a person moved it meanwhile.
    void SetKeyboardFocus(FocusChangeReason inReason);
    /// Called after the focus came or went.
    void SetFocusChangedFunction(std::function<void(UI_Node*, FocusChangeReason)> inFunction);
    /// Sees mouse events before the node does. @return true when the event is dealt with.
    void SetMouseEventFunction(std::function<bool(UI_Node*, UI_MouseEvent&)> inFunction);

    /// For the sources of kioui: the widget and what belongs to it.
    struct Impl;
    Impl& GetImpl() const { return *mImpl; }

protected:
    explicit UI_Node(std::unique_ptr<Impl> inImpl);

    /// The widget has another size now.
    virtual void UI_SizeChanged(const RectT<float>& inBounds);

private:
    friend struct Impl;
    std::unique_ptr<Impl> mImpl;
};

/// The node as another class, for where only that class makes sense.
/// @throws kio_exception (kError_BadConversion) "Invalid type conversion." when it is none, or null.
template <typename T>
T& NodeCast(UI_Node* inNode);

KIO_EXPORT void ThrowInvalidTypeConversion();

template <typename T>
T& NodeCast(UI_Node* inNode)
{
    T* cast = dynamic_cast<T*>(inNode);
    if (cast == nullptr) {
        ThrowInvalidTypeConversion();
    }
    return *cast;
}

} // namespace kioui::ui

namespace kioui {
using ui::FocusChangeReason;
using ui::UI_ControlChangedMessage;
using ui::UI_Node;
using ui::UI_NodePtr;
} // namespace kioui
