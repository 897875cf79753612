// The plug-in manager's controls and their places.

#include <TR/EffectPluginManagerDialog.h>

#include "PluginManagerColumns.h"

#include <kiocore/config/Localizer.h>

namespace TR {

using kiocore::config::Localizer;
using kioui::layout::MakeCheckboxLayout;
using kioui::layout::MakeTextButtonLayout;
using kioui::layout::SmartLayoutBuilder;
using namespace kioui::controls;
using Direction = SmartLayoutBuilder::Direction;

namespace {

constexpr float kGapBetweenTools = 13;
constexpr float kGapBetweenButtons = 10;
constexpr float kGapBetweenLines = 10;

UI_TextButtonPtr NewButton(const char* inNodeID, const char* inText)
{
    UI_TextButtonPtr button(new UI_TextButton(Localizer::GetText(inText)));
    button->SetNodeID(inNodeID);
    return button;
}

} // namespace

void EffectPluginManagerDialog::SetupControls()
{
    mSearchBox = new UI_SearchBox(false, false);
    mSearchBox->SetNodeID("SearchText");
    const UTF16String search = Localizer::GetText("$$$/Halcyon/PluginManager/Search=Search");
    mSearchBox->SetUnknownStateText(search);
    mSearchBox->SetAccessibleName(search);
    mSearchBox->SetInteractiveChangeFunction([this](Message*) { OnFindChangedInteractively(); });
    mSearchBox->SetChangedFunction([this](Message*) { OnFindChanged(); });

    mOnlyThirdParty =
        new UI_Checkbox(Localizer::GetText("$$$/Halcyon/PluginManager/OnlyShowThirdPartyEffectsLabel="
                                           "Only Show Third-Party Effects"));
    mOnlyThirdParty->SetNodeID("OnlyShowThirdPartyEffectsCheckbox");
    mOnlyThirdParty->SetChecked(true);
    mOnlyThirdParty->SetChangedFunction([this](Message*) { OnOnlyThirdPartyCheckboxChanged(); });

    mEnableAll = NewButton("EnableAllButton", "$$$/Halcyon/PluginManager/EnableAll=Enable All");
    mDisableAll = NewButton("DisableAllButton", "$$$/Halcyon/PluginManager/DisableAll=Disable All");
    for (const UI_TextButtonPtr& button : {mEnableAll, mDisableAll}) {
        button->SetChangedFunction([this](Message* inMessage) { OnEnableAllButtonChanged(inMessage); });
    }
    SetupTree();
    for (const kioui::UI_NodePtr& node : std::initializer_list<kioui::UI_NodePtr>{
             mSearchBox, mOnlyThirdParty, mEnableAll, mDisableAll, mTree}) {
        GetContentArea()->AddChild(node);
    }
}

void EffectPluginManagerDialog::SetupTree()
{
    mTree = new UI_MultiColumnTree;
    mTree->SetNodeID("PluginTree");
    mTree->SetAccessibleName(Localizer::GetText("$$$/Halcyon/PluginManager/PluginTree=Effect plug-ins"));
    mTree->SetAllowChildren(false);
    mTree->SetSelectAllByAKey(false);
    mTree->SetSelectByNonArrowKeys(false);
    mTree->SetUserSelectableRows(true);

    mHeader = mTree->GetHeaderRow();
    const auto append = [this](std::uint32_t inColumnID, const UTF16String& inTitle, float inWidth) {
        mHeader->AppendColumn(inColumnID, inTitle, inWidth);
    };
    append(kColumn_Enabled, Localizer::GetText("$$$/Halcyon/PluginManager/Enabled=Enabled"),
           kSmallColumnWidth);
    append(kColumn_Name, Localizer::GetText("$$$/Halcyon/PluginManager/PluginName=Name"), kLargeColumnWidth);
    for (std::uint32_t attribute = 0; attribute < AttributeCount(); ++attribute) {
        append(kColumn_FirstAttribute + attribute, mAllSettings.attributeNames[attribute], kSmallColumnWidth);
    }
    if (mShowSupportURL) {
        append(kColumn_SupportURL,
               Localizer::GetText("$$$/Halcyon/PluginManager/EffectSupportURL=Support URL"),
               kSmallColumnWidth);
    }
    append(kColumn_FilePath, Localizer::GetText("$$$/Halcyon/PluginManager/PluginFilePath=File Path"),
           kLargeColumnWidth);

    mTree->SetRowVisibilityChangedFunction([this](Row* inRow) { OnRowVisibilityChanged(inRow); });
    mTree->SetDrawCellFunction(
        [this](kioui::Drawbot* inDrawbot, Row* inRow, std::uint32_t inPosition, const RectT<float>& inCell) {
            OnDrawCell(inDrawbot, inRow, inPosition, inCell);
        });
    mHeader->SetBestFitWidthFunction([this](std::uint32_t inColumnID, bool inTitleOnly) {
        return GetBestFitWidth(inColumnID, inTitleOnly);
    });
    mTree->SetCellSortDataFunction(
        [this](Row* inRow, std::uint32_t inPosition) { return OnGetCellTextForSort(inRow, inPosition); });
    mTree->SetCellTextFunction(
        [this](Row* inRow, std::uint32_t inPosition) { return ReadableCellText(inRow, inPosition); });
    mTree->SetRowsSelectionChangedFunction([this](const Rows& inRows) { OnRowSelectionChanged(inRows); });
    mDisableAll->SetFocusChangedFunction([this](kioui::UI_Node* inNode, kioui::FocusChangeReason inReason) {
        OnDisableAllButtonFocusChanged(inNode, inReason);
    });
    mTree->SortTree();
}

void EffectPluginManagerDialog::LayoutControls()
{
    const auto measuring = GetSupplier()->NewMeasuringDrawbot();
    SmartLayoutBuilder tools(Direction::kLeftToRight);
    tools.SetCrossAlignment(kioui::layout::CrossAlignment::kCentre).Append(mSearchBox, {1, 0});
    if (mOnlyThirdParty) {
        tools.AppendSpace(kGapBetweenTools).Append(MakeCheckboxLayout(mOnlyThirdParty, *measuring));
    }
    tools.AppendSpace(kGapBetweenTools)
        .Append(MakeTextButtonLayout(mEnableAll, *measuring))
        .AppendSpace(kGapBetweenButtons)
        .Append(MakeTextButtonLayout(mDisableAll, *measuring));

    SmartLayoutBuilder column(Direction::kTopToBottom);
    column.AppendSpace(kGapBetweenLines)
        .Append(tools.Build(), {1, 0})
        .AppendSpace(kGapBetweenLines)
        .Append(mTree, {0, 0}, {1, 1})
        .AppendSpace(kGapBetweenLines);
    mContentLayout = column.Build();
    OnContentAreaSizeChanged(GetContentArea()->GetBounds());
}

void EffectPluginManagerDialog::OnContentAreaSizeChanged(const RectT<float>& inBounds)
{
    if (mContentLayout) {
        mContentLayout->Apply({0, 0, inBounds.Width(), inBounds.Height()});
    }
}

} // namespace TR
