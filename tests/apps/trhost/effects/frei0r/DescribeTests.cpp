#include "support/EngineUnderTest.h"

#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace effectstests;
using namespace trhost::effects;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

IEffectEngine& Engine()
{
    return LoadEngine(ENGINE_PATH);
}

std::string PluginFile(const std::string& inStem)
{
    return PLUGIN_FOLDER "/" + inStem + ".so";
}

TEST(Frei0rDescribe, TellsAllThatThePluginTells)
{
    TakeNotes();
    const EffectDescription told = Engine().Describe(PluginFile("watcher"), "watcher");
    EXPECT_EQ(told.matchName, "frei0r.watcher");
    EXPECT_EQ(told.technology, "frei0r");
    EXPECT_EQ(told.pluginName, "watcher");
    EXPECT_EQ(told.file, PluginFile("watcher"));
    EXPECT_EQ(told.displayName, "Watcher");
    EXPECT_EQ(told.kind, EffectKind::kVideoFilter);
    EXPECT_EQ(told.category, "Filter");
    EXPECT_EQ(told.author, "A. Tester");
    EXPECT_EQ(told.version, "3.14");
    EXPECT_EQ(told.explanation, "tells what it was given"); // on one line
    EXPECT_THAT(told.formats, ElementsAre(kiomediatypes::kPixelFormat_BGRA_4444_8u));
    EXPECT_EQ(told.refusal, "");
    // What does not change is not asked for twice.
    EXPECT_THAT(TakeNotes(), ElementsAre("init in frei0r.watcher", "get_plugin_info in frei0r.watcher",
                                         "construct 320 x 240 in frei0r.watcher",
                                         "destruct in frei0r.watcher", "deinit in frei0r.watcher"));
}

TEST(Frei0rDescribe, GivesParametersTypableNamesAndTheInstancesDefaults)
{
    const EffectDescription told = Engine().Describe(PluginFile("watcher"), "watcher");
    const struct {
        const char* name;
        const char* displayName;
        ParameterKind kind;
        const char* defaultValue;
        bool hasRange;
    } kExpected[] = {
        {"dont-flip", "Don't Flip", ParameterKind::kBool, "true", false},
        {"amount", "Amount (%)", ParameterKind::kNumber, "0.3", true},
        {"key-color", "Key=Color", ParameterKind::kColor, "#ff8000", false},
        {"place", "Place", ParameterKind::kPosition, "0.25,1", false},
        {"text", "Text", ParameterKind::kText, "as is", false},
        {"amount-2", "amount", ParameterKind::kNumber, "0", true}, // was no number
        {"parameter", "  ", ParameterKind::kBool, "false", false}, // the one of a later kind left out
    };
    ASSERT_EQ(told.parameters.size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        SCOPED_TRACE(kExpected[i].name);
        EXPECT_EQ(told.parameters[i].name, kExpected[i].name);
        EXPECT_EQ(told.parameters[i].displayName, kExpected[i].displayName);
        EXPECT_EQ(told.parameters[i].kind, kExpected[i].kind);
        EXPECT_EQ(told.parameters[i].defaultValue, kExpected[i].defaultValue);
        EXPECT_EQ(told.parameters[i].hasRange, kExpected[i].hasRange);
        EXPECT_EQ(told.parameters[i].maximum, kExpected[i].hasRange ? 1 : 0);
    }
}

TEST(Frei0rDescribe, ListsWhatCannotBeRunWithItsReason)
{
    const struct {
        const char* stem;
        const char* refusal;
        EffectKind kind;
    } kCases[] = {
        {"needy", "needs libneeded.so.7, which is not installed", EffectKind::kVideoFilter},
        {"mixer3", "mixes three pictures; a transition has two", EffectKind::kTransition},
        {"oldmixer", "has no function f0r_update2, as a mixer must", EffectKind::kTransition},
        {"strange", "says that it is a plug-in of type 9, which is not known", EffectKind::kVideoFilter},
        {"colorful", "wants colors of model 3, which is not known", EffectKind::kVideoFilter},
        {"newer", "made for frei0r 2; version 1 is known", EffectKind::kVideoFilter},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.stem);
        const EffectDescription told = Engine().Describe(PluginFile(test.stem), test.stem);
        EXPECT_EQ(trhost::ToldText(told.refusal), test.refusal);
        EXPECT_EQ(told.matchName, std::string("frei0r.") + test.stem);
        EXPECT_EQ(told.kind, test.kind);
        std::string text;
        EXPECT_EQ(FailureOf(
                      [&] {
                          test.kind == EffectKind::kTransition ? (void)Engine().OpenTransition(told)
                                                               : (void)Engine().OpenFilter(told);
                      },
                      text),
                  kEffectError_Refused);
        EXPECT_THAT(text, HasSubstr(test.refusal));
    }
}

TEST(Frei0rDescribe, SaysWhatIsNoPlugin)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "text.so", "no shared object");
    support::WriteFile(folder / "named.so", std::string("\0f0r_get_plugin_info\0", 21));
    const struct {
        const char* name;
        std::string file;
        const char* expected;
    } kCases[] = {
        {"a text", folder / "text.so", "is no frei0r plug-in"},
        {"nothing", folder / "absent.so", "is no frei0r plug-in"},
        {"a library without its functions", ENGINE_PATH, "has no function f0r_init"},
        {"a plug-in that has not filled in what it is", PluginFile("boundless"), "has -1 parameters"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const std::string stem = std::filesystem::path(test.file).stem();
        std::string text;
        EXPECT_EQ(FailureOf([&] { Engine().Describe(test.file, stem); }, text), kEffectError_NoPlugin);
        EXPECT_THAT(text, HasSubstr(test.file));
        EXPECT_THAT(text, HasSubstr(test.expected));
    }
    std::string text;
    EXPECT_EQ(FailureOf([&] { Engine().PluginNames(folder / "text.so"); }, text), kEffectError_NoPlugin);
    EXPECT_THAT(Engine().PluginNames(PluginFile("needy")), ElementsAre("needy")); // also what will not load
    EXPECT_EQ(FailureOf([&] { Engine().Describe(PluginFile("watcher"), "other"); }, text),
              kEffectError_NoPlugin);
    // Damaged, but one: listed.
    EXPECT_THAT(Engine().Describe(folder / "named.so", "named").refusal, HasSubstr("cannot be loaded: "));
}

TEST(Frei0rDescribe, AModuleKeepsThePluginInitialisedAndTheLastEndsIt)
{
    const EffectDescription told = Engine().Describe(PluginFile("watcher"), "watcher");
    TakeNotes();
    TR::IFilterModuleRef first = Engine().OpenFilter(told);
    TR::IFilterModuleRef second = Engine().OpenFilter(told);
    EXPECT_THAT(TakeNotes(), ElementsAre("init in frei0r.watcher"));
    std::unique_ptr<IVideoEffect> effect =
        kiocore::InterfaceRef<IVideoEffectModule>(first)->Open({.width = 64, .height = 48});
    EXPECT_EQ(first->GetMatchName().View(), "frei0r.watcher");
    EXPECT_EQ(first->GetMetadata().version, "3.14");
    EXPECT_EQ(first->GetMediaType(), TR::kMediaType_Video);
    first.Reset();
    second.Reset();
    EXPECT_THAT(TakeNotes(), ElementsAre("construct 64 x 48 in frei0r.watcher"));
    effect.reset();
    EXPECT_THAT(TakeNotes(), ElementsAre("destruct in frei0r.watcher", "deinit in frei0r.watcher"));
    EXPECT_THAT(Engine().OpenFilter(told)->GetDisplayName(), u"Watcher"); // and again
    EXPECT_THAT(TakeNotes(), ElementsAre("init in frei0r.watcher", "deinit in frei0r.watcher"));
}

} // namespace
