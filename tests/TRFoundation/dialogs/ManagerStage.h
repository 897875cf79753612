#pragma once

#include <TR/EffectPluginManagerDialog.h>

#include <kioui/ui/NodeManager.h>
#include <kioui_testing/UserEvents.h>
#include <support/ui/TestApplication.h>

#include <string>
#include <vector>

namespace dialogtests {

using kiocore::UTF16String;
using TR::AttributeValue;
using TR::EffectSettings;
using SettingsPtr = std::shared_ptr<TR::EffectSettings>;

/// The plug-in manager, shown and in a test's hands.
class ManagerStage {
public:
    explicit ManagerStage(std::vector<UTF16String> inAttributeNames = {}, bool inShowSupportURL = false);
    ~ManagerStage();

    /// Before Open. Third-party, on, in "/plug-ins/<name>.so".
    SettingsPtr Add(const UTF16String& inName, std::vector<AttributeValue> inAttributes = {});
    SettingsPtr AddFirstParty(const UTF16String& inName);
    /// Builds the dialog and shows it.
    void Open();

    TR::EffectPluginManagerDialog& Dialog() { return *mDialog; }
    kioui::controls::UI_MultiColumnTree& Tree();
    kioui::controls::UI_MultiColumnTreeHeaderRow& Header() { return *Tree().GetHeaderRow(); }
    kioui::UI_Node& Node(const char* inNodeID);
    kioui::controls::UI_MultiColumnTreeRowPtr RowNamed(const UTF16String& inName);
    std::vector<UTF16String> NamesShown();
    std::vector<UTF16String> NamesModified() const;
    /// The node in the cell of the row and the column; null when there is none.
    kioui::UI_NodePtr CellNode(const UTF16String& inName, std::uint32_t inColumnID);
    kioui::controls::UI_Checkbox& Box(const UTF16String& inName, std::uint32_t inColumnID = 1);

    // What a person does.
    void Click(const char* inNodeID);
    void TypeIntoSearch(const UTF16String& inText);
    void Key(const char* inKey);
    void ClickCell(const UTF16String& inName, std::uint32_t inColumnID = 1);
    kioui::PointT<float> CellPlace(const UTF16String& inName, std::uint32_t inColumnID = 1);
    void ClickTitle(std::uint32_t inColumnID);

    support::ScTestApplication application;

private:
    const bool mShowSupportURL;
    TR::AllEffectSettings mAll;
    boost::intrusive_ptr<TR::EffectPluginManagerDialog> mDialog;
};

} // namespace dialogtests
