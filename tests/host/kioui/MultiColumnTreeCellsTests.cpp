// Nodes in cells: when they are made, where they lie, and what the mouse does there.

#include "TreeFixture.h"

#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <QCheckBox>
#include <QScrollBar>

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

using namespace kioui;
using namespace kioui::controls;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace user = kioui::testing;

namespace {

const std::vector<TreeFixture::Record> kThree = {{u"a"}, {u"b"}, {u"c"}};

QWidget* WidgetOf(const ui::UI_Node& inNode)
{
    return inNode.GetImpl().widget;
}

} // namespace

TEST(MultiColumnTreeCells, AreMadeForRowsInViewOnceAndBeforeAnybodyAsks)
{
    TreeFixture test;
    test.FillMany(10000);
    const auto inView = test.tree->CountRows(true);
    ASSERT_GT(inView, 5u);
    ASSERT_LT(inView, 30u);
    EXPECT_EQ(test.boxesMade, int(inView));
    EXPECT_EQ(test.shown.size(), inView);
    EXPECT_EQ(test.tree->GetChildren().size(), inView);

    ui::ScApplication::RunPending();
    test.tree->SelectRow(test.tree->GetRowAt(1), true, false, true);
    test.header->SetSortColumn(2, true);
    EXPECT_EQ(test.shown.size(), inView) << "told twice of rows that stayed in view";

    test.tree->ScrollToRow(test.tree->GetRowAt(9999).get());
    EXPECT_TRUE(test.tree->IsRowVisible(test.tree->GetRowAt(9999).get()));
    EXPECT_EQ(test.shown.back(), "09999");
    EXPECT_FALSE(test.tree->IsRowVisible(test.tree->GetRowAt(0).get()));
    EXPECT_LE(test.boxesMade, int(2 * inView + 1));
    const int made = test.boxesMade;
    test.tree->ScrollToRow(test.tree->GetRowAt(0).get());
    EXPECT_EQ(test.shown.back(), UTF8(test.records[test.tree->GetRowAt(inView - 1).get()].name));
    EXPECT_EQ(test.boxesMade, made) << "boxes were made again";
    EXPECT_LE(test.tree->GetChildren().size(), inView + 1);
}

TEST(MultiColumnTreeCells, AreMadeOnlyOnceTheTreeCanBeSeen)
{
    TreeFixture test;
    test.window->UI_Show(false);
    test.Fill(kThree);
    ui::ScApplication::RunPending();
    EXPECT_THAT(test.shown, IsEmpty());
    EXPECT_EQ(test.tree->CountRows(true), 0u);
    EXPECT_FALSE(test.tree->IsRowVisible(test.Named("a").get()));
    test.window->UI_Show(true);
    EXPECT_THAT(test.shown, ElementsAre("a", "b", "c"));
}

TEST(MultiColumnTreeCells, OfRowsOutOfViewLieOutsideOfWhatScrolls)
{
    TreeFixture test;
    test.FillMany(500);
    QWidget* const viewport = test.View().viewport();
    std::size_t most = 0;
    for (int row = 0; row < 500; row += 5) {
        test.tree->ScrollToRow(test.tree->GetRowAt(std::uint32_t(row)).get());
        most = std::max(most, std::size_t(viewport->findChildren<QWidget*>().size()));
    }
    EXPECT_GT(test.boxesMade, 490);
    EXPECT_LE(most, test.tree->CountRows(true) + 1);
    const UI_CheckboxPtr first = test.BoxOf(test.tree->GetRowAt(0));
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->IsVisible());
    test.tree->ScrollToRow(test.tree->GetRowAt(0).get());
    EXPECT_TRUE(first->IsVisible());
    EXPECT_EQ(WidgetOf(*first)->parentWidget(), viewport);
}

TEST(MultiColumnTreeCells, FollowRowsAndColumns)
{
    TreeFixture test;
    test.FillMany(100);
    const auto expectOver = [&test](const char* inWhen) {
        SCOPED_TRACE(inWhen);
        const std::uint32_t position = test.header->GetIndexOfColumn(1);
        for (std::uint32_t place = 0; place < 100; ++place) {
            const TreeFixture::Row row = test.tree->GetRowAt(place);
            if (!test.tree->IsRowVisible(row.get())) {
                continue;
            }
            const RectT<float> cell = test.tree->GetCellBounds(row.get(), position);
            const UI_CheckboxPtr box = test.BoxOf(row);
            const QRect over = WidgetOf(*box)->geometry().translated(test.View().viewport()->pos());
            const RectT<float> bounds{float(over.left()), float(over.top()), float(over.right() + 1),
                                      float(over.bottom() + 1)};
            EXPECT_EQ(bounds.Width(), box->GetPreferredSize().width);
            EXPECT_EQ(bounds.Height(), box->GetPreferredSize().height);
            EXPECT_NEAR((bounds.left + bounds.right) / 2, (cell.left + cell.right - 1) / 2, 0.5F);
            EXPECT_NEAR((bounds.top + bounds.bottom) / 2, (cell.top + cell.bottom) / 2, 0.5F);
            EXPECT_EQ(box->GetNodeID(), "box " + UTF8(test.records[row.get()].name));
        }
    };
    expectOver("at first");
    user::TurnWheel(*test.window, test.MiddleOf(test.tree->GetRowAt(2), 1), -2);
    EXPECT_FALSE(test.tree->IsRowVisible(test.tree->GetRowAt(0).get()));
    expectOver("the wheel was turned");
    test.header->MoveColumn(1, 2, true);
    expectOver("the column was moved");
    test.header->SetColumnWidth(2, 300);
    expectOver("a column before it is wider");
    test.View().horizontalScrollBar()->setValue(40);
    expectOver("scrolled to the right");
    test.header->SetSortColumn(2, false);
    expectOver("sorted");
    test.tree->SetBounds({0, 30, 500, 160});
    test.tree->ScrollToRow(test.tree->GetRowAt(99).get());
    expectOver("smaller and scrolled");

    test.header->SetColumnWidth(1, 0);
    EXPECT_FALSE(test.BoxOf(test.tree->GetRowAt(99))->IsVisible());
    test.header->SetColumnWidth(1, 60);
    EXPECT_TRUE(test.BoxOf(test.tree->GetRowAt(99))->IsVisible());
    expectOver("the column was closed and opened");
}

TEST(MultiColumnTreeCells, SeePressAndReleaseWhereverInTheCell)
{
    TreeFixture test;
    test.Fill(kThree);
    const TreeFixture::Row a = test.Named("a");
    const TreeFixture::Row b = test.Named("b");
    const RectT<float> cell = test.tree->GetCellBounds(a.get(), 0);
    const PointT<float> onBox = test.MiddleOf(a, 0);
    const PointT<float> besideBox = test.tree->ToWindow({cell.left + 2, cell.top + 2});
    const struct {
        const char* name;
        PointT<float> press;
        PointT<float> release;
        bool aToggles;
        const char* seen;
    } kCases[] = {
        {"on the box", onBox, onBox, true, "press a,release a"},
        {"beside it", besideBox, besideBox, true, "press a,release a"},
        {"from the box to beside it", onBox, besideBox, true, "press a,release a"},
        {"from one cell to another", onBox, test.MiddleOf(b, 0), false, "press a,release b"},
        {"out of a text", test.MiddleOf(a, 1), onBox, false, "release a"},
        {"into a text", onBox, test.MiddleOf(a, 1), false, "press a"},
        {"out of the tree", onBox, {10, 10}, false, "press a"},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.name);
        test.mouse.clear();
        const bool before = test.BoxOf(a)->IsChecked();
        user::PressMouse(*test.window, one.press);
        user::ReleaseMouse(*test.window, one.release);
        std::string seen;
        for (const std::string& what : test.mouse) {
            seen += (seen.empty() ? "" : ",") + what;
        }
        EXPECT_EQ(seen, one.seen);
        EXPECT_EQ(test.BoxOf(a)->IsChecked() != before, one.aToggles);
        EXPECT_EQ(test.records[a.get()].isChecked, test.BoxOf(a)->IsChecked());
        EXPECT_FALSE(test.BoxOf(b)->IsChecked());
    }
    test.mouse.clear();
    user::DoubleClick(*test.window, onBox);
    EXPECT_THAT(test.mouse, ElementsAre("press a", "release a", "double press a", "release a"));
}

TEST(MultiColumnTreeCells, ShowABoxAsPressedWhileThePointerIsOverThePressedCell)
{
    TreeFixture test;
    test.Fill(kThree);
    auto* box = ui::WidgetOf<QCheckBox>(*test.BoxOf(test.Named("a")));
    const PointT<float> cell = test.MiddleOf(test.Named("a"), 0);
    const PointT<float> other = test.MiddleOf(test.Named("b"), 0);
    user::PressMouse(*test.window, cell);
    EXPECT_TRUE(box->isDown());
    user::MoveMouse(*test.window, other);
    EXPECT_FALSE(box->isDown());
    user::MoveMouse(*test.window, cell);
    EXPECT_TRUE(box->isDown());
    user::ReleaseMouse(*test.window, cell);
    EXPECT_FALSE(box->isDown());

    const UI_CheckboxPtr kept = test.BoxOf(test.Named("a"));
    user::PressMouse(*test.window, cell);
    test.Fill(kThree);
    EXPECT_FALSE(ui::WidgetOf<QCheckBox>(*kept)->isDown()) << "the row went while its box was pressed";
    user::ReleaseMouse(*test.window, cell);
    EXPECT_FALSE(test.BoxOf(test.Named("a"))->IsChecked());
}

TEST(MultiColumnTreeCells, SelectTheirRowUnlessThePressWasDealtWith)
{
    TreeFixture test;
    test.Fill(kThree);
    test.Click(test.MiddleOf(test.Named("b"), 0));
    EXPECT_THAT(test.Selected(), ElementsAre("b"));
    test.isPressDealtWith = true;
    user::PressMouse(*test.window, test.MiddleOf(test.Named("c"), 0));
    user::MoveMouse(*test.window, test.MiddleOf(test.Named("a"), 0));
    user::ReleaseMouse(*test.window, test.MiddleOf(test.Named("a"), 0));
    EXPECT_THAT(test.Selected(), ElementsAre("b"));
}

TEST(MultiColumnTreeCells, GiveUpANodeThatIsPutElsewhereOrTakenOut)
{
    TreeFixture test;
    test.Fill(kThree);
    const TreeFixture::Row a = test.Named("a");
    const UI_CheckboxPtr box = test.BoxOf(a);
    EXPECT_EQ(box->GetParent(), test.tree.get());
    EXPECT_EQ(test.window->FindNode("box a"), box.get());
    test.window->AddChild(box);
    EXPECT_FALSE(a->GetCellView(0)->GetNode());
    EXPECT_TRUE(box->IsVisible());
    EXPECT_FALSE(WidgetOf(*box)->testAttribute(Qt::WA_TransparentForMouseEvents));

    UI_CellView* const cell = test.Named("b")->GetCellView(0);
    cell->SetNode(box);
    EXPECT_EQ(box->GetParent(), test.tree.get());
    EXPECT_EQ(test.window->FindNode("box b"), nullptr);
    box->RemoveFromParent();
    EXPECT_EQ(box->GetParent(), nullptr);
    EXPECT_FALSE(cell->GetNode());
    EXPECT_TRUE(box->IsAlive());
}

TEST(MultiColumnTreeCells, TheirFunctionsMayFillTheTreeAnew)
{
    const struct {
        const char* name;
        std::function<void(TreeFixture&)> arm;
        std::function<void(TreeFixture&)> act;
    } kCases[] = {
        {"when a row comes into view",
         [](TreeFixture& test) {
             test.tree->SetRowVisibilityChangedFunction([&test](UI_MultiColumnTreeRow*) {
                 test.tree->SetRowVisibilityChangedFunction({});
                 test.FillMany(40);
             });
         },
         [](TreeFixture& test) { test.tree->ScrollToRow(test.tree->GetRowAt(60).get()); }},
        {"when a row is selected by a press",
         [](TreeFixture& test) {
             test.tree->SetRowsSelectionChangedFunction(
                 [&test](const UI_MultiColumnTree::Rows&) { test.FillMany(40); });
         },
         [](TreeFixture& test) { test.Click(test.MiddleOf(test.tree->GetRowAt(2), 1)); }},
        {"when a row is selected by a key",
         [](TreeFixture& test) {
             test.tree->SetKeyboardFocus(FocusChangeReason::kProgram);
             test.tree->SetRowsSelectionChangedFunction(
                 [&test](const UI_MultiColumnTree::Rows&) { test.FillMany(40); });
         },
         [](TreeFixture& test) { test.Press("End"); }},
        {"when a box was clicked",
         [](TreeFixture& test) {
             test.BoxOf(test.tree->GetRowAt(1))->SetChangedFunction([&test](ui::UI_ControlChangedMessage*) {
                 test.FillMany(40);
             });
         },
         [](TreeFixture& test) { test.Click(test.MiddleOf(test.tree->GetRowAt(1), 0)); }},
        {"when the mouse is pressed in a cell",
         [](TreeFixture& test) {
             test.tree->GetRowAt(1)->GetCellView(0)->SetMouseEventFunction(
                 [&test](UI_CellView*, ui::UI_MouseEvent&) {
                     test.FillMany(40);
                     return false;
                 });
         },
         [](TreeFixture& test) { test.Click(test.MiddleOf(test.tree->GetRowAt(1), 0)); }},
        {"when a text is asked for sorting",
         [](TreeFixture& test) {
             test.tree->SetCellSortDataFunction([&test](UI_MultiColumnTreeRow*, std::uint32_t) {
                 test.tree->SetCellSortDataFunction({});
                 test.FillMany(40);
                 return kiocore::UTF16String();
             });
         },
         [](TreeFixture& test) { test.header->SetSortColumn(2, true); }},
    };
    for (const auto& one : kCases) {
        SCOPED_TRACE(one.name);
        TreeFixture test;
        test.FillMany(100);
        const TreeFixture::Row old = test.tree->GetRowAt(99);
        one.arm(test);
        one.act(test);
        ui::ScApplication::RunPending();
        EXPECT_EQ(test.tree->CountRows(false), 40u);
        EXPECT_EQ(old->GetTree(), nullptr);
        for (std::uint32_t place = 0; place < 40; ++place) {
            EXPECT_EQ(test.tree->GetRowAt(place)->GetTree(), test.tree.get());
        }
        test.Press("Down");
    }
}

TEST(MultiColumnTreeCells, AFunctionThatThrowsStopsNothing)
{
    TreeFixture test;
    int calls = 0;
    test.tree->SetRowVisibilityChangedFunction([&calls](UI_MultiColumnTreeRow*) {
        ++calls;
        throw std::runtime_error("of the test");
    });
    test.tree->SetDrawCellFunction([](drawbot::Drawbot*, UI_MultiColumnTreeRow*, std::uint32_t,
                                      const RectT<float>&) { throw std::runtime_error("of the test"); });
    test.Fill(kThree);
    ui::ScApplication::RunPending();
    EXPECT_EQ(calls, 3);
}

TEST(MultiColumnTreeCells, AreDrawnByTheFunctionWhereTheyLie)
{
    TreeFixture test;
    std::set<std::string> drawn;
    test.tree->SetDrawCellFunction([&](drawbot::Drawbot* drawbot, UI_MultiColumnTreeRow* row,
                                       std::uint32_t position, const RectT<float>& cell) {
        ASSERT_NE(drawbot, nullptr);
        const QPoint corner = test.View().viewport()->pos();
        const RectT<float> bounds = test.tree->GetCellBounds(row, position);
        EXPECT_EQ(cell, (RectT<float>{bounds.left - float(corner.x()), bounds.top - float(corner.y()),
                                      bounds.right - float(corner.x()), bounds.bottom - float(corner.y())}));
        drawn.insert(UTF8(test.records[row].name) + std::to_string(test.header->GetColumnAt(position)));
    });
    test.header->MoveColumn(3, 0, true);
    test.Fill({{u"a"}, {u"b"}});
    test.View().viewport()->repaint();
    EXPECT_THAT(drawn, ElementsAre("a1", "a2", "a3", "b1", "b2", "b3"));
}
