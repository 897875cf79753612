#pragma once

// The focus that a node is given before it can have it. Included by sources of kioui only.

#include "NodeImpl.h"

namespace kioui::ui {

/// Gives the node the focus, or notes that it is to have it once it is enabled and can be seen. What was
/// noted for other nodes of its window is forgotten.
void GiveFocus(UI_Node::Impl& inNode, Qt::FocusReason inReason);
/// The node may be able to have it now.
void GiveNotedFocus(UI_Node::Impl& inNode);
/// A person has moved the focus in this node's window, so that nobody else gets it later.
void ForgetNotedFocusAround(const UI_Node::Impl& inNode);
/// The node dies.
void ForgetNotedFocus(const UI_Node::Impl& inNode);

} // namespace kioui::ui
