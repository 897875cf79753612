// The plug-in manager under mouse and keyboard: where its controls lie, and what events do to them.

#include "ManagerStage.h"

#include <gmock/gmock.h>

#include <set>

using namespace dialogtests;
using namespace kioui::controls;
using kioui::RectT;
using testing::ElementsAre;
namespace user = kioui::testing;

namespace {

RectT<float> BoundsOf(ManagerStage& inStage, const char* inNodeID)
{
    return inStage.Node(inNodeID).GetBounds();
}

/// Nodes below this one, itself included, that can be clicked or typed into.
void CollectControls(kioui::UI_Node& inNode, std::vector<kioui::UI_Node*>& outControls)
{
    if (dynamic_cast<UI_Control*>(&inNode) != nullptr ||
        dynamic_cast<UI_MultiColumnTree*>(&inNode) != nullptr) {
        outControls.push_back(&inNode);
    }
    for (const kioui::UI_NodePtr& child : inNode.GetChildren()) {
        CollectControls(*child, outControls);
    }
}

} // namespace

TEST(PluginManagerControls, APressAndAReleaseInOneCellToggle)
{
    const struct {
        const char* name;
        const char16_t* pressedIn;
        const char16_t* releasedIn;
        float offset; // from the middle, to the right: beside the box
        bool blurToggles;
    } kCases[] = {
        {"on the box", u"Blur", u"Blur", 0, true},
        {"beside it", u"Blur", u"Blur", 28, true},
        {"released in another row", u"Blur", u"Glow", 0, false},
        {"pressed in another row", u"Glow", u"Blur", 0, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        ManagerStage stage;
        const auto blur = stage.Add(u"Blur");
        const auto glow = stage.Add(u"Glow");
        stage.Open();
        const auto place = [&](const char16_t* inRow) {
            const kioui::PointT<float> middle = stage.CellPlace(inRow);
            return kioui::PointT<float>{middle.x + test.offset, middle.y};
        };
        user::PressMouse(stage.Dialog(), place(test.pressedIn));
        user::MoveMouse(stage.Dialog(), place(test.releasedIn));
        user::ReleaseMouse(stage.Dialog(), place(test.releasedIn));
        EXPECT_EQ(blur->enabled, !test.blurToggles);
        EXPECT_TRUE(glow->enabled);
        EXPECT_EQ(stage.Box(u"Blur").IsChecked(), blur->enabled);
        // What was pressed is forgotten: a release alone does nothing.
        user::ReleaseMouse(stage.Dialog(), place(test.pressedIn));
        EXPECT_EQ(blur->enabled, !test.blurToggles);
    }
}

TEST(PluginManagerControls, TheSpaceBarSwitchesTheSelectedRow)
{
    ManagerStage stage;
    const auto blur = stage.Add(u"Blur");
    const auto glow = stage.Add(u"Glow");
    stage.Open();
    stage.ClickTitle(2); // by name
    stage.Tree().SelectRow(stage.RowNamed(u"Glow"), true, false, true);
    stage.Tree().SelectRow(stage.RowNamed(u"Blur"), true, false, true);
    EXPECT_TRUE(stage.Box(u"Blur").HasKeyboardFocus());
    EXPECT_FALSE(stage.Box(u"Glow").IsKeyboardTarget());
    stage.Key("Space");
    EXPECT_FALSE(blur->enabled);
    stage.Key("Down");
    EXPECT_TRUE(stage.Box(u"Glow").HasKeyboardFocus());
    EXPECT_FALSE(stage.Box(u"Blur").IsKeyboardTarget());
    stage.Key("Space");
    EXPECT_FALSE(glow->enabled);
    EXPECT_FALSE(blur->enabled);
}

TEST(PluginManagerControls, TabReachesEverythingAndPassesOnToARow)
{
    ManagerStage stage;
    stage.Add(u"Blur");
    stage.Open();
    std::vector<kioui::UI_Node*> controls;
    CollectControls(stage.Dialog(), controls);
    std::set<std::string> reached;
    for (int i = 0; i < 12; ++i) {
        stage.Key("Tab");
        if (const kioui::UI_Node* focused = stage.Dialog().GetFocusedNode()) {
            reached.insert(focused->GetNodeID());
        }
    }
    for (const kioui::UI_Node* control : controls) {
        EXPECT_TRUE(!control->IsEnabled() || reached.count(control->GetNodeID()) != 0)
            << control->GetNodeID();
        EXPECT_NE(control->GetAccessibleName(), u"") << control->GetNodeID();
    }
    EXPECT_EQ(stage.Box(u"Blur").GetAccessibleName(), u"Enabled: Blur");

    // Coming to Disable All with the keyboard selects a row, so that the next Tab finds a box to switch.
    for (const char* key : {"Tab", "Shift+Tab"}) {
        SCOPED_TRACE(key);
        stage.Tree().SelectRow(stage.RowNamed(u"Blur"), false, false, true);
        ASSERT_TRUE(stage.Tree().GetSelectedRows().empty());
        stage.Node(key[0] == 'T' ? "EnableAllButton" : "PluginTree")
            .SetKeyboardFocus(kioui::FocusChangeReason::kProgram);
        stage.Key(key);
        EXPECT_TRUE(stage.RowNamed(u"Blur")->IsSelected());
        ASSERT_NE(stage.Dialog().GetFocusedNode(), nullptr);
        EXPECT_EQ(stage.Dialog().GetFocusedNode()->GetNodeID(), "DisableAllButton");
    }
}

TEST(PluginManagerControls, ReturnInTheSearchClosesNothingAndEscapeCancels)
{
    ManagerStage stage;
    stage.Add(u"Blur");
    stage.Open();
    std::vector<std::string> seen;
    stage.application->Post([&] {
        stage.TypeIntoSearch(u"bl");
        stage.Key("Return");
        seen.push_back(stage.Dialog().IsRunningModal() ? "still open" : "closed");
        stage.Key("Escape");
    });
    EXPECT_EQ(stage.Dialog().RunModal(), kioui::UI_Dialog::kResult_Cancel);
    EXPECT_THAT(seen, ElementsAre("still open"));

    stage.Dialog().SetOKButtonEnabled(false);
    EXPECT_FALSE(stage.Node("OK").IsEnabled());
    stage.Dialog().SetOKButtonEnabled(true);
    stage.application->Post([&] { stage.Click("OK"); });
    EXPECT_EQ(stage.Dialog().RunModal(), kioui::UI_Dialog::kResult_OK);
}

TEST(PluginManagerControls, LieWhereTheyShouldAtEverySize)
{
    ManagerStage stage;
    stage.Add(u"Blur");
    stage.Open();
    EXPECT_EQ(stage.Dialog().GetMinimumSize(), (kioui::SizeT<float>{400, 300}));
    for (const kioui::SizeT<float> size : {kioui::SizeT<float>{900, 500}, {777, 401}, {1333, 999}}) {
        SCOPED_TRACE(size.width);
        stage.Dialog().SetSize(size);
        kioui::ui::ScApplication::RunPending();
        const RectT<float> content = BoundsOf(stage, "Content Area");
        RectT<float> atTheEnd = BoundsOf(stage, "OK");
        RectT<float> beforeIt = BoundsOf(stage, "Cancel");
        if (!kioui::UI_Dialog::IsOKRightmost()) {
            std::swap(atTheEnd, beforeIt);
        }
        EXPECT_EQ(content.left, 15);
        EXPECT_EQ(content.top, 15);
        EXPECT_EQ(content.right, size.width - 15);
        EXPECT_EQ(atTheEnd.right, size.width - 15);
        EXPECT_EQ(std::max(atTheEnd.bottom, beforeIt.bottom), size.height - 15);
        EXPECT_EQ(atTheEnd.left - beforeIt.right, 10);
        EXPECT_EQ(std::min(atTheEnd.top, beforeIt.top) - content.bottom, 15);

        const RectT<float> search = BoundsOf(stage, "SearchText");
        const RectT<float> onlyThird = BoundsOf(stage, "OnlyShowThirdPartyEffectsCheckbox");
        const RectT<float> enableAll = BoundsOf(stage, "EnableAllButton");
        const RectT<float> disableAll = BoundsOf(stage, "DisableAllButton");
        const RectT<float> tree = BoundsOf(stage, "PluginTree");
        EXPECT_EQ(search.left, 0);
        EXPECT_EQ(onlyThird.left - search.right, 13);
        EXPECT_EQ(enableAll.left - onlyThird.right, 13);
        EXPECT_EQ(disableAll.left - enableAll.right, 10);
        EXPECT_EQ(disableAll.right, content.Width());
        const float toolsTop = std::min({search.top, onlyThird.top, enableAll.top});
        const float toolsBottom = std::max({search.bottom, onlyThird.bottom, enableAll.bottom});
        EXPECT_EQ(toolsTop, 10);
        EXPECT_EQ(tree.top - toolsBottom, 10);
        EXPECT_EQ(content.Height() - tree.bottom, 10);
        EXPECT_EQ(tree.Width(), content.Width());
    }
    stage.Dialog().HideFirstPartyEffects();
    EXPECT_EQ(BoundsOf(stage, "EnableAllButton").left - BoundsOf(stage, "SearchText").right, 13);
}

TEST(PluginManagerControls, ColumnsAreAsWideAsTheirTexts)
{
    const UTF16String longText(60, u'w');
    ManagerStage stage({u"A title that is quite long", u"x"}, true);
    stage.Add(u"Blur", {true, longText})->supportURL = u"https://example.org/" + longText;
    stage.Open();
    auto& header = stage.Header();
    const auto fit = [&](std::uint32_t inColumn) { return header.GetBestFitWidth(inColumn, false); };
    EXPECT_EQ(header.GetColumnWidth(1), 70) << "the first keeps its width";
    EXPECT_EQ(header.GetColumnWidth(2), 140) << "short names";
    EXPECT_EQ(header.GetColumnWidth(4), fit(4));
    EXPECT_EQ(fit(4), header.GetBestFitWidth(4, true)) << "boxes need less than that title";
    EXPECT_GT(header.GetColumnWidth(4), 70);
    EXPECT_EQ(header.GetColumnWidth(5), fit(5));
    EXPECT_GT(fit(5), header.GetBestFitWidth(5, true));
    EXPECT_EQ(header.GetColumnWidth(100), std::max(70.0f, header.GetBestFitWidth(100, true)))
        << "long addresses widen nothing";
    EXPECT_EQ(header.GetBestFitWidth(77, false), 7) << "a column that there is not: inset and grid line";

    // A wide search result changes no width; a double click on a divider does.
    header.SetColumnWidth(5, 70);
    stage.Dialog().Find(u"blur");
    EXPECT_EQ(header.GetColumnWidth(5), 70);
}
