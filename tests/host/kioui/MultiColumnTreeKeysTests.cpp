// The keyboard: in the tree, and in what lies in its cells.

#include "TreeFixture.h"

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <QAccessible>
#include <QApplication>

#include <gmock/gmock.h>

using namespace kioui;
using namespace kioui::controls;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace user = kioui::testing;

namespace {

/// As a dialog has it: the box of the selected row, and none else, is a stop of Tab and has the focus.
void FollowSelectionWithFocus(TreeFixture& ioTest)
{
    ioTest.tree->SetRowsSelectionChangedFunction([&ioTest](const UI_MultiColumnTree::Rows& rows) {
        for (const auto& row : rows) {
            if (const UI_CheckboxPtr box = ioTest.BoxOf(row)) {
                box->SetKeyboardTarget(row->IsSelected());
                if (row->IsSelected()) {
                    box->SetKeyboardFocus(FocusChangeReason::kProgram);
                }
            }
        }
    });
}

} // namespace

TEST(MultiColumnTreeKeys, ArrowsInACellMoveTheSelectionAndSpaceGoesToTheBox)
{
    TreeFixture test;
    test.FillMany(100);
    FollowSelectionWithFocus(test);
    test.tree->SelectRow(test.tree->GetRowAt(0), true, false, true);
    ASSERT_TRUE(test.BoxOf(test.tree->GetRowAt(0))->HasKeyboardFocus());
    const std::uint32_t inView = test.tree->CountRows(true);
    const struct {
        const char* key;
        std::uint32_t atLeast;
        std::uint32_t atMost;
    } kCases[] = {
        {"Down", 1, 1}, {"Down", 2, 2}, {"Up", 1, 1}, {"End", 99, 99}, {"PgUp", 99 - inView, 99 - inView / 2},
        {"Home", 0, 0}};
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.key);
        test.Press(one.key);
        const auto selected = test.tree->GetSelectedRows();
        ASSERT_EQ(selected.size(), 1u);
        const std::uint32_t place = selected[0]->GetKept().index;
        EXPECT_GE(place, one.atLeast);
        EXPECT_LE(place, one.atMost);
        EXPECT_TRUE(test.tree->IsRowVisible(selected[0].get()));
        test.Press("Space");
        EXPECT_EQ(test.records[selected[0].get()].isChecked, true);
        test.Press("Space");
        EXPECT_EQ(test.records[selected[0].get()].isChecked, false);
    }
}

TEST(MultiColumnTreeKeys, SpaceReachesTheBoxAlsoAfterAClickIntoTheSelectedRow)
{
    TreeFixture test;
    test.FillMany(5);
    FollowSelectionWithFocus(test);
    test.Click(test.MiddleOf(test.tree->GetRowAt(2), 1));
    test.Click(test.MiddleOf(test.tree->GetRowAt(2), 1));
    test.Press("Space");
    EXPECT_TRUE(test.records[test.tree->GetRowAt(2).get()].isChecked);
    test.Press("Down");
    EXPECT_THAT(test.Selected(), ElementsAre("00003"));
}

TEST(MultiColumnTreeKeys, FocusLeavesABoxThatScrollsAwayAndComesBackWithIt)
{
    TreeFixture test;
    test.FillMany(100);
    FollowSelectionWithFocus(test);
    test.tree->SelectRow(test.tree->GetRowAt(0), true, false, true);
    const UI_CheckboxPtr box = test.BoxOf(test.tree->GetRowAt(0));
    const PointT<float> place = test.MiddleOf(test.tree->GetRowAt(2), 1);
    user::TurnWheel(*test.window, place, -10);
    EXPECT_FALSE(box->IsVisible());
    EXPECT_TRUE(test.tree->HasKeyboardFocus());
    user::TurnWheel(*test.window, place, 10);
    EXPECT_TRUE(box->HasKeyboardFocus());

    user::TurnWheel(*test.window, place, -10);
    test.button->SetKeyboardFocus(FocusChangeReason::kProgram);
    user::TurnWheel(*test.window, place, 10);
    EXPECT_TRUE(test.button->HasKeyboardFocus()) << "somebody else has it now";

    test.BoxOf(test.tree->GetRowAt(0))->SetKeyboardFocus(FocusChangeReason::kProgram);
    test.FillMany(10);
    EXPECT_TRUE(test.tree->HasKeyboardFocus()) << "the box is gone";
}

TEST(MultiColumnTreeKeys, TabGoesFromTheTreeThroughItsCellsToWhatFollows)
{
    TreeFixture test;
    const boost::intrusive_ptr<UI_TextButton> after(new UI_TextButton(u"After"));
    after->SetNodeID("after");
    test.window->AddChild(after);
    after->SetBounds({200, 0, 300, 30});
    test.button->SetNodeID("before");
    test.tree->SetNodeID("tree");
    test.FillMany(4);
    test.button->SetKeyboardFocus(FocusChangeReason::kProgram);
    const auto focused = [&] {
        const QWidget* widget = QApplication::focusWidget();
        return widget != nullptr ? widget->objectName().toStdString() : std::string();
    };
    const std::vector<std::string> order = {"before",    "tree",      "box 00000", "box 00001",
                                            "box 00002", "box 00003", "after"};
    for (const std::string& id : order) {
        EXPECT_EQ(focused(), id);
        test.Press("Tab");
    }
    EXPECT_EQ(focused(), "before");
    test.header->SetSortColumn(2, false);
    for (const char* id : {"after", "box 00000", "box 00001", "box 00002", "box 00003", "tree"}) {
        test.Press("Shift+Tab");
        EXPECT_EQ(focused(), id) << "sorted the other way round";
    }
}

TEST(MultiColumnTreeKeys, OnlyWhatIsAllowedSelects)
{
    TreeFixture test;
    test.Fill({{u"a"}, {u"b"}, {u"c"}});
    test.header->MoveColumn(2, 0, true);
    test.tree->SetKeyboardFocus(FocusChangeReason::kProgram);
    test.Press("Ctrl+A");
    EXPECT_THAT(test.Selected(), ElementsAre("a", "b", "c"));
    test.tree->SetSelectAllByAKey(false);
    test.tree->SelectRow(test.Named("a"), true, false, false);
    test.Press("Ctrl+A");
    EXPECT_THAT(test.Selected(), ElementsAre("a"));

    test.Click(test.MiddleOf(test.Named("a"), 0));
    test.tree->SetSelectByNonArrowKeys(false);
    test.Press("c");
    EXPECT_THAT(test.Selected(), ElementsAre("a"));
    test.tree->SetSelectByNonArrowKeys(true);
    test.Press("c");
    EXPECT_THAT(test.Selected(), ElementsAre("c"));

    test.tree->SetUserSelectableRows(false);
    test.Click(test.MiddleOf(test.Named("b"), 1));
    test.Press("Down");
    EXPECT_THAT(test.Selected(), ElementsAre("c"));
    test.tree->SelectRow(test.Named("b"), true, false, false);
    EXPECT_THAT(test.Selected(), ElementsAre("b")) << "the program can";
    test.tree->SetUserSelectableRows(true);
    test.Press("Down");
    EXPECT_THAT(test.Selected(), ElementsAre("c")) << "goes on from where the program was";
}

TEST(MultiColumnTreeKeys, WhoCannotSeeIsToldTheTexts)
{
    TreeFixture test;
    test.Fill({{u"a", u"/x", true}, {u"b", u"/y"}});
    QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&test.View());
    ASSERT_NE(tree, nullptr);
    QAccessibleTableInterface* table = tree->tableInterface();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->cellAt(0, 1)->text(QAccessible::Name), QString("a"));
    EXPECT_EQ(table->cellAt(1, 2)->text(QAccessible::Name), QString("/y"));
    EXPECT_EQ(table->columnDescription(1), QString("Name"));
    EXPECT_EQ(test.tree->GetCellText(test.Named("a").get(), 0), u"2a");
    EXPECT_EQ(test.tree->GetCellText(test.Named("a").get(), 3), u"");
}
