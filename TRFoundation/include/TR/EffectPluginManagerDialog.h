#pragma once

#include <TR/EffectPluginManagerBaseDialog.h>
#include <TR/EffectSettings.h>

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/controls/SearchBox.h>
#include <kioui/controls/TextButton.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace TR {

struct ColumnState;

/// Lets the user search all effect plug-ins and switch each of them, and whatever else the host asks of each,
/// on and off. It edits the very records that it is given, and tells at the end which ones; applying them, or
/// ignoring them after Cancel, is the caller's.
///
/// Construct; ShowSupportURL if wanted; InitializeWithSettings; HideFirstPartyEffects if wanted;
/// SetDialogState with what GetDialogState gave the last time; RunModal.
///
/// Threading: UI thread only; nobody else touches the records meanwhile.
class KIO_EXPORT EffectPluginManagerDialog : public EffectPluginManagerBaseDialog {
public:
    /// Without content yet. The parameters are the base dialog's.
    EffectPluginManagerDialog(const kioui::SupplierInterface* inSupplier, const UTF16String& inTitle,
                              kioui::UI_Node* inParent);
    /// With content.
    EffectPluginManagerDialog(const kioui::SupplierInterface* inSupplier, const UTF16String& inTitle,
                              kioui::UI_Node* inParent, AllEffectSettings inSettings);
    ~EffectPluginManagerDialog() override;
    const char* GetClassName() const override { return "EffectPluginManagerDialog"; }

    /// Whether there is a column with links to the makers' pages. No effect after InitializeWithSettings.
    void ShowSupportURL(bool inShow) { mShowSupportURL = inShow; }
    /// Fills the dialog. Once.
    void InitializeWithSettings(AllEffectSettings inSettings);
    /// Takes away the choice to see the effects that come with the host. Rows follow with the next search.
    void HideFirstPartyEffects();

    /// Searches as if the text had been typed.
    void Find(const UTF16String& inText);
    std::uint32_t CountRows() const;
    /// All records that the user changed in this dialog, also those changed back.
    const EffectSettingsSet& GetModifiedItems() const { return mModifiedItems; }
    /// Called whenever a record has been changed, after it has.
    void SetModifiedFunction(std::function<void()> inFunction) { mModified = std::move(inFunction); }

    /// The order and widths of the columns and the checkbox, as a JSON text to be kept until the next time.
    std::string GetDialogState() const;
    /// Takes what GetDialogState gave. Columns that there are no more are passed over; a text that is damaged
    /// is reported on trace channel "Threads" and changes nothing.
    void SetDialogState(const std::string& inState);

    void OnContentAreaSizeChanged(const RectT<float>& inBounds) override;

private:
    using Row = kioui::controls::UI_MultiColumnTreeRow;
    using RowPtr = kioui::controls::UI_MultiColumnTreeRowPtr;
    using Rows = kioui::controls::UI_MultiColumnTree::Rows;
    using Message = kioui::UI_ControlChangedMessage;

    // What is shown.
    void PopulatePluginInfos(bool inResetColumnWidths);
    void ResetColumnWidths();
    EffectSettingsSet GetCurrentlyVisibleSettings() const;
    UTF16String CurrentSearchText() const;
    std::shared_ptr<EffectSettings> SettingsOf(const Row* inRow) const;
    std::uint32_t AttributeCount() const;

    // What the user does.
    void OnFindChanged();
    void OnFindChangedInteractively();
    void OnOnlyThirdPartyCheckboxChanged();
    void OnEnableAllButtonChanged(Message* inMessage);
    void OnEnableCheckboxChange(Message* inMessage, Row* inRow);
    void OnGenericAttributeCheckboxChange(Message* inMessage, Row* inRow, std::uint32_t inAttribute);
    void OnSupportURLControlChange(Message* inMessage, Row* inRow);
    void OnRowVisibilityChanged(Row* inRow);
    void OnRowSelectionChanged(const Rows& inRows);
    void OnDisableAllButtonFocusChanged(kioui::UI_Node* inNode, kioui::FocusChangeReason inReason);
    void HaveModified(const std::shared_ptr<EffectSettings>& inSettings);

    // Controls and their places.
    void SetupControls();
    void SetupTree();
    void LayoutControls();
    kioui::SizeT<float> SizeToStartWith() const;
    void AddCellCheckbox(Row* inRow, std::uint32_t inColumnID, bool inChecked,
                         std::function<void(Message*)> inChanged);
    void AddSupportURL(Row* inRow, const EffectSettings& inSettings);

    // Cells.
    UTF16String OnGetCellTextForSort(Row* inRow, std::uint32_t inPosition) const;
    UTF16String GetCellText(std::uint32_t inColumnID, const EffectSettings& inSettings) const;
    UTF16String ReadableCellText(Row* inRow, std::uint32_t inPosition) const;
    float GetBestFitWidth(std::uint32_t inColumnID, bool inTitleOnly) const;
    void OnDrawCell(kioui::Drawbot* inDrawbot, Row* inRow, std::uint32_t inPosition,
                    const RectT<float>& inCell) const;

    void RestoreMultiColumnTreeState(std::vector<ColumnState> inColumns);

    AllEffectSettings mAllSettings;
    std::map<RowPtr, std::shared_ptr<EffectSettings>> mRows;
    UTF16String mSearchText;
    EffectSettingsSet mModifiedItems;
    bool mShowSupportURL = false;
    std::uint64_t mPopulation = 0; // how often the rows were made anew
    std::function<void()> mModified;

    kioui::controls::UI_SearchBoxPtr mSearchBox;
    kioui::controls::UI_CheckboxPtr mOnlyThirdParty;
    kioui::controls::UI_TextButtonPtr mEnableAll;
    kioui::controls::UI_TextButtonPtr mDisableAll;
    kioui::controls::UI_MultiColumnTreePtr mTree;
    kioui::controls::UI_MultiColumnTreeHeaderRowPtr mHeader;
    kioui::layout::SmartLayoutPtr mContentLayout;
};

} // namespace TR
