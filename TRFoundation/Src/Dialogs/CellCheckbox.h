#pragma once

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>

namespace TR {

/// The box puts itself into the middle of the cell.
void CenterNodeInCellView(kioui::controls::UI_CellView& inCellView, const kioui::UI_NodePtr& inNode);
/// A press and a release of the left mouse button anywhere in the cell click the box; a press in one cell and
/// a release in another click none.
void AddCheckboxClickHandler(kioui::controls::UI_CellView& inCellView,
                             const kioui::controls::UI_CheckboxPtr& inCheckbox);
/// The box that a row's effect is switched with; null while there is none.
kioui::controls::UI_Checkbox*
GetEnabledCheckboxForRow(const kioui::controls::UI_MultiColumnTreeHeaderRow& inHeader,
                         kioui::controls::UI_MultiColumnTreeRow& inRow);

} // namespace TR
