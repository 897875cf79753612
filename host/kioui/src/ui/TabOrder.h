#pragma once

// The way that Tab takes through a window. Included by sources of kioui only.

#include <kioui/ui/Node.h>

namespace kioui::ui {

/// Chains the widgets of a window by the tree of its nodes: a node before its children, children in the order
/// they were added. Widgets that belong to no node of their own come with the node around them, in the order
/// in which they are chained.
void OrderTabs(UI_Node& inWindow);

} // namespace kioui::ui
