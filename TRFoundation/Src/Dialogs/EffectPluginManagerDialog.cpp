#include <TR/EffectPluginManagerDialog.h>

#include "CellCheckbox.h"
#include "EffectSearch.h"
#include "PluginManagerColumns.h"

#include <kiocore/platform/Browser.h>

#include <algorithm>

namespace TR {

using kioui::controls::UI_Checkbox;
using kioui::controls::UI_MultiColumnTree;
using kioui::controls::UI_MultiColumnTreeRow;
using kioui::ui::NodeCast;

namespace {

constexpr float kSearchWidth = 160; // enough to read what is typed

} // namespace

EffectPluginManagerDialog::EffectPluginManagerDialog(const kioui::SupplierInterface* inSupplier,
                                                     const UTF16String& inTitle, kioui::UI_Node* inParent)
    : EffectPluginManagerBaseDialog(inSupplier, inTitle, inParent)
{
    SetNodeID("Effect Plugin Manager");
    SetSaveAndRestoreSize(true);
}

EffectPluginManagerDialog::EffectPluginManagerDialog(const kioui::SupplierInterface* inSupplier,
                                                     const UTF16String& inTitle, kioui::UI_Node* inParent,
                                                     AllEffectSettings inSettings)
    : EffectPluginManagerDialog(inSupplier, inTitle, inParent)
{
    InitializeWithSettings(std::move(inSettings));
}

EffectPluginManagerDialog::~EffectPluginManagerDialog() = default;

void EffectPluginManagerDialog::InitializeWithSettings(AllEffectSettings inSettings)
{
    mAllSettings = std::move(inSettings);
    SetupControls();
    LayoutControls();
    PopulatePluginInfos(true);
    SetMinimumSize({400, 300});
    SetTextEditReturnClosesDialog(false);
    SetSize(SizeToStartWith());
    Position();
    if (CountRows() > 0) {
        mTree->SelectRow(mTree->GetRowAt(0), true, false, true);
    }
}

/// All columns as far as a window of usual size goes, and a list worth scrolling in.
kioui::SizeT<float> EffectPluginManagerDialog::SizeToStartWith() const
{
    constexpr float kUsualWidth = 960;
    constexpr float kUsualHeight = 600;
    constexpr float kBesideColumns = 60; // margins, scroll bar and frame
    float columns = 0;
    for (std::uint32_t position = 0; position < mHeader->GetCountOfColumns(); ++position) {
        columns += mHeader->GetColumnWidth(mHeader->GetColumnAt(position));
    }
    const float tools = mContentLayout->GetMinimumSize().width + kSearchWidth + kBesideColumns;
    return {std::max(tools, std::min(columns + kBesideColumns, kUsualWidth)), kUsualHeight};
}

void EffectPluginManagerDialog::HideFirstPartyEffects()
{
    if (mOnlyThirdParty) {
        mOnlyThirdParty->RemoveFromParent();
        mOnlyThirdParty.reset();
        LayoutControls();
    }
}

std::uint32_t EffectPluginManagerDialog::CountRows() const
{
    return mTree ? mTree->CountRows(false) : 0;
}

std::uint32_t EffectPluginManagerDialog::AttributeCount() const
{
    return std::uint32_t(std::min<std::size_t>(mAllSettings.attributeNames.size(), kMostAttributes));
}

std::shared_ptr<EffectSettings> EffectPluginManagerDialog::SettingsOf(const Row* inRow) const
{
    const auto found = mRows.find(const_cast<Row*>(inRow));
    return found != mRows.end() ? found->second : nullptr;
}

UTF16String EffectPluginManagerDialog::CurrentSearchText() const
{
    return mSearchBox->GetValue().value_or(UTF16String());
}

EffectSettingsSet EffectPluginManagerDialog::GetCurrentlyVisibleSettings() const
{
    const EffectSearch search(CurrentSearchText());
    const bool onlyThirdParty = !mOnlyThirdParty || mOnlyThirdParty->IsChecked();
    EffectSettingsSet visible;
    for (const auto& settings : mAllSettings.settings) {
        if (!(onlyThirdParty && settings->isFirstParty) && search.Finds(*settings)) {
            visible.insert(visible.end(), settings);
        }
    }
    return visible;
}

void EffectPluginManagerDialog::PopulatePluginInfos(bool inResetColumnWidths)
{
    {
        const UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow defer(*mTree);
        ++mPopulation;
        mTree->RemoveAllRows();
        mRows.clear();
        for (const auto& settings : GetCurrentlyVisibleSettings()) {
            const RowPtr row(new UI_MultiColumnTreeRow(true, nullptr));
            mRows.emplace_hint(mRows.end(), row, settings); // rows mostly lie one behind the other
            mTree->AppendRow(row, nullptr, true);
        }
        if (inResetColumnWidths) {
            ResetColumnWidths();
        }
    }
}

void EffectPluginManagerDialog::ResetColumnWidths()
{
    const auto fit = [this](std::uint32_t inColumnID, float inLeast, bool inTitleOnly) {
        mHeader->SetColumnWidth(inColumnID, std::max(inLeast, GetBestFitWidth(inColumnID, inTitleOnly)));
    };
    fit(kColumn_Name, kLargeColumnWidth, false);
    fit(kColumn_FilePath, kLargeColumnWidth, false);
    if (mShowSupportURL) {
        fit(kColumn_SupportURL, kSmallColumnWidth, true); // addresses are long and say little
    }
    for (std::uint32_t attribute = 0; attribute < AttributeCount(); ++attribute) {
        fit(kColumn_FirstAttribute + attribute, kSmallColumnWidth, false);
    }
}

void EffectPluginManagerDialog::OnFindChanged()
{
    const UTF16String text = CurrentSearchText();
    if (text != mSearchText) {
        mSearchText = text;
        PopulatePluginInfos(false);
    }
}

void EffectPluginManagerDialog::Find(const UTF16String& inText)
{
    mSearchBox->SetValue(inText);
    OnFindChanged();
}

void EffectPluginManagerDialog::OnFindChangedInteractively()
{
    OnFindChanged();
}

void EffectPluginManagerDialog::OnOnlyThirdPartyCheckboxChanged()
{
    PopulatePluginInfos(false);
}

void EffectPluginManagerDialog::OnEnableAllButtonChanged(Message* inMessage)
{
    const bool enable = inMessage->GetControl() == mEnableAll.get();
    for (const auto& settings : GetCurrentlyVisibleSettings()) {
        settings->enabled = enable;
        mModifiedItems.insert(settings);
    }
    PopulatePluginInfos(false);
    if (mModified) {
        mModified();
    }
}

void EffectPluginManagerDialog::HaveModified(const std::shared_ptr<EffectSettings>& inSettings)
{
    mModifiedItems.insert(inSettings);
    if (mModified) {
        mModified();
    }
}

void EffectPluginManagerDialog::OnEnableCheckboxChange(Message* inMessage, Row* inRow)
{
    if (const auto settings = SettingsOf(inRow)) {
        settings->enabled = NodeCast<UI_Checkbox>(inMessage->GetControl()).IsChecked();
        HaveModified(settings);
    }
}

void EffectPluginManagerDialog::OnGenericAttributeCheckboxChange(Message* inMessage, Row* inRow,
                                                                 std::uint32_t inAttribute)
{
    const auto settings = SettingsOf(inRow);
    if (settings && inAttribute < settings->attributeValues.size()) {
        settings->attributeValues[inAttribute] = NodeCast<UI_Checkbox>(inMessage->GetControl()).IsChecked();
        HaveModified(settings);
    }
}

void EffectPluginManagerDialog::OnSupportURLControlChange(Message*, Row* inRow)
{
    const auto settings = SettingsOf(inRow);
    if (settings && !settings->supportURL.empty()) {
        kiocore::utility::OpenURLInDefaultBrowser(settings->supportURL);
    }
}

void EffectPluginManagerDialog::OnRowSelectionChanged(const Rows& inRows)
{
    for (const RowPtr& row : inRows) {
        if (UI_Checkbox* box = GetEnabledCheckboxForRow(*mHeader, *row)) {
            box->SetKeyboardTarget(false);
        }
    }
    for (const RowPtr& row : mTree->GetSelectedRows()) {
        if (UI_Checkbox* box = GetEnabledCheckboxForRow(*mHeader, *row)) {
            box->SetKeyboardTarget(true);
            box->SetKeyboardFocus(kioui::FocusChangeReason::kProgram);
        }
    }
}

void EffectPluginManagerDialog::OnDisableAllButtonFocusChanged(kioui::UI_Node* inNode,
                                                               kioui::FocusChangeReason inReason)
{
    if (inNode != mDisableAll.get() || inReason != kioui::FocusChangeReason::kKeyboard || CountRows() == 0 ||
        !mTree->GetSelectedRows().empty()) {
        return;
    }
    // With a row selected, the next Tab reaches a box that the space bar switches.
    const bool hadFocus = mDisableAll->HasKeyboardFocus();
    mTree->SelectRow(mTree->GetRowAt(0), true, false, true);
    if (hadFocus) {
        mDisableAll->SetKeyboardFocus(kioui::FocusChangeReason::kProgram);
    }
}

} // namespace TR
