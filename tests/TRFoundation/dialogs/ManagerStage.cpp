#include "ManagerStage.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace dialogtests {

using namespace kioui::controls;
namespace user = kioui::testing;

ManagerStage::ManagerStage(std::vector<UTF16String> inAttributeNames, bool inShowSupportURL)
    : mShowSupportURL(inShowSupportURL)
{
    mAll.attributeNames = std::move(inAttributeNames);
}

ManagerStage::~ManagerStage()
{
    if (mDialog) {
        mDialog->UI_Show(false);
    }
}

SettingsPtr ManagerStage::Add(const UTF16String& inName, std::vector<AttributeValue> inAttributes)
{
    auto settings = std::make_shared<EffectSettings>();
    settings->enabled = true;
    settings->name = inName;
    settings->filePath = u"/plug-ins/" + inName + u".so";
    settings->attributeValues = std::move(inAttributes);
    mAll.settings.insert(settings);
    return settings;
}

SettingsPtr ManagerStage::AddFirstParty(const UTF16String& inName)
{
    const SettingsPtr settings = Add(inName);
    settings->isFirstParty = true;
    return settings;
}

void ManagerStage::Open()
{
    mDialog = new TR::EffectPluginManagerDialog(nullptr, u"Plug-ins", nullptr);
    mDialog->ShowSupportURL(mShowSupportURL);
    mDialog->InitializeWithSettings(mAll);
    mDialog->SetSize({900, 500});
    mDialog->UI_Show(true);
    kioui::ui::ScApplication::RunPending();
}

UI_MultiColumnTree& ManagerStage::Tree()
{
    return kioui::ui::NodeCast<UI_MultiColumnTree>(&Node("PluginTree"));
}

kioui::UI_Node& ManagerStage::Node(const char* inNodeID)
{
    kioui::UI_Node* node = mDialog->FindNode(inNodeID);
    if (node == nullptr) {
        throw std::runtime_error(std::string("no node ") + inNodeID);
    }
    return *node;
}

UI_MultiColumnTreeRowPtr ManagerStage::RowNamed(const UTF16String& inName)
{
    const std::uint32_t name = Header().GetIndexOfColumn(2);
    for (std::uint32_t index = 0; index < Tree().CountRows(false); ++index) {
        const UI_MultiColumnTreeRowPtr row = Tree().GetRowAt(index);
        if (Tree().GetCellText(row.get(), name) == inName) {
            return row;
        }
    }
    return nullptr;
}

std::vector<UTF16String> ManagerStage::NamesShown()
{
    std::vector<UTF16String> names;
    for (std::uint32_t index = 0; index < Tree().CountRows(false); ++index) {
        names.push_back(Tree().GetCellText(Tree().GetRowAt(index).get(), Header().GetIndexOfColumn(2)));
    }
    return names;
}

std::vector<UTF16String> ManagerStage::NamesModified() const
{
    std::vector<UTF16String> names;
    for (const auto& settings : mDialog->GetModifiedItems()) {
        names.push_back(settings->name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

kioui::UI_NodePtr ManagerStage::CellNode(const UTF16String& inName, std::uint32_t inColumnID)
{
    const UI_MultiColumnTreeRowPtr row = RowNamed(inName);
    UI_CellView* cell = row ? row->GetCellView(Header().GetIndexOfColumn(inColumnID)) : nullptr;
    return cell != nullptr ? cell->GetNode() : nullptr;
}

UI_Checkbox& ManagerStage::Box(const UTF16String& inName, std::uint32_t inColumnID)
{
    return kioui::ui::NodeCast<UI_Checkbox>(CellNode(inName, inColumnID).get());
}

void ManagerStage::Click(const char* inNodeID)
{
    user::Click(*mDialog, user::MiddleOf(Node(inNodeID)));
}

void ManagerStage::TypeIntoSearch(const UTF16String& inText)
{
    Click("SearchText");
    Key("Ctrl+A");
    if (inText.empty()) {
        Key("Backspace");
    }
    user::TypeText(*mDialog, inText);
}

void ManagerStage::Key(const char* inKey)
{
    user::PressKey(*mDialog, inKey);
}

kioui::PointT<float> ManagerStage::CellPlace(const UTF16String& inName, std::uint32_t inColumnID)
{
    return user::MiddleOfCell(Tree(), *RowNamed(inName), Header().GetIndexOfColumn(inColumnID));
}

void ManagerStage::ClickCell(const UTF16String& inName, std::uint32_t inColumnID)
{
    user::Click(*mDialog, CellPlace(inName, inColumnID));
}

void ManagerStage::ClickTitle(std::uint32_t inColumnID)
{
    user::Click(*mDialog, user::MiddleOfTitle(Tree(), inColumnID));
}

} // namespace dialogtests
