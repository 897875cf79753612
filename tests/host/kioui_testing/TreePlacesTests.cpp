#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/ui/Window.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include <kiocore/serialization/JSON.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

using namespace kioui;
using namespace controls;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
namespace user = kioui::testing;
namespace json = kiocore::serialization;

namespace {

constexpr std::uint32_t kName = 20;
constexpr std::uint32_t kEnabled = 10;
constexpr std::uint32_t kPath = 30;

/// 100 rows, a checkbox in each, wider than the window.
class TreePlaces : public ::testing::Test {
protected:
    TreePlaces() : window(new ui::UI_OSWindow(u"Window", nullptr)), tree(new UI_MultiColumnTree)
    {
        window->SetSize({300, 200});
        tree->SetNodeID("Tree");
        window->AddChild(tree);
        tree->SetBounds({10, 10, 290, 190});
        tree->SetAllowChildren(false);
        tree->SetUserSelectableRows(true);
        tree->GetHeaderRow()->AppendColumn(kName, u"Name", 100);
        tree->GetHeaderRow()->AppendColumn(kEnabled, u"Enabled", 60);
        tree->GetHeaderRow()->AppendColumn(kPath, u"Path", 400);
        tree->SetCellTextFunction([this](UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition) {
            const std::uint32_t column = tree->GetHeaderRow()->GetColumnAt(inPosition);
            return column == kName ? kiocore::utility::ToUTF16("Row " + std::to_string(IndexOf(inRow)))
                                   : ui::UTF16String();
        });
        tree->SetCellSortDataFunction([this](UI_MultiColumnTreeRow* inRow, std::uint32_t) {
            return kiocore::utility::ToUTF16(std::to_string(100 + IndexOf(inRow)));
        });
        for (int i = 0; i < 100; ++i) {
            rows.emplace_back(new UI_MultiColumnTreeRow(true, tree.get()));
            UI_CheckboxPtr box(new UI_Checkbox(u""));
            box->SetNodeID("Box");
            UI_CellView* const cell = rows.back()->GetCellView(1);
            cell->SetNode(box);
            cell->CentreNode(true);
            cell->SetMouseEventFunction([this, i](UI_CellView*, ui::UI_MouseEvent& inEvent) {
                if (inEvent.type == ui::MouseEventType::kPress) {
                    pressed.push_back(i);
                }
                return true;
            });
        }
        window->UI_Show(true);
        ui::ScApplication::RunPending();
    }
    int IndexOf(const UI_MultiColumnTreeRow* inRow) const
    {
        return int(std::find(rows.begin(), rows.end(), inRow) - rows.begin());
    }

    support::ScTestApplication application;
    boost::intrusive_ptr<ui::UI_OSWindow> window;
    UI_MultiColumnTreePtr tree;
    UI_MultiColumnTree::Rows rows;
    std::vector<int> pressed;
};

} // namespace

TEST_F(TreePlaces, ACellIsHitWhereverItLies)
{
    for (const std::size_t index : {0u, 99u, 50u, 0u}) {
        user::Click(*window, user::MiddleOfCell(*tree, *rows[index], 1));
    }
    EXPECT_THAT(pressed, ElementsAre(0, 99, 50, 0));
    user::Click(*window, user::MiddleOfCell(*tree, *rows[7], 0));
    EXPECT_THAT(tree->GetSelectedRows(), ElementsAre(rows[7]));
}

TEST_F(TreePlaces, ATitleIsHitAfterColumnsHaveMoved)
{
    const auto header = tree->GetHeaderRow();
    header->MoveColumn(kEnabled, 0, true);
    header->SetColumnWidth(kEnabled, 30);
    user::Click(*window, user::MiddleOfTitle(*tree, kName));
    EXPECT_EQ(header->GetSortColumn(), kName);
    user::Click(*window, user::MiddleOfTitle(*tree, kEnabled));
    EXPECT_EQ(header->GetSortColumn(), kEnabled);
}

TEST_F(TreePlaces, WhatIsNotThereIsNamed)
{
    const auto message = [](const std::function<void()>& inAction) -> std::string {
        try {
            inAction();
        } catch (const kiocore::kio_exception& error) {
            return error.what();
        }
        return "nothing thrown";
    };
    EXPECT_THAT(message([&] { user::MiddleOfTitle(*tree, 7); }), HasSubstr("\"Tree\" has no column 7"));
    EXPECT_THAT(message([&] { user::MiddleOfCell(*tree, *rows[0], 3); }),
                HasSubstr("\"Tree\" has no cell of that row in column 3; it has 100 rows and 3 columns"));
    const UI_MultiColumnTreeRowPtr row = rows[0];
    tree->RemoveAllRows();
    EXPECT_THAT(message([&] { user::MiddleOfCell(*tree, *row, 0); }), HasSubstr("it has 0 rows"));
}

TEST_F(TreePlaces, ItsRowsInViewAreDescribed)
{
    tree->GetHeaderRow()->SetSortColumn(kName, false);
    tree->SelectRow(rows[99], true, false, false);
    tree->ScrollToRow(rows[99].get());
    NodeCast<UI_Checkbox>(rows[99]->GetCellView(1)->GetNode().get()).SetChecked(true);
    ui::ScApplication::RunPending();
    const std::string text = user::DescribeNodes(*tree);
    const json::JSONObject described = json::AsObject(json::GetJSONFromUTF8String(text));
    EXPECT_EQ(json::AsArray(described.at("children")).size(), 0u) << "they come with their cells";
    EXPECT_EQ(json::AsInt64(described.at("rowCount"), 0, 1000), 100);
    EXPECT_EQ(
        json::GetJSONUTF8String(described.at("columns"), false),
        R"([{"id":20,"sort":"descending","title":"Name","width":100},)"
        R"({"id":10,"sort":"","title":"Enabled","width":60},{"id":30,"sort":"","title":"Path","width":400}])");
    const json::JSONArray& inView = json::AsArray(described.at("rows"));
    EXPECT_GT(inView.size(), 2u);
    EXPECT_LT(inView.size(), 20u);
    const json::JSONObject& first = json::AsObject(inView.front());
    EXPECT_EQ(json::AsInt64(first.at("number"), 1, 100), 1);
    EXPECT_EQ(json::GetJSONUTF8String(first.at("cells"), false), R"(["Row 99","",""])");
    EXPECT_EQ(json::GetJSONUTF8String(first.at("state"), false), R"(["selected"])");
    const json::JSONObject& box = json::AsObject(json::AsArray(first.at("nodes")).at(0));
    EXPECT_EQ(json::AsText(box.at("id")), "Box");
    EXPECT_THAT(json::GetJSONUTF8String(box.at("state"), false), HasSubstr("\"checked\""));
}
