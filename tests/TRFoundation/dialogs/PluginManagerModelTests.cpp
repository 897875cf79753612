// Which effects the plug-in manager shows, in which order, and what it collects.

#include "ManagerStage.h"

#include <kiocore/platform/Browser.h>
#include <kioui/controls/HotText.h>

#include <gmock/gmock.h>

using namespace dialogtests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::vector<UTF16String>;

namespace {

AttributeValue Words(const char16_t* inText)
{
    return UTF16String(inText);
}

} // namespace

TEST(PluginManager, FindsWhatIsTyped)
{
    const struct {
        const char* name;
        UTF16String typed;
        Names found;
    } kCases[] = {
        {"nothing shows all", u"", {u"Gaussian blur", u"Sharpen", u"Écho"}},
        {"capitals find small letters", u"BLUR", {u"Gaussian blur"}},
        {"a part of a file", u"PLUG-INS/sha", {u"Sharpen"}},
        {"a text of the host's own", u"studio a", {u"Sharpen"}},
        {"but never a box, nor a column's title", u"fast", {}},
        {"accented capitals find themselves", u"Écho", {u"Écho"}},
        {"and not small ones", u"écho", {}},
        {"longer than any field", UTF16String(500, u'b'), {}},
        {"a first-party effect stays hidden", u"built", {}},
    };
    ManagerStage stage({u"Fast", u"Maker"});
    stage.Add(u"Gaussian blur", {true, Words(u"Studio B")});
    stage.Add(u"Sharpen", {false, Words(u"Studio A")});
    stage.Add(u"Écho", {true, true});
    stage.AddFirstParty(u"Built-in");
    stage.Open();
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        stage.Dialog().Find(u"?");
        stage.Dialog().Find(test.typed);
        EXPECT_THAT(stage.NamesShown(), testing::UnorderedElementsAreArray(test.found));
        EXPECT_EQ(stage.Dialog().CountRows(), test.found.size());
    }
    stage.TypeIntoSearch(u"blur"); // as a person does it, letter by letter
    EXPECT_THAT(stage.NamesShown(), ElementsAre(u"Gaussian blur"));
    stage.TypeIntoSearch(u"");
    EXPECT_EQ(stage.Dialog().CountRows(), 3u);
}

TEST(PluginManager, OnlyThirdPartyEffectsAreShownUntilTheUserWantsAll)
{
    ManagerStage stage;
    stage.Add(u"Theirs");
    stage.AddFirstParty(u"Ours");
    stage.Open();
    EXPECT_THAT(stage.NamesShown(), ElementsAre(u"Theirs"));
    stage.Click("OnlyShowThirdPartyEffectsCheckbox");
    EXPECT_THAT(stage.NamesShown(), UnorderedElementsAre(u"Ours", u"Theirs"));
    stage.Dialog().HideFirstPartyEffects();
    EXPECT_EQ(stage.Dialog().FindNode("OnlyShowThirdPartyEffectsCheckbox"), nullptr);
    stage.TypeIntoSearch(u"s");
    EXPECT_THAT(stage.NamesShown(), ElementsAre(u"Theirs"));
    stage.Dialog().HideFirstPartyEffects(); // gone already
}

TEST(PluginManager, AllOnAndAllOffReachWhatIsShown)
{
    ManagerStage stage;
    const auto blur = stage.Add(u"Blur");
    const auto glow = stage.Add(u"Glow");
    const auto ours = stage.AddFirstParty(u"Ours");
    stage.Open();
    stage.TypeIntoSearch(u"blur");
    stage.Click("DisableAllButton");
    EXPECT_FALSE(blur->enabled);
    EXPECT_TRUE(glow->enabled);
    EXPECT_THAT(stage.NamesModified(), ElementsAre(u"Blur"));
    stage.TypeIntoSearch(u"");
    stage.Click("EnableAllButton"); // also those that are on already
    EXPECT_TRUE(blur->enabled);
    EXPECT_TRUE(ours->enabled);
    EXPECT_THAT(stage.NamesModified(), ElementsAre(u"Blur", u"Glow"));
    EXPECT_TRUE(stage.Box(u"Blur").IsChecked()) << "the boxes follow the records";
}

TEST(PluginManager, WithoutEffectsThereIsNothingToDo)
{
    ManagerStage stage;
    stage.Open();
    EXPECT_EQ(stage.Dialog().CountRows(), 0u);
    EXPECT_THAT(stage.Tree().GetSelectedRows(), IsEmpty());
    stage.Click("EnableAllButton");
    stage.Click("DisableAllButton");
    EXPECT_THAT(stage.NamesModified(), IsEmpty());
}

TEST(PluginManager, ABoxEditsItsRecordAndStaysInTheModifiedOnes)
{
    ManagerStage stage({u"Fast", u"Maker"});
    const auto blur = stage.Add(u"Blur", {false, Words(u"a maker")});
    const auto glow = stage.Add(u"Glow", {});
    stage.Open();
    int told = 0;
    stage.Dialog().SetModifiedFunction([&] { ++told; });
    stage.ClickCell(u"Blur");
    EXPECT_FALSE(blur->enabled);
    stage.ClickCell(u"Blur");
    EXPECT_TRUE(blur->enabled);
    EXPECT_THAT(stage.NamesModified(), ElementsAre(u"Blur"));
    stage.ClickCell(u"Blur", 4);
    EXPECT_TRUE(boost::get<bool>(blur->attributeValues[0]));
    EXPECT_EQ(stage.CellNode(u"Blur", 5), nullptr) << "a text has no box";
    EXPECT_EQ(stage.CellNode(u"Glow", 4), nullptr) << "nor has what the record does not say";
    stage.ClickCell(u"Glow", 5);
    EXPECT_EQ(told, 3);

    const kioui::UI_NodePtr stale = stage.CellNode(u"Blur", 1);
    stage.Dialog().Find(u"glow");
    kioui::ui::NodeCast<kioui::controls::UI_Checkbox>(stale.get()).Click();
    EXPECT_TRUE(blur->enabled) << "a box of a row that is no more edits nothing";
}

TEST(PluginManager, ATitleSorts)
{
    ManagerStage stage({u"Fast"}, true);
    const auto add = [&](const char16_t* inName, bool inEnabled, bool inFast) {
        stage.Add(inName, {inFast})->enabled = inEnabled;
    };
    add(u"beta", true, true);
    add(u"alpha", true, false);
    add(u"delta", false, true);
    add(u"gamma", false, false);
    stage.Open();
    const struct {
        const char* name;
        std::uint32_t column;
        Names order;
    } kCases[] = {
        {"by name", 2, {u"alpha", u"beta", u"delta", u"gamma"}},
        {"again: backwards", 2, {u"gamma", u"delta", u"beta", u"alpha"}},
        {"those that are off first, each by name", 1, {u"delta", u"gamma", u"alpha", u"beta"}},
        {"by file", 3, {u"alpha", u"beta", u"delta", u"gamma"}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        stage.ClickTitle(test.column);
        EXPECT_EQ(stage.NamesShown(), test.order);
    }
    stage.ClickTitle(4);
    EXPECT_THAT(stage.NamesShown(), ElementsAre(u"alpha", u"gamma", u"beta", u"delta")) << "no before yes";
    stage.Dialog().Find(u"a"); // the rows are made anew, and those alike stand as they come
    const Names found = stage.NamesShown();
    ASSERT_EQ(found.size(), 4u);
    EXPECT_THAT(Names(found.begin(), found.begin() + 2), UnorderedElementsAre(u"alpha", u"gamma"));
}

TEST(PluginManager, AtMostSoManyColumnsOfTheHostsOwn)
{
    ManagerStage stage(Names(100, u"x"));
    stage.Add(u"Blur", std::vector<AttributeValue>(100, true));
    stage.Open();
    EXPECT_EQ(stage.Header().GetCountOfColumns(), 3u + 96u);
    EXPECT_NE(stage.CellNode(u"Blur", 99), nullptr);
}

TEST(PluginManager, ALinkOpensAndChangesNothing)
{
    std::vector<std::string> opened;
    const kiocore::platform::ScReplaceBrowser browser([&](const std::string& inURL) {
        opened.push_back(inURL);
        return 0;
    });
    ManagerStage stage({}, true);
    stage.Add(u"Blur")->supportURL = u"https://example.org/blur";
    stage.Add(u"Glow");
    stage.Open();
    kioui::ui::NodeCast<kioui::controls::UI_HotTextButton>(stage.CellNode(u"Blur", 100).get()).Click();
    kioui::ui::NodeCast<kioui::controls::UI_HotTextButton>(stage.CellNode(u"Glow", 100).get()).Click();
    EXPECT_THAT(opened, ElementsAre("https://example.org/blur"));
    EXPECT_THAT(stage.NamesModified(), IsEmpty());
}

TEST(PluginManager, TenThousandEffectsAreSearched)
{
    ManagerStage stage;
    for (int i = 0; i < 10'000; ++i) {
        stage.Add(u"Effect " + kiocore::utility::DecimalText(std::size_t(i)));
    }
    stage.Open();
    EXPECT_EQ(stage.Dialog().CountRows(), 10'000u);
    stage.Dialog().Find(u"effect 777");
    EXPECT_EQ(stage.Dialog().CountRows(), 11u);
    stage.Click("DisableAllButton");
    EXPECT_EQ(stage.Dialog().GetModifiedItems().size(), 11u);
}
