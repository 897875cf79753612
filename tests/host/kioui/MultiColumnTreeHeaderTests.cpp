// Columns: order, widths, sorting, and what the mouse does to titles and dividers.

#include "TreeFixture.h"

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <gmock/gmock.h>

#include <cmath>

using namespace kioui;
using namespace kioui::controls;
using ::testing::ElementsAre;
namespace user = kioui::testing;
using HeaderRow = UI_MultiColumnTreeHeaderRow;

namespace {

std::vector<std::uint32_t> Order(const HeaderRow& inHeader)
{
    std::vector<std::uint32_t> ids;
    for (std::uint32_t position = 0; position < inHeader.GetCountOfColumns(); ++position) {
        ids.push_back(inHeader.GetColumnAt(position));
    }
    return ids;
}

void Drag(TreeFixture& ioTest, PointT<float> inFrom, PointT<float> inTo)
{
    user::PressMouse(*ioTest.window, inFrom);
    user::MoveMouse(*ioTest.window, {(inFrom.x + inTo.x) / 2, inTo.y});
    user::MoveMouse(*ioTest.window, inTo);
    user::ReleaseMouse(*ioTest.window, inTo);
}

} // namespace

TEST(MultiColumnTreeHeader, KnowsColumnsByIDAndPosition)
{
    TreeFixture test;
    HeaderRow& header = *test.header;
    EXPECT_THAT(Order(header), ElementsAre(1, 2, 3));
    EXPECT_EQ(header.GetColumnAt(3), HeaderRow::kNoColumn);
    EXPECT_EQ(header.GetIndexOfColumn(9), HeaderRow::kNoColumn);
    EXPECT_EQ(header.GetColumnTitle(2), u"Name");
    EXPECT_EQ(header.GetColumnTitle(9), u"");
    EXPECT_EQ(header.GetColumnWidth(9), 0);
    EXPECT_THROW(header.AppendColumn(2, u"Again", 10), kiocore::kio_exception);
    EXPECT_EQ(header.GetColumnTitle(2), u"Name");

    const struct {
        const char* name;
        std::uint32_t id;
        std::uint32_t position;
        std::vector<std::uint32_t> order;
    } kCases[] = {
        {"to the front", 3, 0, {3, 1, 2}},    {"where it is", 1, 1, {3, 1, 2}},
        {"beyond the end", 3, 77, {1, 2, 3}}, {"of an unknown column", 9, 0, {1, 2, 3}},
        {"to the middle", 1, 1, {2, 1, 3}},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.name);
        header.MoveColumn(one.id, one.position, true);
        EXPECT_EQ(Order(header), one.order);
    }
    header.AppendColumn(7, u"New", 33);
    EXPECT_THAT(Order(header), ElementsAre(2, 1, 3, 7));
    EXPECT_EQ(header.GetColumnWidth(7), 33);
    EXPECT_EQ(header.GetColumnWidth(1), 70) << "its column went along";
}

TEST(MultiColumnTreeHeader, KeepsAnyWidthInWholeUnits)
{
    TreeFixture test;
    const struct {
        float given;
        float kept;
    } kCases[] = {{200, 200}, {0, 0},          {1, 1},   {5.4F, 5},          {5.5F, 6},
                  {-3, 0},    {1e9F, 1048575}, {40, 40}, {std::nanf(""), 40}};
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.given);
        test.header->SetColumnWidth(2, one.given);
        EXPECT_EQ(test.header->GetColumnWidth(2), one.kept);
    }
    EXPECT_EQ(test.header->GetColumnWidth(1), 70);
    EXPECT_EQ(test.header->GetColumnWidth(3), 150) << "the last column was stretched";
}

TEST(MultiColumnTreeHeader, AColumnOfNoWidthCanBeDraggedWiderWhereverItStands)
{
    for (const std::uint32_t position : {0U, 1U, 2U}) {
        SCOPED_TRACE(position);
        TreeFixture test;
        test.header->MoveColumn(2, position, true);
        test.header->SetColumnWidth(2, 0);
        ui::ScApplication::RunPending();
        EXPECT_EQ(test.header->GetColumnWidth(2), 0);
        EXPECT_EQ(test.header->GetIndexOfColumn(2), position);
        Drag(test, test.BesideDivider(2, 1), test.BesideDivider(2, 51));
        EXPECT_EQ(test.header->GetColumnWidth(2), 50);
        EXPECT_EQ(test.header->GetColumnWidth(1), 70);
        EXPECT_EQ(test.header->GetColumnWidth(3), 150);
        Drag(test, test.BesideDivider(2, 0), test.BesideDivider(2, -50));
        EXPECT_EQ(test.header->GetColumnWidth(2), 0) << "dragged shut";
    }
}

TEST(MultiColumnTreeHeader, ADragOfATitleMovesTheColumn)
{
    TreeFixture test;
    test.Fill({{u"a"}});
    Drag(test, test.BesideDivider(3, -75), test.BesideDivider(1, -60));
    EXPECT_THAT(Order(*test.header), ElementsAre(3, 1, 2));
    EXPECT_EQ(test.header->GetSortColumn(), HeaderRow::kNoColumn) << "a drag is no click";
    Drag(test, test.BesideDivider(3, -75), test.BesideDivider(2, -10));
    EXPECT_THAT(Order(*test.header), ElementsAre(1, 2, 3)) << "the first one, too";
    const RectT<float> cell = test.tree->GetCellBounds(test.Named("a").get(), 1);
    EXPECT_EQ(cell.left, 70 + test.View().viewport()->x());
}

TEST(MultiColumnTreeHeader, ADoubleClickOnADividerAsksForTheBestWidth)
{
    TreeFixture test;
    user::DoubleClick(*test.window, test.BesideDivider(2, -1));
    EXPECT_EQ(test.header->GetColumnWidth(2), 140) << "nobody knows a best width";
    std::vector<std::pair<std::uint32_t, bool>> asked;
    test.header->SetBestFitWidthFunction([&asked](std::uint32_t id, bool titleOnly) {
        asked.emplace_back(id, titleOnly);
        return 90.0F + float(id);
    });
    user::DoubleClick(*test.window, test.BesideDivider(2, -1));
    user::DoubleClick(*test.window, test.BesideDivider(3, 1));
    EXPECT_THAT(asked, ElementsAre(std::pair(2U, false), std::pair(3U, false)));
    EXPECT_EQ(test.header->GetColumnWidth(2), 92);
    EXPECT_EQ(test.header->GetColumnWidth(3), 93);
    EXPECT_EQ(test.header->GetBestFitWidth(1, true), 91);
}

TEST(MultiColumnTreeHeader, AClickOnATitleSortsAndAnotherReverses)
{
    TreeFixture test;
    test.Fill({{u"b", u"same"}, {u"c", u"same"}, {u"a", u"same"}, {u"d", u"other"}});
    EXPECT_EQ(test.header->GetSortColumn(), HeaderRow::kNoColumn);
    EXPECT_THAT(test.Names(), ElementsAre("b", "c", "a", "d"));
    const PointT<float> name = test.BesideDivider(2, -70);
    const PointT<float> path = test.BesideDivider(3, -70);

    test.Click(name);
    EXPECT_EQ(test.header->GetSortColumn(), 2u);
    EXPECT_TRUE(test.header->IsSortAscending());
    EXPECT_THAT(test.Names(), ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(test.sortTextsAsked, 4);
    test.Click(name);
    EXPECT_FALSE(test.header->IsSortAscending());
    EXPECT_THAT(test.Names(), ElementsAre("d", "c", "b", "a"));
    EXPECT_EQ(test.sortTextsAsked, 8);
    test.Click(path);
    EXPECT_TRUE(test.header->IsSortAscending());
    EXPECT_THAT(test.Names(), ElementsAre("d", "c", "b", "a")) << "equal texts stay as they stood";
    test.Click(path);
    EXPECT_THAT(test.Names(), ElementsAre("c", "b", "a", "d")) << "also the other way round";

    test.header->MoveColumn(3, 0, true);
    EXPECT_EQ(test.header->GetSortColumn(), 3u);
    test.Fill({{u"x", u"1"}, {u"y", u"2"}, {u"z", u"3"}});
    EXPECT_THAT(test.Names(), ElementsAre("z", "y", "x")) << "what comes later is sorted, too";
    test.records[test.Named("y").get()].path = u"9";
    test.header->SetSortColumn(3, false);
    EXPECT_THAT(test.Names(), ElementsAre("y", "z", "x")) << "texts have changed meanwhile";
}

TEST(MultiColumnTreeHeader, SortsPartsOfWhatItSortedBeforeAndWhatIsNew)
{
    TreeFixture test;
    test.header->SetSortColumn(2, true);
    test.Fill({{u"d"}, {u"b"}, {u"e"}, {u"a"}});
    EXPECT_THAT(test.Names(), ElementsAre("a", "b", "d", "e"));
    test.Fill({{u"e"}, {u"a"}, {u"e"}, {u"b"}});
    EXPECT_THAT(test.Names(), ElementsAre("a", "b", "e", "e")) << "all known";
    test.Fill({{u"e"}, {u"c"}, {u"a"}});
    EXPECT_THAT(test.Names(), ElementsAre("a", "c", "e")) << "one new";
    test.header->SetSortColumn(2, false);
    test.Fill({{u"b"}, {u"d"}, {u"e"}, {u"a"}, {u"c"}});
    EXPECT_THAT(test.Names(), ElementsAre("e", "d", "c", "b", "a")) << "some forgotten";
}
