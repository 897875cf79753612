#pragma once

#include <kiocore/Export.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Window.h>

#include <functional>
#include <string_view>

namespace kioui::testing {

/// Does what a person does, through the window system's own way in: events go where focus, grabs and what
/// lies on top send them. Everything that follows from an event has happened when a function returns; one
/// that opens a modal dialog returns once that is over, so that what is done in it has to be put off before,
/// by RunWhenIdle. All throw kio_exception (kError_BadArgument) naming the window when it is not shown.
///
/// Threading: UI thread only.

/// Calls the function once, when the innermost event loop has nothing else to do: what was done and posted so
/// far is over, or is a modal dialog that waits. RunPending counts as a loop.
/// @param inDelayMs  waits that long before, for what other threads do.
KIO_EXPORT void RunWhenIdle(std::function<void()> inFunction, int inDelayMs = 0);

/// The middle of a node, in its window.
KIO_EXPORT PointT<float> MiddleOf(const ui::UI_Node& inNode);
/// The middle of a tree's cell, in the window; scrolls it into view first.
/// @throws kio_exception (kError_BadArgument) for a row or column that is not in the tree.
KIO_EXPORT PointT<float> MiddleOfCell(controls::UI_MultiColumnTree& inTree,
                                      const controls::UI_MultiColumnTreeRow& inRow, std::uint32_t inPosition);
/// The middle of a column's title, in the window.
/// @throws kio_exception (kError_BadArgument) naming a column that there is not.
KIO_EXPORT PointT<float> MiddleOfTitle(const controls::UI_MultiColumnTree& inTree, std::uint32_t inColumnID);

/// Places are in the window. The left button; it is pressed and released where the pointer was moved first.
KIO_EXPORT void MoveMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void PressMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void ReleaseMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void Click(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
KIO_EXPORT void DoubleClick(ui::UI_OSWindow& inWindow, PointT<float> inPlace);
/// @param inNotches  of the wheel; positive scrolls towards the beginning.
KIO_EXPORT void TurnWheel(ui::UI_OSWindow& inWindow, PointT<float> inPlace, int inNotches);

/// A key by its name, with modifiers before it: "Tab", "Shift+Tab", "Space", "Return", "Escape", "Down",
/// "Ctrl+A", "PgDown", "x". A window that is not the active one is made so first.
/// @throws kio_exception (kError_BadArgument) naming a key that there is not.
KIO_EXPORT void PressKey(ui::UI_OSWindow& inWindow, std::string_view inKey);
/// Each character as by a key of its own, until the window has gone. A line feed is Return.
KIO_EXPORT void TypeText(ui::UI_OSWindow& inWindow, kiocore::utility::UTF16View inText);
/// By the window's own means: asks it to close.
KIO_EXPORT void CloseWindow(ui::UI_OSWindow& inWindow);
/// Whether there is such a key, as PressKey reads it.
KIO_EXPORT bool IsKeyName(std::string_view inKey);

} // namespace kioui::testing
