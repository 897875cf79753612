#include "support/EngineUnderTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

using namespace effectstests;
using namespace trhost::effects;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kFile = PLUGIN_FOLDER "/several.so";

std::unique_ptr<IAudioEffect> Open(const std::string& inPlugin, int inRate, int inChannels)
{
    IEffectEngine& engine = LoadEngine(ENGINE_PATH);
    const auto filter = engine.OpenFilter(engine.Describe(kFile, inPlugin));
    EXPECT_EQ(filter->GetMediaType(), TR::kMediaType_Audio);
    TakeNotes();
    return kiocore::InterfaceRef<IAudioEffectModule>(filter)->Open(inRate, inChannels);
}

TEST(LadspaProcess, RoutesChannelsThroughAsManyInstancesAsItTakes)
{
    const struct {
        const char* name;
        const char* plugin;
        int channels;
        std::vector<float> in;  // two frames
        std::vector<float> out; // two frames
    } kCases[] = {
        {"mono through mono", "gain#900001", 1, {1, 2}, {1, 2}},
        {"three through mono", "gain#900001", 3, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
        {"stereo through stereo", "swap#900002", 2, {1, 2, 3, 4}, {2, 1, 4, 3}},
        {"mono through stereo is the mean", "swap#900002", 1, {1, 2}, {1, 2}},
        {"two pairs through stereo", "swap#900002", 4, {1, 2, 3, 4, 5, 6, 7, 8}, {2, 1, 4, 3, 6, 5, 8, 7}},
        {"stereo through one to two is mixed first", "spread#900003", 2, {1, 3, 5, 7}, {2, 6, 6, 18}},
        {"mono through one to two", "spread#900003", 1, {1, 2}, {2, 4}},
        {"stereo through two to one comes out on both", "merge#900004", 2, {5, 3, 9, 1}, {2, 2, 8, 8}},
        {"mono through two to one", "merge#900004", 1, {5, 9}, {0, 0}},
        {"two pairs through two to one",
         "merge#900004",
         4,
         {5, 3, 9, 1, 0, 0, 2, 4},
         {2, 2, 8, 8, 0, 0, -2, -2}},
    };
    for (const auto& test : kCases) {
        std::vector<float> out(test.in.size());
        Open(test.plugin, 48000, test.channels)->Process(test.in.data(), out.data(), 2);
        EXPECT_EQ(out, test.out) << test.name;
    }
}

TEST(LadspaProcess, MakesActivatesRunsAndRemovesInTurn)
{
    {
        const auto effect = Open("gain#900001", 44100, 2);
        effect->SetParameter("gain", "0.5");
        std::vector<float> in(2 * 5000);
        std::iota(in.begin(), in.end(), 0.0f);
        std::vector<float> out(in.size());
        effect->Process(in.data(), out.data(), 5000);
        std::vector<float> expected = in;
        for (float& value : expected) {
            value *= 0.5f;
        }
        EXPECT_EQ(out, expected);
        effect->Process(in.data(), out.data(), 0);
    }
    const std::string where = " in ladspa.900001";
    EXPECT_THAT(TakeNotes(), ElementsAre("instantiate 44100" + where, "instantiate 44100" + where,
                                         "activate with 0.500000" + where, "activate with 0.500000" + where,
                                         "run 4096" + where, "run 4096" + where, // blocks of at most so many
                                         "run 904" + where, "run 904" + where, "deactivate" + where,
                                         "cleanup" + where, "deactivate" + where, "cleanup" + where));
    Open("gain#900001", 44100, 1); // never used, so never active
    EXPECT_THAT(TakeNotes(), ElementsAre("instantiate 44100" + where, "cleanup" + where));
}

TEST(LadspaProcess, MovesValuesIntoTheRangeAtItsOwnRate)
{
    const auto effect = Open("gain#900001", 48000, 1);
    effect->SetParameter("gain", "17"); // at most 2
    const float in = 3;
    float out = 0;
    effect->Process(&in, &out, 1);
    EXPECT_EQ(out, 6);

    const auto controls = Open("controls#900008", 96000, 1);
    const struct {
        const char* name;
        const char* value;
        const char* expected; // empty when taken
    } kCases[] = {
        {"toggled-on", "false", ""},
        {"toggled-on", "1", "expected true or false"},
        {"whole", "4", ""},
        {"whole", "4.5", "expected a whole number from 0 to 5"},
        {"cutoff-hz", "abc", "expected a number from 0 to 48000"}, // twice that at 48 kHz
        {"above", "-1", ""},
        {"above", "much", "expected a number"},
        {"loud", "1", "there are: toggled-on, whole, "},
    };
    for (const auto& test : kCases) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { controls->SetParameter(test.name, test.value); }, text),
                  *test.expected ? kEffectError_BadParameter : 0u)
            << test.name << " " << test.value;
        EXPECT_THAT(text, HasSubstr(test.expected));
    }
}

TEST(LadspaProcess, RefusesSoundThatDoesNotFit)
{
    const struct {
        const char* name;
        const char* plugin;
        int rate;
        int channels;
        std::uint32_t code;
    } kCases[] = {
        {"no channels", "gain#900001", 48000, 0, kEffectError_BadFrame},
        {"no rate", "gain#900001", 0, 2, kEffectError_BadFrame},
        {"three through stereo", "swap#900002", 48000, 3, kEffectError_BadFrame},
        {"the plug-in makes none", "gain#900001", 1, 2, kEffectError_PluginFailed},
    };
    for (const auto& test : kCases) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { Open(test.plugin, test.rate, test.channels); }, text), test.code)
            << test.name;
        EXPECT_THAT(text, HasSubstr("ladspa.9000"));
    }
}

} // namespace
