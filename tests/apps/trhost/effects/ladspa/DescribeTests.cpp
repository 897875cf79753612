#include "support/EngineUnderTest.h"

#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace effectstests;
using namespace trhost::effects;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kFile = PLUGIN_FOLDER "/several.so";

IEffectEngine& Engine()
{
    return LoadEngine(ENGINE_PATH);
}

TEST(LadspaDescribe, TellsThePluginsOfAFileApartByNumber)
{
    EXPECT_THAT(Engine().PluginNames(kFile),
                ElementsAre("gain#900001", "swap#900002", "spread#900003", "merge#900004", "tone#900005",
                            "meter#900006", "gain#900007", "controls#900008"));
    const EffectDescription told = Engine().Describe(kFile, "gain#900001");
    EXPECT_EQ(told.matchName, "ladspa.900001");
    EXPECT_EQ(told.technology, "ladspa");
    EXPECT_EQ(told.pluginName, "gain#900001");
    EXPECT_EQ(told.file, kFile);
    EXPECT_EQ(told.displayName, "A plug-in for tests");
    EXPECT_EQ(told.kind, EffectKind::kAudioFilter);
    EXPECT_EQ(told.category, "LADSPA");
    EXPECT_EQ(told.author, "A. Tester");
    EXPECT_EQ(told.version, "");
    EXPECT_TRUE(told.formats.empty());
    EXPECT_EQ(told.audioInputs, 1);
    EXPECT_EQ(told.audioOutputs, 1);
    EXPECT_EQ(told.refusal, "");
    ASSERT_EQ(told.parameters.size(), 1u); // not the control that is an output
}

TEST(LadspaDescribe, WorksOutRangesAndDefaultsFromTheHints)
{
    const EffectDescription told = Engine().Describe(kFile, "controls#900008");
    const struct {
        const char* name;
        ParameterKind kind;
        const char* defaultValue;
        bool hasRange;
        double minimum;
        double maximum;
        const char* explanation;
    } kExpected[] = {
        {"toggled-on", ParameterKind::kBool, "true", false, 0, 0, ""},
        {"whole", ParameterKind::kInteger, "3", true, 0, 5, ""},
        {"cutoff-hz", ParameterKind::kNumber, "24000", true, 0, 24000,
         "the range is that at 48000 Hz and follows the sample rate"},
        {"cutoff-hz-2", ParameterKind::kNumber, "100", true, 10, 1000, "best set in steps of equal ratio"},
        {"low", ParameterKind::kNumber, "0", true, -1, 3, ""},
        {"high-log", ParameterKind::kNumber, "8", true, 1, 16, "best set in steps of equal ratio"},
        {"above", ParameterKind::kNumber, "0.1", false, 0, 0, "0.1 or more"},
        {"below", ParameterKind::kNumber, "50", false, 0, 0, "50 or less"},
        {"pitch", ParameterKind::kNumber, "440", false, 0, 0, ""},
        {"no-upper-for-a-middle", ParameterKind::kNumber, "7", false, 0, 0, "7 or more"},
    };
    ASSERT_EQ(told.parameters.size(), std::size(kExpected));
    for (std::size_t i = 0; i < std::size(kExpected); ++i) {
        const EffectParameter& found = told.parameters[i];
        SCOPED_TRACE(kExpected[i].name);
        EXPECT_EQ(found.name, kExpected[i].name);
        EXPECT_EQ(found.kind, kExpected[i].kind);
        EXPECT_EQ(found.defaultValue, kExpected[i].defaultValue);
        EXPECT_EQ(found.hasRange, kExpected[i].hasRange);
        EXPECT_EQ(found.minimum, kExpected[i].minimum);
        EXPECT_EQ(found.maximum, kExpected[i].maximum);
        EXPECT_EQ(found.explanation, kExpected[i].explanation);
    }
}

TEST(LadspaDescribe, ListsWhatCannotBeRunWithItsReason)
{
    const struct {
        const char* file;
        const char* plugin;
        const char* matchName;
        const char* refusal;
    } kCases[] = {
        {kFile, "tone#900005", "ladspa.900005", "takes no sound, it makes sound of its own"},
        {kFile, "meter#900006", "ladspa.900006", "gives no sound, it only measures"},
        {kFile, "gain#900007", "ladspa.900007",
         "lacks one of the functions instantiate, connect_port, run and cleanup"},
        {PLUGIN_FOLDER "/needy.so", "needy#77", "ladspa.77", "needs libwanted.so.3, which is not installed"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.plugin);
        const EffectDescription told = Engine().Describe(test.file, test.plugin);
        EXPECT_EQ(told.matchName, test.matchName);
        EXPECT_EQ(trhost::ToldText(told.refusal), test.refusal);
        std::string text;
        EXPECT_EQ(FailureOf([&] { Engine().OpenFilter(told); }, text), kEffectError_Refused);
        EXPECT_THAT(text, HasSubstr(test.refusal));
    }
}

TEST(LadspaDescribe, SaysWhatIsNoPlugin)
{
    const support::TemporaryFolder folder;
    support::WriteFile(folder / "text.so", "no shared object");
    const struct {
        const char* name;
        std::string file;
        const char* expected;
    } kCases[] = {
        {"a text", folder / "text.so", "is no LADSPA plug-in"},
        {"nothing", folder / "absent.so", "is no LADSPA plug-in"},
        {"a library of another kind", ENGINE_PATH, "has no function ladspa_descriptor"},
        {"a file that cannot be asked", PLUGIN_FOLDER "/needy.so", "needs libwanted.so.3"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string text;
        EXPECT_EQ(FailureOf([&] { Engine().PluginNames(test.file); }, text), kEffectError_NoPlugin);
        EXPECT_THAT(text, HasSubstr(test.file));
        EXPECT_THAT(text, HasSubstr(test.expected));
    }
    std::string text;
    EXPECT_EQ(FailureOf([&] { Engine().Describe(kFile, "gain#1"); }, text), kEffectError_NoPlugin);
    EXPECT_EQ(FailureOf([&] { Engine().OpenTransition({}); }, text), kEffectError_NoPlugin);
}

} // namespace
