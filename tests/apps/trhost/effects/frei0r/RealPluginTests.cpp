#include "support/EngineUnderTest.h"
#include "support/Pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

// Asked by the leak checker where there is one: what these plug-ins lose is theirs.
extern "C" KIO_EXPORT const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions()             // NOLINT(bugprone-reserved-identifier)
{
    return "leak:/lib/frei0r-1/\n";
}
extern "C" KIO_EXPORT const char* __lsan_default_options(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_options()             // NOLINT(bugprone-reserved-identifier)
{
    return "print_suppressions=0";
}

namespace {

using namespace effectstests;
using namespace trhost::effects;
using kiomediatypes::TickTime;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Frei0rRealPlugins : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(std::filesystem::exists(FREI0R_PLUGIN_FOLDER "/invert0r.so"))
            << "there are no plug-ins in " FREI0R_PLUGIN_FOLDER
               "; tools/fetch-plugins puts them there, and ctest does so by itself";
    }

    static IEffectEngine& Engine() { return LoadEngine(ENGINE_PATH); }
    static std::string File(const std::string& inStem) { return FREI0R_PLUGIN_FOLDER "/" + inStem + ".so"; }

    using Settings = std::map<std::string, std::string>;
    static std::vector<Word> Render(const std::string& inStem, const Settings& inSettings,
                                    const std::vector<MF::IVideoFrameRef>& inInputs, double inPosition = 0)
    {
        const EffectDescription told = Engine().Describe(File(inStem), inStem);
        kiocore::InterfaceRef<IVideoEffectModule> module;
        if (told.kind == EffectKind::kTransition) {
            module = Engine().OpenTransition(told);
        } else {
            module = Engine().OpenFilter(told);
        }
        const auto effect =
            module->Open({.width = inInputs[0]->GetWidth(), .height = inInputs[0]->GetHeight()});
        for (const auto& [name, value] : inSettings) {
            effect->SetParameter(name, value);
        }
        return WordsOf(effect->Render(inInputs, TickTime::Zero(), inPosition));
    }
};

TEST_F(Frei0rRealPlugins, EachFileIsDescribed)
{
    std::map<EffectKind, int> kinds;
    std::map<std::string, std::string> refusals;
    for (const auto& entry : std::filesystem::directory_iterator(FREI0R_PLUGIN_FOLDER)) {
        const std::string file = entry.path();
        SCOPED_TRACE(file);
        const std::vector<std::string> names = Engine().PluginNames(file);
        ASSERT_EQ(names.size(), 1u);
        EffectDescription told;
        ASSERT_NO_THROW(told = Engine().Describe(file, names[0]));
        ++kinds[told.kind];
        if (!told.refusal.empty()) {
            refusals[told.matchName] = trhost::ToldText(told.refusal);
        }
        EXPECT_EQ(ToJSONText(FromJSONText(ToJSONText(told))), ToJSONText(told));
        std::set<std::string> parameters;
        for (const EffectParameter& parameter : told.parameters) {
            EXPECT_TRUE(parameters.insert(parameter.name).second) << parameter.name;
            EXPECT_EQ(parameter.name.find_first_of(" ="), std::string::npos) << parameter.name;
            EXPECT_TRUE(!parameter.defaultValue.empty() || parameter.kind == ParameterKind::kText)
                << parameter.name;
        }
    }
    EXPECT_GE(kinds[EffectKind::kVideoFilter], 80);
    EXPECT_GE(kinds[EffectKind::kTransition], 25);
    EXPECT_GE(kinds[EffectKind::kGenerator], 10);
    EXPECT_EQ(refusals["frei0r.RGB"], "mixes three pictures; a transition has two");
    refusals.erase("frei0r.RGB");
    // These are not there on every machine, and nothing else is wrong with any.
    for (const auto& [name, refusal] : refusals) {
        EXPECT_THAT(refusal, ::testing::MatchesRegex(
                                 "needs lib(gavl|opencv_)[a-z]*\\.so\\.[0-9]+, which is not installed"))
            << name;
    }
}

TEST_F(Frei0rRealPlugins, AnInversionInvertsColorsAndKeepsAlpha)
{
    const auto picture = MakePicture(719, 487, TestPixel);
    std::vector<Word> expected = WordsOf(picture);
    std::transform(expected.begin(), expected.end(), expected.begin(),
                   [](Word inWord) { return inWord ^ 0x00FFFFFFu; });
    EXPECT_EQ(Render("invert0r", {}, {picture}), expected);
}

TEST_F(Frei0rRealPlugins, ParametersReachThePlugin)
{
    const auto picture = MakePicture(64, 48, TestPixel);
    const std::vector<Word> words = WordsOf(picture);
    EXPECT_EQ(Render("brightness", {}, {picture}), words); // its middle, the default, changes nothing
    const std::vector<Word> dark = Render("brightness", {{"brightness", "0"}}, {picture});
    EXPECT_THAT(dark,
                ::testing::Each(::testing::Truly([](Word inWord) { return (inWord & 0xFFFFFF) == 0; })));

    std::vector<Word> mirrored;
    for (std::uint32_t y = 0; y < 48; ++y) {
        for (std::uint32_t x = 0; x < 64; ++x) {
            mirrored.push_back(TestPixel(63 - x, y));
        }
    }
    EXPECT_EQ(Render("flippo", {{"x-axis", "true"}}, {picture}), mirrored);
}

TEST_F(Frei0rRealPlugins, ChannelsKeepTheirPlaces)
{
    const auto picture = MakePicture(16, 8, [](auto, auto) { return 0xFF204080u; });
    const struct {
        const char* stem;
        Word expected;
    } kCases[] = {{"R", 0xFF202020u}, {"G", 0xFF404040u}, {"B", 0xFF808080u}};
    for (const auto& test : kCases) {
        EXPECT_THAT(Render(test.stem, {}, {picture}), ::testing::Each(test.expected)) << test.stem;
    }
}

/// The most that a byte of one differs from its like in the other.
int GreatestDifference(const std::vector<Word>& inOne, const std::vector<Word>& inOther)
{
    int greatest = inOne.size() == inOther.size() ? 0 : 256;
    for (std::size_t i = 0; i < inOne.size() && greatest < 256; ++i) {
        for (int shift = 0; shift < 32; shift += 8) {
            greatest =
                std::max(greatest, std::abs(int(inOne[i] >> shift & 255) - int(inOther[i] >> shift & 255)));
        }
    }
    return greatest;
}

TEST_F(Frei0rRealPlugins, TransitionsGoFromOnePictureToTheOther)
{
    const auto one =
        MakePicture(64, 48, [](auto inX, auto inY) { return TestPixel(inX, inY) | 0xFF000000u; });
    const auto two =
        MakePicture(64, 48, [](auto inX, auto inY) { return ~TestPixel(inY, inX) | 0xFF000000u; });
    ASSERT_GT(GreatestDifference(WordsOf(one), WordsOf(two)), 100);
    for (const char* stem : {"xfade0r", "blend", "cairoblend"}) {
        SCOPED_TRACE(stem);
        // One of them divides by 256, and never reaches the whole.
        EXPECT_LE(GreatestDifference(Render(stem, {}, {one, two}, 0), WordsOf(one)), 1);
        EXPECT_LE(GreatestDifference(Render(stem, {}, {one, two}, 1), WordsOf(two)), 1);
    }
}

} // namespace
