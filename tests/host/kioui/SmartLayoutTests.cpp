#include "layout/Lengths.h"
#include <kioui/layout/SmartLayout.h>
#include <kioui/ui/NodeManager.h>
#include <kioui/ui/SubView.h>
#include <kioui/ui/Window.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

using namespace kioui;
using namespace kioui::layout;
using controls::UI_Checkbox;
using controls::UI_CheckboxPtr;
using controls::UI_TextButton;
using controls::UI_TextButtonPtr;
using testing::ElementsAre;
using ui::UI_SubView;
using ui::UI_SubViewPtr;
using Direction = SmartLayoutBuilder::Direction;

namespace {

using Rect = RectT<float>;

class SmartLayoutTest : public testing::Test {
protected:
    UI_SubViewPtr NewNode()
    {
        UI_SubViewPtr node(new UI_SubView);
        mParent->AddChild(node);
        return node;
    }
    std::vector<UI_SubViewPtr> NewNodes(std::size_t inCount)
    {
        std::vector<UI_SubViewPtr> nodes;
        while (nodes.size() < inCount) {
            nodes.push_back(NewNode());
        }
        return nodes;
    }

    const support::ScTestApplication mApplication;
    const boost::intrusive_ptr<UI_OSWindow> mParent{new UI_OSWindow(u"layout", nullptr)};
};

} // namespace

TEST(Lengths, AreSharedOutInWholeUnitsWithNothingLost)
{
    const struct {
        const char* name;
        std::vector<Length> lengths;
        int available;
        std::vector<int> expected;
    } kCases[] = {
        {"nothing stretches", {{10}, {20}}, 100, {10, 20}},
        {"the first of equals gets the odd unit", {{10, 1}, {10, 1}, {10, 1}}, 31, {11, 10, 10}},
        {"by factors", {{0, 1}, {0, 2}}, 10, {3, 7}},
        {"factors between 0 and 1", {{0, 0.1}, {0, 0.2}, {0, 0.7}}, 10, {1, 2, 7}},
        {"the most cut gets the odd unit", {{0, 1.5}, {0, 2.5}}, 7, {3, 4}},
        {"on top of what each asks for", {{50, 1}, {0, 1}}, 60, {55, 5}},
        {"a gap that stretches", {{50}, {10, 1, true}, {40}}, 120, {50, 30, 40}},
        {"exactly enough", {{50, 1}, {10, 0, true}, {40}}, 100, {50, 10, 40}},
        {"one short: what stretches shrinks", {{50, 1}, {10, 0, true}, {40}}, 99, {49, 10, 40}},
        {"in proportion to what there is", {{60, 1}, {30, 9}, {10}}, 70, {40, 20, 10}},
        {"then the end is cut", {{50, 1}, {10, 0, true}, {40}, {30}}, 30, {0, 10, 20, 0}},
        {"gaps stay, whatever happens", {{50, 1}, {10, 1, true}, {40}}, 5, {0, 10, 0}},
        {"less than nothing", {{50, 1}, {40}}, -5, {0, 0}},
        {"nobody", {}, 10, {}},
        {"factors far apart", {{0, 1e-30}, {0, 1e30}}, 10, {0, 10}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(SolveLengths(test.lengths, test.available), test.expected);
    }
}

TEST_F(SmartLayoutTest, DialogHasItsContentOverAButtonRowAtTheRightEnd)
{
    const UI_SubViewPtr content = NewNode();
    const UI_TextButtonPtr right(new UI_TextButton(u"OK"));
    const UI_TextButtonPtr left(new UI_TextButton(u"Cancel this rather long thing"));
    mParent->AddChild(right);
    mParent->AddChild(left);
    const auto measuring = UI_NodeManager::GetDefaultDrawSupplier()->NewMeasuringDrawbot();
    SmartLayoutBuilder row(Direction::kRightToLeft);
    row.SetCrossAlignment(CrossAlignment::kCentre)
        .Append(MakeTextButtonLayout(right, *measuring))
        .AppendSpace(10)
        .Append(MakeTextButtonLayout(left, *measuring))
        .AppendFlexibleSpace(10);
    SmartLayoutBuilder column(Direction::kTopToBottom);
    column.SetMargin(15).Append(content, {0, 0}, {1, 1}).AppendSpace(15).Append(row.Build(), {1, 0});
    const SmartLayoutPtr layout = column.Build();

    const SizeT<float> rightSize = right->GetPreferredSize();
    const SizeT<float> leftSize = left->GetPreferredSize();
    const float rowHeight = std::max(rightSize.height, leftSize.height);
    EXPECT_EQ(layout->GetMinimumSize(),
              (SizeT<float>{15 + 10 + leftSize.width + 10 + rightSize.width + 15, 15 + 15 + rowHeight + 15}));
    const SizeT<float> least = layout->GetMinimumSize();
    for (const float more : {0.0f, 1.0f, 2.0f, 37.0f, 100.0f, 1001.0f}) {
        SCOPED_TRACE(more);
        const float width = least.width + more;
        const float height = least.height + 2 * more;
        const float x = 3; // the rectangle need not begin at 0
        layout->Apply({x, 0, x + width, height});
        const float bottom = height - 15;
        EXPECT_EQ(content->GetBounds(), (Rect{x + 15, 15, x + width - 15, bottom - rowHeight - 15}));
        const Rect ok = right->GetBounds();
        EXPECT_EQ(
            ok, (Rect{x + width - 15 - rightSize.width, bottom - rightSize.height, x + width - 15, bottom}));
        EXPECT_EQ(left->GetBounds(),
                  (Rect{ok.left - 10 - leftSize.width, bottom - leftSize.height, ok.left - 10, bottom}));
    }
}

TEST_F(SmartLayoutTest, ElementsLieAcrossAsAligned)
{
    const struct {
        const char* name;
        CrossAlignment alignment;
        float nodeHeight;
        Stretch stretch;
        float expectedTop;
        float expectedBottom;
    } kCases[] = {
        {"at the start", CrossAlignment::kStart, 7, {}, 5, 12},
        {"at the end", CrossAlignment::kEnd, 7, {}, 18, 25},
        {"in the middle, the odd unit below", CrossAlignment::kCentre, 7, {}, 11, 18},
        {"stretching fills", CrossAlignment::kCentre, 7, {0, 0.1f}, 5, 25},
        {"stretching along does not", CrossAlignment::kStart, 7, {1, 0}, 5, 12},
        {"higher than its place", CrossAlignment::kCentre, 50, {}, 5, 25},
        {"part of a unit is a whole one", CrossAlignment::kStart, 6.2f, {}, 5, 12},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const UI_SubViewPtr node = NewNode();
        SmartLayoutBuilder row(Direction::kLeftToRight);
        row.SetCrossAlignment(test.alignment).Append(node, {10, test.nodeHeight}, test.stretch);
        row.Build()->Apply({0, 5, 40, 25});
        EXPECT_EQ(node->GetBounds().top, test.expectedTop);
        EXPECT_EQ(node->GetBounds().bottom, test.expectedBottom);
    }
}

TEST_F(SmartLayoutTest, BuiltLayoutsAskTheirNodesAnew)
{
    const UI_TextButtonPtr button(new UI_TextButton(u"OK"));
    mParent->AddChild(button);
    const UI_SubViewPtr behind = NewNode();
    SmartLayoutBuilder row(Direction::kLeftToRight);
    row.Append(button).AppendSpace(13).Append(behind, {20, 20}, {});
    const SmartLayoutPtr layout = row.Build();
    row.AppendSpace(1000); // of the next layout only
    layout->Apply({0, 0, 900, 40});
    const float before = behind->GetBounds().left;
    EXPECT_EQ(before, button->GetPreferredSize().width + 13);

    button->SetText(u"A text that is very much longer than the one before");
    layout->Apply({0, 0, 900, 40});
    EXPECT_GT(behind->GetBounds().left, before);
    EXPECT_EQ(behind->GetBounds().left, button->GetPreferredSize().width + 13);

    button->SetVisible(false);
    const float shown = behind->GetBounds().left;
    layout->Apply({0, 0, 900, 40});
    EXPECT_EQ(behind->GetBounds().left, shown) << "hidden nodes keep their place";
}

TEST_F(SmartLayoutTest, ControlsAreNeverNarrowerThanTheirTexts)
{
    const auto measuring = UI_NodeManager::GetDefaultDrawSupplier()->NewMeasuringDrawbot();
    const FontRef font =
        UI_NodeManager::GetDefaultDrawSupplier()->NewFont(ui::GetFontName(0), ui::GetFontSize(0));
    for (const char16_t* text :
         {u"OK", u"AVAVAVAVAVAVAVAV To To To To", u"Nur Effekte anderer Hersteller anzeigen, aber alle davon",
          u"日本語の文字"}) {
        const UI_TextButtonPtr button(new UI_TextButton(text));
        const UI_CheckboxPtr box(new UI_Checkbox(text));
        mParent->AddChild(button);
        mParent->AddChild(box);
        for (const SmartLayoutPtr& layout :
             {MakeTextButtonLayout(button, *measuring), MakeCheckboxLayout(box, *measuring)}) {
            EXPECT_GE(layout->GetMinimumSize().width, font->MeasureWidth(text));
        }
        EXPECT_GE(MakeTextButtonLayout(button, *measuring)->GetMinimumSize().width,
                  button->GetPreferredSize().width);
        EXPECT_GE(MakeCheckboxLayout(box, *measuring)->GetMinimumSize().width, box->GetPreferredSize().width);
    }
    EXPECT_FALSE(MakeTextButtonLayout({}, *measuring));
}

TEST_F(SmartLayoutTest, OddInputsDoNoHarm)
{
    const float kNone = std::numeric_limits<float>::quiet_NaN();
    const float kInfinite = std::numeric_limits<float>::infinity();
    const std::vector<UI_SubViewPtr> nodes = NewNodes(2);
    SmartLayoutBuilder row(Direction::kLeftToRight);
    row.Append(SmartLayoutPtr())
        .Append(ui::UI_NodePtr())
        .AppendSpace(-10)
        .AppendSpace(kNone)
        .Append(nodes[0], {-5, kNone}, {kInfinite, -1})
        .Append(nodes[1], {10, 10}, {1, kNone})
        .SetMargin(-3);
    const SmartLayoutPtr layout = row.Build();
    EXPECT_EQ(layout->GetMinimumSize(), (SizeT<float>{10, 10}));
    layout->Apply({0, 0, 50, 20});
    EXPECT_EQ(nodes[0]->GetBounds().Width(), 0);
    EXPECT_EQ(nodes[1]->GetBounds(), (Rect{0, 0, 50, 10}));
    layout->Apply({50, 20, 0, 0});
    EXPECT_EQ(nodes[1]->GetBounds().Width(), 0);
    layout->Apply({kNone, -kInfinite, kInfinite, kNone});
    SmartLayoutBuilder(Direction::kTopToBottom).Build()->Apply({0, 0, 50, 20});
}

TEST(AlignCentred, LiesOnWholeUnits)
{
    EXPECT_EQ(AlignCentred({10, 10}, {0, 0, 20, 20}), (Rect{5, 5, 15, 15}));
    EXPECT_EQ(AlignCentred({10, 10}, {1, 2, 22, 21}), (Rect{6, 6, 16, 16}));
    EXPECT_EQ(AlignCentred({9.5f, 10}, {0, 0, 20.5f, 20}), (Rect{5, 5, 15, 15}));
    EXPECT_EQ(AlignCentred({30, 10}, {0, 0, 20, 20}), (Rect{-5, 5, 25, 15}));
}

TEST_F(SmartLayoutTest, RandomRowsFillTheirPlaceWithoutOverlaps)
{
    std::mt19937 random(11);
    const std::vector<UI_SubViewPtr> nodes = NewNodes(6);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        const auto direction = Direction(random() % 3);
        SmartLayoutBuilder builder(direction);
        const int margin = int(random() % 20);
        builder.SetMargin(float(margin));
        const std::size_t count = 1 + random() % nodes.size();
        std::vector<int> gaps; // behind each node
        int asked = 2 * margin;
        bool stretches = false;
        for (std::size_t i = 0; i < count; ++i) {
            const int size = int(random() % 60);
            const float stretch = random() % 3 == 0 ? float(random() % 1000) / 300 : 0;
            stretches = stretches || stretch > 0;
            // Half of them one level down: a row of one is as its element.
            if (random() % 2 == 0) {
                builder.Append(nodes[i], {float(size), float(size)}, {stretch, stretch});
            } else {
                SmartLayoutBuilder inner(direction);
                inner.Append(nodes[i], {float(size), float(size)}, {1, 1});
                builder.Append(inner.Build(), {stretch, stretch});
            }
            gaps.push_back(int(random() % 20));
            builder.AppendSpace(float(gaps.back()));
            asked += size + gaps.back();
        }
        const int length = int(random() % 400);
        const SmartLayoutPtr layout = builder.Build();
        const bool isVertical = direction == Direction::kTopToBottom;
        const float origin = float(random() % 10);
        const auto place = float(length) + origin;
        layout->Apply(isVertical ? Rect{0, origin, 100, place} : Rect{origin, 0, place, 100});
        EXPECT_EQ(isVertical ? layout->GetMinimumSize().height : layout->GetMinimumSize().width, asked);

        // Along the direction, from the first node's near end.
        int at = margin;
        for (std::size_t i = 0; i < count; ++i) {
            const Rect bounds = nodes[i]->GetBounds();
            const float near = isVertical                             ? bounds.top - origin
                               : direction == Direction::kRightToLeft ? place - bounds.right
                                                                      : bounds.left - origin;
            const int size = int(isVertical ? bounds.Height() : bounds.Width());
            ASSERT_EQ(near, at) << "node " << i;
            ASSERT_GE(size, 0);
            at += size + gaps[i];
        }
        const int fixed = 2 * margin + std::accumulate(gaps.begin(), gaps.end(), 0);
        if (length < asked || stretches) {
            EXPECT_EQ(at + margin, std::max(length, fixed));
        } else {
            EXPECT_EQ(at + margin, asked);
        }
    }
}
