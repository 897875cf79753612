#pragma once

#include <kiocore/Export.h>
#include <kioui/ui/Window.h>

#include <string>
#include <vector>

namespace kioui::testing {

/// A node and all below it as JSON, for people and for tests to compare: an object with "id" (the node ID),
/// "class", "text", "name" (what is read aloud), "bounds" ([left, top, width, height] in the window), "state"
/// (an array of what StatesOf says) and "children". A progress bar also has "done" and "total"; a
/// multi-column tree "columns" (each "id", "title", "width", "sort": "", "ascending" or "descending"),
/// "rowCount" and "rows": those in view, each with "number" (from 1, in the order shown), "state" ("selected"
/// or nothing), "cells" (texts) and "nodes" (what lies in its cells, which is not among "children"). Two
/// spaces a level, members in this order.
///
/// Threading: UI thread only.
KIO_EXPORT std::string DescribeNodes(ui::UI_Node& inNode);

/// What holds of "visible", "enabled", "focused", "keyboardTarget", "checked", "default" (a button that
/// Return clicks) and "unknown" (a value that is not known, progress of which the end is not), in this order.
KIO_EXPORT std::vector<const char*> StatesOf(const ui::UI_Node& inNode);

/// Writes what a shown window looks like, without its frame, as a PNG file in device pixels.
/// @throws file_exception naming the file when it cannot be written.
KIO_EXPORT void SaveScreenshot(ui::UI_OSWindow& inWindow, const std::string& inFileUTF8);

/// The windows that are shown, the one in front first.
KIO_EXPORT std::vector<ui::UI_OSWindow*> ShownWindows();

} // namespace kioui::testing
