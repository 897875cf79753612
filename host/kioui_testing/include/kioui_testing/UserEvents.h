#pragma once

#include <kiocore/Export.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Window.h>

#include <string_view>

namespace kioui::testing {

/// Does what a person does, through the window system's own way in: events go where focus, grabs and what
/// lies on top send them. Everything that follows from an event has happened when a function returns.
///
/// Threading: UI thread only.

/// The middle of a node, in its window.
KIO_EXPORT PointT<float> MiddleOf(const ui::UI_Node& inNode);
/// The middle of a tree's cell, in the window; scrolls it into view first.
KIO_EXPORT PointT<float> MiddleOfCell(controls::UI_MultiColumnTree& inTree,
                                      const controls::UI_MultiColumnTreeRow& inRow, std::uint32_t inPosition);
/// The middle of a column's title, in the window.
KIO_EXPORT PointT<float> MiddleOfTitle(const controls::UI_MultiColumnTree& inTree, std::uint32_t inColumnID);

/// Places are in the window.
KIO_EXPORT void MoveMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void PressMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void ReleaseMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void Click(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void DoubleClick(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
/// @param inNotches  of the wheel; positive scrolls towards the beginning.
KIO_EXPORT void TurnWheel(ui::UI_OSWindow& inWindow, PointT<float> inPlace, int inNotches);

/// A key by its name, with modifiers before it: "Tab", "Shift+Tab", "Space", "Return", "Escape", "Down",
/// "Ctrl+A", "PgDown", "x".
/// @throws kio_exception (kError_BadArgument) naming a key that there is not.
KIO_EXPORT void PressKey(ui::UI_OSWindow& inWindow, std::string_view inKey);
KIO_EXPORT void TypeText(ui::UI_OSWindow& inWindow, kiocore::utility::UTF16View inText);

} // namespace kioui::testing
