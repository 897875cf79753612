// How the plug-in manager's columns and checkbox come back the next time.

#include "ManagerStage.h"

#include <kiocore/serialization/JSON.h>

#include <gmock/gmock.h>

using namespace dialogtests;
using namespace kiocore::serialization;
using testing::ElementsAre;

namespace {

std::vector<std::uint32_t> ColumnsOf(ManagerStage& inStage)
{
    std::vector<std::uint32_t> ids;
    for (std::uint32_t position = 0; position < inStage.Header().GetCountOfColumns(); ++position) {
        ids.push_back(inStage.Header().GetColumnAt(position));
    }
    return ids;
}

} // namespace

TEST(PluginManagerState, SaysWhereColumnsStandAndHowWideTheyAre)
{
    ManagerStage stage({u"Kind"}, true);
    stage.Add(u"Blur", {true});
    stage.Open();
    EXPECT_THAT(ColumnsOf(stage), ElementsAre(1, 2, 4, 100, 3));
    stage.Header().MoveColumn(3, 0, true);
    stage.Header().SetColumnWidth(2, 200);

    const JSON state = GetJSONFromUTF8String(stage.Dialog().GetDialogState());
    const JSONObject& root = AsObject(state);
    ASSERT_EQ(root.size(), 2u);
    const JSONArray& tree = AsArray(AsArray(root.at("trees")).at(0));
    EXPECT_EQ(AsUInt64(tree.at(0), 0), 0u);
    const JSONArray& columns = AsArray(AsObject(tree.at(1)).at("columns"));
    ASSERT_EQ(columns.size(), 5u);
    EXPECT_EQ(AsInt64(AsObject(columns[0]).at("id"), 0, 100), 3);
    EXPECT_EQ(AsInt64(AsObject(columns[0]).at("index"), 0, 100), 0);
    EXPECT_EQ(AsInt64(AsObject(columns[2]).at("id"), 0, 100), 2);
    EXPECT_EQ(AsDouble(AsObject(columns[2]).at("width")), 200);
    EXPECT_TRUE(AsBool(AsObject(AsArray(AsArray(root.at("checkboxes")).at(0)).at(1)).at("checked")));

    stage.Dialog().HideFirstPartyEffects();
    const JSON hidden = GetJSONFromUTF8String(stage.Dialog().GetDialogState());
    EXPECT_TRUE(AsArray(AsObject(hidden).at("checkboxes")).empty());
}

TEST(PluginManagerState, ComesBackAsFarAsItFits)
{
    const struct {
        const char* name;
        const char* state;
        std::vector<std::uint32_t> columns;
        float nameWidth;
        std::uint32_t rows;
    } kCases[] = {
        {"empty", "", {1, 2, 4, 3}, 140, 1},
        {"other order and width",
         R"({"trees":[[0,{"columns":[{"id":2,"width":210,"index":1},{"id":3,"width":99,"index":0}]}]]})",
         {3, 2, 1, 4},
         210,
         1},
        {"a column that is no more leaves no gap",
         R"({"trees":[[0,{"columns":[{"id":100,"width":50,"index":0},{"id":4,"width":80,"index":1},
             {"id":77,"width":1,"index":2},{"id":2,"width":150,"index":3}]}]],"checkboxes":[]})",
         {4, 2, 1, 3},
         150,
         1},
        {"what is missing is 0, also a width",
         R"({"trees":[[0,{"columns":[{"id":2}]}]]})",
         {2, 1, 4, 3},
         0,
         1},
        {"other trees and boxes are passed over",
         R"({"trees":[[7,{"columns":[{"id":3,"index":0}]}]],"checkboxes":[[3,{"checked":false}]]})",
         {1, 2, 4, 3},
         140,
         1},
        {"the box, and the rows with it", R"({"checkboxes":[[0,{"checked":false}]]})", {1, 2, 4, 3}, 140, 2},
        {"a missing state of the box is off", R"({"checkboxes":[[0,{}]]})", {1, 2, 4, 3}, 140, 2},
        {"within a wrapping",
         R"({"SerializerWrappedObject":{"checkboxes":[[0,{"checked":false}]]},"trees":0})",
         {1, 2, 4, 3},
         140,
         2},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        ManagerStage stage({u"Kind"});
        stage.Add(u"Blur");
        stage.AddFirstParty(u"Ours");
        stage.Open();
        stage.Header().SetColumnWidth(2, 140);
        stage.Dialog().SetDialogState(test.state);
        EXPECT_EQ(ColumnsOf(stage), test.columns);
        EXPECT_EQ(stage.Header().GetColumnWidth(2), test.nameWidth);
        EXPECT_EQ(stage.Dialog().CountRows(), test.rows);
    }
}

TEST(PluginManagerState, WhatItGivesItTakes)
{
    ManagerStage stage({u"Kind"}, true);
    stage.Add(u"Blur");
    stage.Open();
    stage.Header().MoveColumn(100, 1, true);
    stage.Header().SetColumnWidth(1, 33);
    stage.Click("OnlyShowThirdPartyEffectsCheckbox");
    const std::string state = stage.Dialog().GetDialogState();
    stage.Header().MoveColumn(3, 0, true);
    stage.Header().SetColumnWidth(1, 44);
    stage.Click("OnlyShowThirdPartyEffectsCheckbox");
    EXPECT_NE(stage.Dialog().GetDialogState(), state);
    stage.Dialog().SetDialogState(state);
    EXPECT_EQ(stage.Dialog().GetDialogState(), state);
}

TEST(PluginManagerState, DamagedAnywhereItChangesNothing)
{
    ManagerStage stage({u"Kind"});
    stage.Add(u"Blur");
    stage.Open();
    const std::string before = stage.Dialog().GetDialogState();
    stage.Header().MoveColumn(3, 0, true);
    stage.Click("OnlyShowThirdPartyEffectsCheckbox");
    const std::string other = stage.Dialog().GetDialogState();
    stage.Dialog().SetDialogState(before);
    ASSERT_EQ(stage.Dialog().GetDialogState(), before);

    for (std::size_t size = 1; size < other.size(); ++size) {
        stage.Dialog().SetDialogState(other.substr(0, size));
        ASSERT_EQ(stage.Dialog().GetDialogState(), before) << "cut off after " << size;
    }
    // Another kind of value in each place that holds one.
    const char* kWrong[] = {
        R"([])",
        R"("text")",
        R"(7)",
        R"({"trees":{}})",
        R"({"trees":[0]})",
        R"({"trees":[[]]})",
        R"({"trees":[[0]]})",
        R"({"trees":[["0",{}]]})",
        R"({"trees":[[-1,{}]]})",
        R"({"trees":[[4294967296,{}]]})",
        R"({"trees":[[0,[]]]})",
        R"({"trees":[[0,{"columns":{}}]]})",
        R"({"trees":[[0,{"columns":[1]}]]})",
        R"({"trees":[[0,{"columns":[{"id":"3"}]}]]})",
        R"({"trees":[[0,{"columns":[{"id":-3}]}]]})",
        R"({"trees":[[0,{"columns":[{"width":"wide"}]}]]})",
        R"({"trees":[[0,{"columns":[{"width":1e39}]}]]})",
        R"({"trees":[[0,{"columns":[{"index":1.5}]}]]})",
        R"({"checkboxes":{}})",
        R"({"checkboxes":[[0,{"checked":1}]]})",
        R"({"SerializerWrappedObject":[]})",
    };
    for (const std::string wrong : kWrong) {
        stage.Dialog().SetDialogState(wrong);
        ASSERT_EQ(stage.Dialog().GetDialogState(), before) << wrong;
        if (wrong.starts_with(R"({"trees")")) { // with something right before it, which must not be applied
            const std::string text = R"({"checkboxes":[[0,{"checked":false}]],)" + wrong.substr(1);
            stage.Dialog().SetDialogState(text);
            ASSERT_EQ(stage.Dialog().GetDialogState(), before) << text;
        }
    }
}
