// Rows coming and going, their order and their selection.

#include "TreeFixture.h"

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <QScrollBar>

#include <gmock/gmock.h>

#include <algorithm>

using namespace kioui;
using namespace kioui::controls;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Defer = UI_MultiColumnTree::ScDeferLayoutForOpenAndCloseRow;

TEST(MultiColumnTreeRows, ComeInOneResetHoweverDeeplyDeferred)
{
    TreeFixture test;
    test.header->SetSortColumn(2, true);
    test.resets = 0;
    {
        const Defer outer(*test.tree);
        test.Fill({{u"c"}, {u"a"}});
        test.Append({u"b"});
        test.tree->SortTree();
        EXPECT_THAT(test.Names(), ElementsAre("c", "a", "b")) << "not laid out yet";
        EXPECT_THAT(test.shown, IsEmpty());
        EXPECT_EQ(test.resets, 0);
    }
    EXPECT_EQ(test.resets, 1);
    EXPECT_THAT(test.Names(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(test.shown, ElementsAre("a", "b", "c"));
    {
        const Defer nothing(*test.tree);
    }
    EXPECT_EQ(test.resets, 1);
}

TEST(MultiColumnTreeRows, AppendedOneByOneAreThereAtOnceAndNotSortedOneByOne)
{
    TreeFixture test;
    test.Append({u"b"});
    EXPECT_THAT(test.shown, ElementsAre("b"));
    test.header->SetSortColumn(2, true);
    test.sortTextsAsked = 0;
    constexpr int kMany = 10000;
    for (int number = 0; number < kMany; ++number) {
        test.Append({number % 2 == 0 ? u"a" : u"c"});
    }
    EXPECT_EQ(test.tree->CountRows(false), std::uint32_t(kMany) + 1);
    ui::ScApplication::RunPending();
    EXPECT_EQ(test.sortTextsAsked, kMany + 1);
    EXPECT_EQ(UTF8(test.records[test.tree->GetRowAt(kMany / 2).get()].name), "b");
}

TEST(MultiColumnTreeRows, ThatAreNoneAreRefusedOrIgnored)
{
    TreeFixture test;
    const TreeFixture::Row row = test.Append({u"a"});
    EXPECT_THROW(test.tree->AppendRow(row, nullptr, true), kiocore::kio_exception);
    EXPECT_THROW(test.tree->AppendRow(new UI_MultiColumnTreeRow(true, nullptr), row.get(), true),
                 kiocore::kio_exception);
    EXPECT_THROW(test.tree->SetAllowChildren(true), kiocore::kio_exception);
    test.tree->AppendRow({}, nullptr, true);
    EXPECT_THAT(test.Names(), ElementsAre("a"));
    EXPECT_EQ(test.tree->GetRowAt(1), nullptr);
    EXPECT_EQ(row->GetCellView(3), nullptr);

    const TreeFixture::Row stranger(new UI_MultiColumnTreeRow(true, nullptr));
    EXPECT_EQ(stranger->GetCellView(0), nullptr);
    test.tree->SelectRow(stranger, true, false, true);
    test.tree->ScrollToRow(stranger.get());
    EXPECT_FALSE(test.tree->IsRowVisible(stranger.get()));
    EXPECT_TRUE(test.tree->GetCellBounds(stranger.get(), 0).IsEmpty());
    EXPECT_THAT(test.Selected(), IsEmpty());
    EXPECT_THAT(test.selections, IsEmpty());
}

TEST(MultiColumnTreeRows, AreSelectedByTheProgramWithAndWithoutAWord)
{
    TreeFixture test;
    test.Fill({{u"a"}, {u"b"}, {u"c"}, {u"d"}});
    const struct {
        const char* name;
        const char* row;
        bool select;
        bool extend;
        bool notify;
        std::vector<std::string> selected;
        std::vector<std::string> told;
    } kCases[] = {
        {"one", "b", true, false, true, {"b"}, {"b"}},
        {"again", "b", true, false, true, {"b"}, {}},
        {"another too", "d", true, true, true, {"b", "d"}, {"d"}},
        {"another instead", "a", true, false, true, {"a"}, {"a b d"}},
        {"quietly", "c", true, false, false, {"c"}, {}},
        {"off", "c", false, true, true, {}, {"c"}},
        {"off again", "c", false, true, true, {}, {}},
        {"two quietly", "a", true, false, false, {"a"}, {}},
        {"of which one goes", "b", true, false, true, {"b"}, {"a b"}},
        {"all off", "a", false, false, true, {}, {"b"}},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.name);
        test.selections.clear();
        test.tree->SelectRow(test.Named(one.row), one.select, one.extend, one.notify);
        EXPECT_EQ(test.Selected(), one.selected);
        ASSERT_EQ(test.selections.size(), one.told.size());
        for (std::size_t call = 0; call < one.told.size(); ++call) {
            std::vector<std::string> names;
            for (const char name : test.selections[call]) {
                if (name != ' ') {
                    names.emplace_back(1, name);
                }
            }
            std::sort(names.begin(), names.end());
            std::string sorted;
            for (const std::string& name : names) {
                sorted += (sorted.empty() ? "" : " ") + name;
            }
            EXPECT_EQ(sorted, one.told[call]);
        }
    }
}

TEST(MultiColumnTreeRows, ThatComeBackInTheSameDeferralStaySelectedAndOthersAreForgotten)
{
    TreeFixture test;
    test.FillMany(200);
    const TreeFixture::Row stays = test.tree->GetRowAt(3);
    const TreeFixture::Row goes = test.tree->GetRowAt(4);
    test.tree->SelectRow(stays, true, false, false);
    test.tree->SelectRow(goes, true, true, false);
    test.View().verticalScrollBar()->setValue(400);
    {
        const Defer defer(*test.tree);
        UI_MultiColumnTree::Rows rows;
        for (std::uint32_t place = 0; place < 150; ++place) {
            rows.push_back(test.tree->GetRowAt(place));
        }
        test.tree->RemoveAllRows();
        EXPECT_EQ(goes->GetTree(), nullptr);
        EXPECT_EQ(test.tree->CountRows(false), 0u);
        EXPECT_THAT(test.Selected(), IsEmpty());
        for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
            if (*row != goes) {
                test.tree->AppendRow(*row, nullptr, true);
            }
        }
    }
    EXPECT_THAT(test.Selected(), ElementsAre("00003"));
    EXPECT_THAT(test.selections, IsEmpty()) << "a row that left is not told of";
    EXPECT_EQ(test.View().verticalScrollBar()->value(), 400);
    EXPECT_EQ(test.View().currentIndex().row(), -1) << "the current row went";
    test.tree->AppendRow(goes, nullptr, true);
    EXPECT_THAT(test.Selected(), ElementsAre("00003"));

    test.header->SetSortColumn(2, true);
    EXPECT_THAT(test.Selected(), ElementsAre("00003")) << "sorting deselects nothing";
    test.FillMany(3);
    EXPECT_THAT(test.Selected(), IsEmpty());
    EXPECT_EQ(test.View().verticalScrollBar()->value(), 0);
}

TEST(MultiColumnTreeRows, CanBeSelectedBeforeTheyAreLaidOut)
{
    TreeFixture test;
    test.Fill({{u"a"}});
    test.tree->SelectRow(test.Named("a"), true, false, false);
    {
        const Defer defer(*test.tree);
        test.tree->SelectRow(test.Append({u"b"}), true, false, true);
        EXPECT_THAT(test.Selected(), ElementsAre("b"));
    }
    EXPECT_THAT(test.Selected(), ElementsAre("b"));
    EXPECT_THAT(test.selections, ElementsAre("a b"));
}

TEST(MultiColumnTreeRows, ThatAPersonMayNotSelectTheProgramMay)
{
    TreeFixture test;
    const TreeFixture::Row fixed = test.Append({u"fixed"}, false);
    test.Append({u"free"});
    test.Click(test.MiddleOf(fixed, 1));
    EXPECT_THAT(test.Selected(), IsEmpty());
    test.tree->SelectRow(fixed, true, false, true);
    EXPECT_THAT(test.Selected(), ElementsAre("fixed"));
    test.Click(test.MiddleOf(test.Named("free"), 1));
    EXPECT_THAT(test.Selected(), ElementsAre("free"));
}

TEST(MultiColumnTreeRows, OutliveTheirTreeAndItsWidget)
{
    TreeFixture test;
    test.FillMany(50);
    const TreeFixture::Row row = test.tree->GetRowAt(0);
    const UI_CheckboxPtr box = test.BoxOf(row);
    test.tree->SelectRow(row, true, false, false);

    delete &test.View();
    EXPECT_FALSE(test.tree->IsAlive());
    EXPECT_FALSE(box->IsAlive());
    EXPECT_EQ(test.tree->CountRows(false), 0u);
    EXPECT_EQ(test.tree->GetRowAt(0), nullptr);
    EXPECT_THAT(test.tree->GetSelectedRows(), IsEmpty());
    EXPECT_EQ(row->GetCellView(0), nullptr);
    EXPECT_EQ(test.header->GetCountOfColumns(), 0u);
    EXPECT_EQ(test.header->GetColumnWidth(1), 0);
    test.tree->AppendRow(new UI_MultiColumnTreeRow(true, nullptr), nullptr, true);
    test.tree->SelectRow(row, true, false, true);
    test.tree->ScrollToRow(row.get());
    test.header->SetColumnWidth(1, 5);
    test.header->SetSortColumn(1, true);
    test.header->MoveColumn(1, 1, true);
    test.header->AppendColumn(8, u"", 5);
    test.tree->SortTree();
    {
        const Defer defer(*test.tree);
        test.tree->RemoveAllRows();
    }
    EXPECT_EQ(row->GetTree(), nullptr);

    UI_MultiColumnTreePtr other(new UI_MultiColumnTree);
    const UI_MultiColumnTreeHeaderRowPtr header = other->GetHeaderRow();
    header->AppendColumn(1, u"x", 10);
    other->AppendRow(row, nullptr, true);
    const UI_CheckboxPtr kept(new UI_Checkbox(u""));
    row->GetCellView(0)->SetNode(kept);
    EXPECT_FALSE(row->IsSelected()) << "it was, elsewhere";
    test.window->AddChild(other);
    other->RemoveFromParent();
    other.reset();
    EXPECT_EQ(row->GetTree(), nullptr);
    EXPECT_TRUE(kept->IsAlive());
    EXPECT_EQ(kept->GetParent(), nullptr);
    EXPECT_EQ(header->GetColumnAt(0), UI_MultiColumnTreeHeaderRow::kNoColumn);
    EXPECT_EQ(header->GetColumnWidth(1), 0);
}
