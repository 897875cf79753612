// How the plug-in manager's columns and checkbox are kept from one time to the next.

#include <TR/EffectPluginManagerDialog.h>

#include "PluginManagerState.h"

#include <kiocore/config/TopLevel.h>

#include <algorithm>

namespace TR {

using kioui::controls::UI_MultiColumnTreeHeaderRow;

std::string EffectPluginManagerDialog::GetDialogState() const
{
    PluginManagerState state;
    TreeState& tree = state.trees[kTheTree];
    const std::uint32_t columns = mHeader ? mHeader->GetCountOfColumns() : 0;
    for (std::uint32_t position = 0; position < columns; ++position) {
        const std::uint32_t id = mHeader->GetColumnAt(position);
        tree.columns.push_back({id, mHeader->GetColumnWidth(id), position});
    }
    if (mOnlyThirdParty) {
        state.checkboxes[kTheOnlyThirdPartyCheckbox].checked = mOnlyThirdParty->IsChecked();
    }
    return WriteState(state);
}

void EffectPluginManagerDialog::SetDialogState(const std::string& inState)
{
    if (inState.empty()) {
        return;
    }
    kiocore::config::ExecuteTopLevelFunction("Restoring the plug-in manager's columns", [&] {
        const PluginManagerState state = ReadState(inState); // all of it, before anything is changed
        if (const auto tree = state.trees.find(kTheTree); tree != state.trees.end()) {
            RestoreMultiColumnTreeState(tree->second.columns);
        }
        const auto checkbox = state.checkboxes.find(kTheOnlyThirdPartyCheckbox);
        if (checkbox != state.checkboxes.end() && mOnlyThirdParty) {
            mOnlyThirdParty->SetChecked(checkbox->second.checked);
            PopulatePluginInfos(false); // nobody is told of what is set
        }
    });
}

void EffectPluginManagerDialog::RestoreMultiColumnTreeState(std::vector<ColumnState> inColumns)
{
    if (!mHeader) {
        return;
    }
    std::sort(inColumns.begin(), inColumns.end(),
              [](const ColumnState& inA, const ColumnState& inB) { return inA.index < inB.index; });
    std::uint32_t target = 0;
    for (const ColumnState& column : inColumns) {
        const std::uint32_t position = mHeader->GetIndexOfColumn(column.id);
        if (position == UI_MultiColumnTreeHeaderRow::kNoColumn) {
            continue; // the dialog had it then, and has it no more
        }
        if (position != target) {
            mHeader->MoveColumn(column.id, target, true);
        }
        mHeader->SetColumnWidth(column.id, column.width);
        ++target;
    }
}

} // namespace TR
