#pragma once

// The order of rows. Included by sources of kioui only.

#include <kioui/controls/MultiColumnTree.h>

namespace kioui::controls {

/// Puts rows in the order of a dictionary; equal texts stay as they stood, whichever way round.
/// @param inText  what a row is sorted by, asked for once per row.
void SortRows(UI_MultiColumnTree::Rows& ioRows,
              const std::function<ui::UTF16String(UI_MultiColumnTreeRow*)>& inText, bool inAscending);

} // namespace kioui::controls
