#include "support/EngineUnderTest.h"
#include "support/Pictures.h"

#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

namespace {

using namespace effectstests;
using namespace trhost::effects;
using kiomediatypes::TickTime;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

IEffectEngine& Engine()
{
    return LoadEngine(ENGINE_PATH);
}

std::unique_ptr<IVideoEffect> Open(const std::string& inFile, const VideoEffectForm& inForm)
{
    const EffectDescription told = Engine().Describe(inFile, std::filesystem::path(inFile).stem());
    kiocore::InterfaceRef<IVideoEffectModule> module;
    if (told.kind == EffectKind::kTransition) {
        module = Engine().OpenTransition(told);
    } else {
        module = Engine().OpenFilter(told);
    }
    TakeNotes();
    return module->Open(inForm);
}

std::unique_ptr<IVideoEffect> OpenOurs(const std::string& inStem, std::uint32_t inWidth = 16,
                                       std::uint32_t inHeight = 8)
{
    return Open(PLUGIN_FOLDER "/" + inStem + ".so", {.width = inWidth, .height = inHeight});
}

TEST(Frei0rRender, GivesThePluginWholePicturesOfEightsAndCutsTheResult)
{
    const auto effect = OpenOurs("watcher", 13, 5);
    const auto picture = MakePicture(13, 5, TestPixel);
    const auto rendered = effect->Render({picture}, TickTime::FromSeconds(1.5), 0);
    EXPECT_THAT(TakeNotes(), ElementsAre("construct 16 x 8 in frei0r.watcher",
                                         "update at 1.500000, off by 0 and 0 in frei0r.watcher"));
    ASSERT_EQ(rendered->GetWidth(), 13u);
    ASSERT_EQ(rendered->GetHeight(), 5u);
    // The plug-in turned 16 x 8: its edges are the picture's, repeated.
    const std::vector<Word> words = WordsOf(rendered);
    for (std::uint32_t y = 0; y < 5; ++y) {
        for (std::uint32_t x = 0; x < 13; ++x) {
            ASSERT_EQ(words[y * 13 + x], TestPixel(std::min(15 - x, 12u), std::min(7 - y, 4u)))
                << x << ", " << y;
        }
    }
}

TEST(Frei0rRender, MovesValuesIntoTheirRange)
{
    const struct {
        const char* name;
        const char* value;
        const char* note;
    } kCases[] = {
        {"dont-flip", "true", "0 = 1.000000"},
        {"dont-flip", "false", "0 = 0.000000"},
        {"amount", "0.25", "1 = 0.250000"},
        {"amount", "-7", "1 = 0.000000"},
        {"amount", "1.5e3", "1 = 1.000000"},
        {"key-color", "#ff8000", "2 = 1.000000 0.501961 0.000000"},
        {"key-color", "#FF8000ff", "2 = 1.000000 0.501961 0.000000"},
        {"place", "0.5,2", "3 = 0.500000 1.000000"},
        {"text", "äöü = x", "4 = äöü = x"},
        {"text", "", "4 = "},
        {"amount-2", "1", "5 = 1.000000"},
    };
    const auto effect = OpenOurs("watcher");
    TakeNotes();
    for (const auto& test : kCases) {
        effect->SetParameter(test.name, test.value);
        EXPECT_THAT(TakeNotes(), ElementsAre(std::string(test.note) + " in frei0r.watcher")) << test.value;
    }
}

TEST(Frei0rRender, RefusesValuesThatMeanNothing)
{
    const struct {
        const char* name;
        std::string value;
        const char* expected;
    } kCases[] = {
        {"dont-flip", "yes", "expected true or false"},
        {"amount", "", "expected a number from 0 to 1"},
        {"amount", "0.5x", "'0.5x'"},
        {"amount", "nan", "expected a number"},
        {"amount", "0,5", "expected a number"},
        {"key-color", "ff8000", "expected a color as #rrggbb"},
        {"key-color", "#ff800", "expected a color"},
        {"key-color", "#ff80 0", "expected a color"},
        {"key-color", "#ff800080", "without alpha"},
        {"place", "0.5", "expected a position"},
        {"place", "0.5,inf", "expected a position"},
        {"text", std::string("a\0b", 3), "without zero bytes"},
        {"glow", "1", "there are: dont-flip, amount, "},
    };
    const auto effect = OpenOurs("watcher");
    TakeNotes();
    for (const auto& test : kCases) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { effect->SetParameter(test.name, test.value); }, text),
                  kEffectError_BadParameter)
            << test.value;
        EXPECT_THAT(text, HasSubstr(test.expected));
        EXPECT_THAT(text, HasSubstr(test.name));
        EXPECT_THAT(text, HasSubstr("frei0r.watcher"));
    }
    EXPECT_THAT(TakeNotes(), IsEmpty());
}

TEST(Frei0rRender, KeepsItsInputsAndFillsWhatThePluginLeavesOut)
{
    const auto effect = OpenOurs("scribbler", 16, 8);
    const auto picture = MakePicture(16, 8, TestPixel);
    picture->PrepareForSharing();
    const std::vector<Word> before = WordsOf(picture);
    const std::vector<Word> rendered = WordsOf(effect->Render({picture}, TickTime::Zero(), 0));
    EXPECT_EQ(WordsOf(picture), before);
    EXPECT_THAT(std::vector<Word>(rendered.begin(), rendered.begin() + 64), Each(0x9ABCDEF0u));
    EXPECT_TRUE(std::equal(rendered.begin() + 64, rendered.end(), before.begin() + 64));
}

TEST(Frei0rRender, AGeneratorPaintsOnOpaqueBlackInItsOwnColors)
{
    const auto effect = OpenOurs("painter");
    EXPECT_EQ(effect->InputCount(), 0);
    const std::vector<Word> rendered = WordsOf(effect->Render({}, TickTime::Zero(), 0));
    EXPECT_THAT(std::vector<Word>(rendered.begin(), rendered.begin() + 64), Each(0x80010203u));
    EXPECT_THAT(std::vector<Word>(rendered.begin() + 64, rendered.end()), Each(0xFF000000u));
}

TEST(Frei0rRender, AFaderFollowsThePositionUnlessItIsSet)
{
    const auto one = MakePicture(16, 8, [](auto, auto) { return 0x80112233u; });
    const auto two = MakePicture(16, 8, [](auto, auto) { return 0xFF445566u; });
    const auto effect = OpenOurs("fader");
    EXPECT_EQ(effect->InputCount(), 2);
    EXPECT_EQ(WordsOf(effect->Render({one, two}, TickTime::Zero(), 0.25)), WordsOf(one));
    EXPECT_EQ(WordsOf(effect->Render({one, two}, TickTime::Zero(), 0.75)), WordsOf(two));
    effect->SetParameter("fader", "0");
    EXPECT_EQ(WordsOf(effect->Render({one, two}, TickTime::Zero(), 0.75)), WordsOf(one));
}

TEST(Frei0rRender, SurvivesWhatThePluginDoesWrong)
{
    const auto picture = MakePicture(16, 8, TestPixel);
    {
        const auto effect = OpenOurs("thrower");
        EXPECT_THROW(effect->Render({picture}, TickTime::FromSeconds(1), 0), std::runtime_error);
        EXPECT_EQ(WordsOf(effect->Render({picture}, TickTime::Zero(), 0)), WordsOf(picture));
    }
    EXPECT_THAT(TakeNotes(), ElementsAre("construct 16 x 8 in frei0r.thrower", "destruct in frei0r.thrower",
                                         "deinit in frei0r.thrower"));
    for (const double seconds : {1.0, 2.0}) { // behind its output, before its input
        std::string text;
        const auto effect = OpenOurs("overrunner");
        EXPECT_NO_THROW(effect->Render({picture}, TickTime::Zero(), 0));
        EXPECT_EQ(FailureOf([&] { effect->Render({picture}, TickTime::FromSeconds(seconds), 0); }, text),
                  kEffectError_PluginFailed);
        EXPECT_EQ(text, "frei0r.overrunner wrote outside of its picture of 16 x 8 pixels");
    }
}

TEST(Frei0rRender, RefusesPicturesThatDoNotFit)
{
    const struct {
        const char* name;
        VideoEffectForm form;
    } kForms[] = {
        {"no width", {.width = 0, .height = 8}},
        {"too wide for any frame", {.width = 65536, .height = 8}},
        {"another format", {.width = 16, .height = 8, .format = kiomediatypes::kPixelFormat_BGRA_4444_32f}},
    };
    for (const auto& test : kForms) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { Open(PLUGIN_FOLDER "/watcher.so", test.form); }, text),
                  kEffectError_BadFrame)
            << test.name;
    }
    const auto effect = OpenOurs("watcher");
    const std::vector<std::vector<MF::IVideoFrameRef>> kInputs{
        {},
        {MF::IVideoFrameRef()},
        {MakePicture(16, 16, TestPixel)},
        {MakePicture(16, 8, TestPixel), MakePicture(16, 8, TestPixel)},
    };
    for (const auto& inputs : kInputs) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { effect->Render(inputs, TickTime::Zero(), 0); }, text),
                  kEffectError_BadFrame);
        EXPECT_THAT(text, HasSubstr("frei0r.watcher was given "));
    }
}

TEST(Frei0rRender, PluginsThatKeepGlobalStateRunOneAtATime)
{
    const support::TemporaryFolder folder;
    // Known by the name of its file.
    std::filesystem::copy_file(PLUGIN_FOLDER "/crowd.so", folder / "glitch0r.so");
    const auto render = [&] {
        const auto effect = Open((folder / "glitch0r.so").string(), {.width = 8, .height = 8});
        const auto picture = MakePicture(8, 8, TestPixel);
        for (int i = 0; i < 300; ++i) {
            effect->Render({picture}, TickTime::Zero(), 0);
        }
    };
    std::thread other(render);
    render();
    other.join();
    EXPECT_THAT(TakeNotes(), ::testing::Not(::testing::Contains(HasSubstr("two at once"))));
}

} // namespace
