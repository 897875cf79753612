// What the plug-in manager's cells hold, show and say.

#include <TR/EffectPluginManagerDialog.h>

#include "CellCheckbox.h"
#include "PluginManagerColumns.h"

#include <kiocore/config/Localizer.h>
#include <kioui/controls/HotText.h>
#include <kioui/ui/NodeManager.h>

#include <cmath>

namespace TR {

using kiocore::config::Localizer;
using kiocore::utility::UTF16View;
using kioui::controls::UI_CellView;
using kioui::controls::UI_Checkbox;
using kioui::controls::UI_CheckboxPtr;
using kioui::controls::UI_HotTextURL;
using kioui::controls::UI_MultiColumnTreeHeaderRow;
using kioui::drawbot::WidestText;

namespace {

constexpr float kTextInset = 6;
constexpr float kBaselineAboveBottom = 4;
constexpr float kGridLine = 1;

/// Empty where there is nothing to draw with.
kioui::FontRef GetCellTextFont()
{
    const kioui::SupplierInterface* supplier = kioui::UI_NodeManager::GetDefaultDrawSupplier();
    const float size = kioui::ui::GetFontSize(0);
    return supplier != nullptr && size > 0 ? supplier->NewFont(kioui::ui::GetFontName(0), size) : nullptr;
}

/// A text of a record itself, or one that is put together into ioRoom.
UTF16View CellText(std::uint32_t inColumnID, const EffectSettings& inSettings, UTF16String& ioRoom)
{
    switch (inColumnID) {
    case kColumn_Enabled:
        // Sorts those that are off before those that are on, each by name.
        ioRoom.assign(1, inSettings.enabled ? u'2' : u'1').append(inSettings.name);
        return ioRoom;
    case kColumn_Name:
        return inSettings.name;
    case kColumn_FilePath:
        return inSettings.filePath;
    case kColumn_SupportURL:
        return inSettings.supportURL;
    default:
        break;
    }
    const std::size_t attribute = std::size_t(inColumnID) - kColumn_FirstAttribute;
    if (!IsAttributeColumn(inColumnID) || attribute >= inSettings.attributeValues.size()) {
        return {};
    }
    const AttributeValue& value = inSettings.attributeValues[attribute];
    if (const auto* text = boost::get<UTF16String>(&value)) {
        return *text;
    }
    return boost::get<bool>(value) ? UTF16View(u"2") : UTF16View(u"1");
}

const AttributeValue* AttributeOf(const EffectSettings& inSettings, std::uint32_t inColumnID)
{
    const std::size_t attribute = std::size_t(inColumnID) - kColumn_FirstAttribute;
    return IsAttributeColumn(inColumnID) && attribute < inSettings.attributeValues.size()
               ? &inSettings.attributeValues[attribute]
               : nullptr;
}

bool IsDrawnAsText(const EffectSettings& inSettings, std::uint32_t inColumnID)
{
    const AttributeValue* attribute = AttributeOf(inSettings, inColumnID);
    return inColumnID == kColumn_Name || inColumnID == kColumn_FilePath ||
           (attribute != nullptr && boost::get<UTF16String>(attribute) != nullptr);
}

void DrawCellText(kioui::Drawbot& ioDrawbot, const RectT<float>& inCell, UTF16View inText, bool inEnabled,
                  kioui::TextTruncation inTruncation)
{
    using namespace kioui::skins::utilities;
    const kioui::drawbot::ScDrawState state(ioDrawbot);
    ioDrawbot.Clip(inCell);
    const kioui::FontRef font = GetCellTextFont();
    const auto theme = kioui::ui::GetDefaultThemeProvider();
    const auto color = inEnabled ? GetDefaultTextColor(theme, {}) : GetDefaultDisabledTextColor(theme, {});
    ioDrawbot.DrawString(ioDrawbot.TruncateString(inText, font, inCell.Width() - kTextInset, inTruncation),
                         font, color, {inCell.left + kTextInset, inCell.bottom - kBaselineAboveBottom});
}

UTF16String YesOrNo(bool inValue)
{
    return Localizer::GetText(inValue ? "$$$/Halcyon/PluginManager/CellIsOn=on"
                                      : "$$$/Halcyon/PluginManager/CellIsOff=off");
}

} // namespace

UTF16String EffectPluginManagerDialog::GetCellText(std::uint32_t inColumnID,
                                                   const EffectSettings& inSettings) const
{
    UTF16String room;
    return UTF16String(CellText(inColumnID, inSettings, room));
}

UTF16String EffectPluginManagerDialog::OnGetCellTextForSort(Row* inRow, std::uint32_t inPosition) const
{
    const auto settings = SettingsOf(inRow);
    return settings && mHeader ? GetCellText(mHeader->GetColumnAt(inPosition), *settings) : UTF16String();
}

UTF16String EffectPluginManagerDialog::ReadableCellText(Row* inRow, std::uint32_t inPosition) const
{
    const auto settings = SettingsOf(inRow);
    if (!settings) {
        return {};
    }
    const std::uint32_t id = mHeader->GetColumnAt(inPosition);
    if (id == kColumn_Enabled) {
        return YesOrNo(settings->enabled);
    }
    const AttributeValue* attribute = AttributeOf(*settings, id);
    const bool* isOn = attribute != nullptr ? boost::get<bool>(attribute) : nullptr;
    return isOn != nullptr ? YesOrNo(*isOn) : GetCellText(id, *settings);
}

float EffectPluginManagerDialog::GetBestFitWidth(std::uint32_t inColumnID, bool inTitleOnly) const
{
    WidestText widest(GetCellTextFont());
    if (mHeader) {
        widest.Add(mHeader->GetColumnTitle(inColumnID));
    }
    if (!inTitleOnly) {
        UTF16String room;
        for (const auto& [row, settings] : mRows) {
            widest.Add(CellText(inColumnID, *settings, room));
        }
    }
    return widest.RoundedUpWidth() + kTextInset + kGridLine;
}

void EffectPluginManagerDialog::OnDrawCell(kioui::Drawbot* inDrawbot, Row* inRow, std::uint32_t inPosition,
                                           const RectT<float>& inCell) const
{
    const auto settings = SettingsOf(inRow);
    const std::uint32_t id =
        mHeader ? mHeader->GetColumnAt(inPosition) : UI_MultiColumnTreeHeaderRow::kNoColumn;
    if (!settings || !IsDrawnAsText(*settings, id)) {
        return; // a control's cell, or nobody's
    }
    UTF16String room;
    DrawCellText(*inDrawbot, inCell, CellText(id, *settings, room), mTree->IsEnabled(),
                 id == kColumn_FilePath ? kioui::TextTruncation::kMiddle : kioui::TextTruncation::kEnd);
}

void EffectPluginManagerDialog::OnRowVisibilityChanged(Row* inRow)
{
    const auto settings = SettingsOf(inRow);
    if (!settings || !mTree->IsRowVisible(inRow)) {
        return;
    }
    // A row's controls go with it, but a node somebody else holds on to may be clicked later: for nothing.
    const auto ofThisPopulation = [this, inRow, population = mPopulation](auto inHandler) {
        return [this, inRow, population, inHandler](Message* inMessage) {
            if (population == mPopulation) {
                inHandler(inMessage, inRow);
            }
        };
    };
    AddCellCheckbox(inRow, kColumn_Enabled, settings->enabled,
                    ofThisPopulation([this](Message* inMessage, Row* inItsRow) {
                        OnEnableCheckboxChange(inMessage, inItsRow);
                    }));
    if (mShowSupportURL) {
        AddSupportURL(inRow, *settings);
    }
    const auto attributes =
        std::uint32_t(std::min<std::size_t>(settings->attributeValues.size(), AttributeCount()));
    for (std::uint32_t attribute = 0; attribute < attributes; ++attribute) {
        if (const bool* value = boost::get<bool>(&settings->attributeValues[attribute])) {
            AddCellCheckbox(inRow, kColumn_FirstAttribute + attribute, *value,
                            ofThisPopulation([this, attribute](Message* inMessage, Row* inItsRow) {
                                OnGenericAttributeCheckboxChange(inMessage, inItsRow, attribute);
                            }));
        }
    }
}

void EffectPluginManagerDialog::AddCellCheckbox(Row* inRow, std::uint32_t inColumnID, bool inChecked,
                                                std::function<void(Message*)> inChanged)
{
    UI_CellView* const cell = inRow->GetCellView(mHeader->GetIndexOfColumn(inColumnID));
    if (cell == nullptr || cell->GetNode()) {
        return;
    }
    const UI_CheckboxPtr box(new UI_Checkbox({}));
    box->SetNodeID(inColumnID == kColumn_Enabled
                       ? "Enabled"
                       : "Attribute" + std::to_string(inColumnID - kColumn_FirstAttribute));
    box->SetAccessibleName(Localizer::Format(
        Localizer::GetText("$$$/Halcyon/PluginManager/CellName=@0: @1#{@0: title of a column, "
                           "@1: name of an effect}"),
        {mHeader->GetColumnTitle(inColumnID), SettingsOf(inRow)->name}));
    box->SetChecked(inChecked);
    box->SetKeyboardTarget(false);
    box->SetChangedFunction(std::move(inChanged));
    CenterNodeInCellView(*cell, box);
    AddCheckboxClickHandler(*cell, box);
    if (inColumnID == kColumn_Enabled && inRow->IsSelected()) {
        box->SetKeyboardTarget(true);
        box->SetKeyboardFocus(kioui::FocusChangeReason::kProgram);
    }
}

void EffectPluginManagerDialog::AddSupportURL(Row* inRow, const EffectSettings& inSettings)
{
    UI_CellView* const cell = inRow->GetCellView(mHeader->GetIndexOfColumn(kColumn_SupportURL));
    if (cell == nullptr || cell->GetNode()) {
        return;
    }
    const boost::intrusive_ptr<UI_HotTextURL> link(
        new UI_HotTextURL(inSettings.supportURL, GetCellTextFont()));
    link->SetNodeID("SupportURL");
    if (inSettings.supportURL.empty()) {
        link->SetKeyboardTarget(false); // nothing to open
    }
    link->SetChangedFunction([this, inRow, population = mPopulation](Message* inMessage) {
        if (population == mPopulation) {
            OnSupportURLControlChange(inMessage, inRow);
        }
    });
    cell->SetNode(link);
}

} // namespace TR
