#include "CellCheckbox.h"

#include "PluginManagerColumns.h"

#include <utility>

namespace TR {

using kioui::controls::UI_CellView;
using kioui::controls::UI_Checkbox;
using kioui::ui::MouseButton;
using kioui::ui::MouseEventType;
using kioui::ui::UI_MouseEvent;

namespace {

// Where the left button went down: there is one mouse. Only compared, as the cell may be gone.
const UI_CellView* sPressedCell = nullptr;

bool HandleCellMouseEvent(UI_CellView* inCellView, UI_MouseEvent& ioEvent)
{
    if (ioEvent.button != MouseButton::kLeft) {
        return false;
    }
    if (ioEvent.type == MouseEventType::kPress) {
        sPressedCell = inCellView;
        return false; // the press selects the row too
    }
    if (ioEvent.type != MouseEventType::kRelease) {
        return false;
    }
    const bool wasPressedHere = std::exchange(sPressedCell, nullptr) == inCellView;
    if (wasPressedHere) {
        // Kept: its changed function may make all rows anew.
        const kioui::UI_NodePtr node = inCellView->GetNode();
        ioEvent.handled = true;
        if (auto* box = dynamic_cast<UI_Checkbox*>(node.get())) {
            box->Click();
        }
    }
    return ioEvent.handled;
}

} // namespace

void CenterNodeInCellView(UI_CellView& inCellView, const kioui::UI_NodePtr& inNode)
{
    inCellView.CentreNode(true);
    inCellView.SetNode(inNode);
}

void AddCheckboxClickHandler(UI_CellView& inCellView, const kioui::controls::UI_CheckboxPtr& inCheckbox)
{
    inCheckbox->SetTransparentToMouse(true);
    inCellView.SetMouseEventFunction(HandleCellMouseEvent);
}

UI_Checkbox* GetEnabledCheckboxForRow(const kioui::controls::UI_MultiColumnTreeHeaderRow& inHeader,
                                      kioui::controls::UI_MultiColumnTreeRow& inRow)
{
    UI_CellView* const cell = inRow.GetCellView(inHeader.GetIndexOfColumn(kColumn_Enabled));
    return cell != nullptr ? dynamic_cast<UI_Checkbox*>(cell->GetNode().get()) : nullptr;
}

} // namespace TR
