#include "../ProgramRunner.h"
#include "../SmallMedia.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace trhosttest {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Real plug-ins, and a picture to run them on.
class Effects : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        setenv("FREI0R_PATH", FREI0R_PLUGIN_FOLDER, 1);
        setenv("LADSPA_PATH", "/usr/lib/ladspa", 1);
        sPlace = new Workplace; // one scan for all tests
        ASSERT_EQ(sPlace->Run({"still", "ColorBars", "--size", "320x180", "-o", In()}).status, 0);
        const RunResult first = sPlace->Run({"effects", "list"});
        ASSERT_EQ(first.status, 0) << first.err;
    }
    static void TearDownTestSuite()
    {
        delete sPlace;
        unsetenv("FREI0R_PATH");
        unsetenv("LADSPA_PATH");
    }
    void TearDown() override
    {
        sPlace->Run({"effects", "enable", "--all"});
        sPlace->Run({"effects", "crash-report", "--clear"});
    }

    static std::string In() { return sPlace->Root() / "in.png"; }
    static std::string Out() { return sPlace->Root() / "out.png"; }
    static RunResult Run(std::vector<std::string> inArguments) { return sPlace->Run(inArguments); }

    static Workplace* sPlace;
};
Workplace* Effects::sPlace = nullptr;

TEST_F(Effects, AreListedWithWhatTheyAre)
{
    const RunResult run = Run({"--json", "effects", "list"});
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* line :
         {R"("matchName":"frei0r.invert0r",)", R"("kind":"video filter")", R"("matchName":"frei0r.plasma",)",
          R"("kind":"generator")", R"("kind":"transition")", R"("matchName":"avfilter.hflip",)",
          R"("types":["YUV","32BitColor"])", R"("types":["Accelerated")", R"("matchName":"ladspa.1181",)",
          R"("kind":"audio filter")", R"("cannotRun":"needs libgavl.so.2, which is not installed")"}) {
        EXPECT_THAT(run.out, HasSubstr(line));
    }
    // The second start has loaded nothing: no child was started, and the list is the same.
    const RunResult again = Run({"--trace", "Effects", "--json", "effects", "list"});
    EXPECT_EQ(again.out, run.out);
}

TEST_F(Effects, RunOnAPicture)
{
    ASSERT_EQ(Run({"effects", "run", "avfilter.hflip", In(), Out()}).status, 0);
    const WrittenFrame before = ReadWrittenFrame(In());
    const WrittenFrame after = ReadWrittenFrame(Out());
    ASSERT_EQ(after.width, before.width);
    for (std::uint32_t x = 0; x < before.width; ++x) {
        ASSERT_EQ(after.pixels.substr(4 * (before.width - 1 - x), 4), before.pixels.substr(4 * x, 4)) << x;
    }
    const RunResult generated = Run({"effects", "run", "frei0r.plasma", Out(), "--size", "64x48"});
    ASSERT_EQ(generated.status, 0) << generated.err;
    EXPECT_EQ(ReadWrittenFrame(Out()).width, 64u);
}

TEST_F(Effects, TransitionsGoFromOnePictureToTheOther)
{
    const std::string other = sPlace->Root() / "other.png";
    ASSERT_EQ(Run({"effects", "run", "avfilter.negate", In(), other}).status, 0);
    const struct {
        const char* at;
        std::string expected;
    } kCases[] = {{"0", In()}, {"1", other}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.at);
        const RunResult run =
            Run({"effects", "transition", "avfilter.xfade", In(), other, Out(), "--at", test.at});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(ReadWrittenFrame(Out()).pixels == ReadWrittenFrame(test.expected).pixels);
    }
}

TEST_F(Effects, MakeAPictureOrOneOfEach)
{
    const std::string pattern = sPlace->Root() / "p-%02d.png";
    const RunResult run = Run({"effects", "run", "avfilter.tmix", In(), pattern, "--frames", "3"});
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char* name : {"p-01.png", "p-02.png", "p-03.png"}) {
        EXPECT_EQ(ReadWrittenFrame(sPlace->Root() / name).width, 320u);
    }
    EXPECT_FALSE(std::filesystem::exists(sPlace->Root() / "p-04.png"));
}

TEST_F(Effects, RunOnSound)
{
    const std::string in = sPlace->Root() / "in.wav";
    const std::string out = sPlace->Root() / "out.wav";
    WriteWave(in);
    const RunResult run = Run({"effects", "run", "ladspa.1181", in, out, "--force"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("48000 Hz, 1 channels, by ladspa.1181"));
    EXPECT_GE(std::filesystem::file_size(out), 4800u * 4);
}

TEST_F(Effects, RefuseWithAReason)
{
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* said;
    } kCases[] = {
        {"an unknown name", {"run", "frei0r.invert", In(), Out()}, 1, "but frei0r.invert0r"},
        {"one that opens files", {"run", "avfilter.subtitles", In(), Out()}, 1, "opens files"},
        {"a library that is not there", {"run", "frei0r.rgbparade", In(), Out()}, 1, "libgavl.so.2"},
        {"a parameter that it has not", {"run", "frei0r.glow", In(), Out(), "--param", "blurr=1"}, 2, "blur"},
        {"a parameter without a value",
         {"run", "frei0r.glow", In(), Out(), "--param", "blur"},
         2,
         "NAME=VALUE"},
        {"the input as output", {"run", "frei0r.glow", In(), In()}, 2, "is the input itself"},
        {"a filter without output", {"run", "frei0r.glow", In()}, 2, "expected two"},
        {"a filter as a transition",
         {"transition", "frei0r.glow", In(), In(), Out()},
         1,
         "expected a transition"},
        {"a transition as a filter", {"run", "avfilter.xfade", In(), Out()}, 2, "is a transition"},
        {"a sound filter on a picture", {"run", "ladspa.1181", In(), Out()}, 3, "expected audio"},
        {"a place beyond the end",
         {"transition", "avfilter.xfade", In(), In(), Out(), "--at", "1.5"},
         2,
         "from 0 to 1"},
        {"no format", {"types", "--from-formats", "rgb565"}, 2, "no such pixel format"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"effects"};
        arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
        const RunResult run = Run(arguments);
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.err, HasSubstr(test.said));
    }
}

TEST_F(Effects, ThatAreSwitchedOffDoNotRun)
{
    ASSERT_EQ(Run({"effects", "disable", "frei0r.glow", "avfilter.b*"}).status, 0);
    const RunResult refused = Run({"effects", "run", "frei0r.glow", In(), Out()});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("trhost effects enable frei0r.glow"));
    EXPECT_EQ(Run({"effects", "run", "avfilter.boxblur", In(), Out()}).status, 1);
    EXPECT_EQ(Run({"effects", "enable", "frei0r.glow"}).status, 0);
    EXPECT_EQ(Run({"effects", "run", "frei0r.glow", In(), Out()}).status, 0);
    EXPECT_EQ(Run({"effects", "run", "avfilter.boxblur", In(), Out()}).status, 1);
    const RunResult safe = Run({"--safe-mode", "effects", "run", "frei0r.glow", In(), Out()});
    EXPECT_EQ(safe.status, 1);
    EXPECT_THAT(safe.err, HasSubstr("safe mode"));
}

TEST_F(Effects, OneThatKillsTheProgramIsNamedAtEachStartUntilTheReportWasSeen)
{
    const RunResult crashed = Run({"effects", "run", "avfilter.vidstabdetect", In(), Out()});
    EXPECT_EQ(crashed.status, 128 + SIGABRT) << crashed.err;
    const std::string named = "avfilter.vidstabdetect (vidstabdetect ";
    EXPECT_THAT(Run({"--version"}).err, IsEmpty());
    EXPECT_THAT(Run({"--help"}).err, IsEmpty());
    const Listing before = ListFiles(sPlace->State(""));
    EXPECT_THAT(Run({"--safe-mode", "cache", "list"}).err, IsEmpty());
    EXPECT_EQ(ListFiles(sPlace->State("")), before) << "safe mode wrote something";
    EXPECT_THAT(Run({"cache", "list"}).err,
                AllOf(HasSubstr(named), HasSubstr("trhost effects disable avfilter.vidstabdetect")));
    EXPECT_THAT(Run({"prefs", "show"}).err, HasSubstr(named));
    EXPECT_THAT(Run({"--quiet", "prefs", "show"}).err, IsEmpty());
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    EXPECT_THAT(Run({"ui", "dump", "effects-manage"}).out,
                ContainsRegex(
                    "\"id\": \"SearchText\",\n *\"class\": \"UI_SearchBox\",\n *\"text\": \"vidstabdetect\""))
        << "the plug-in manager opens with what crashed";
    EXPECT_THAT(Run({"effects", "crash-report"}).out,
                AllOf(HasSubstr("crashed once"), HasSubstr("effects disable avfilter.vidstabdetect")));
    EXPECT_THAT(Run({"cache", "list"}).err, IsEmpty());
    EXPECT_THAT(Run({"--json", "effects", "info", "avfilter.vidstabdetect"}).out, HasSubstr("\"crashes\":1"));
    EXPECT_EQ(Run({"effects", "disable", "avfilter.vidstabdetect"}).status, 0);
    EXPECT_EQ(Run({"effects", "run", "avfilter.vidstabdetect", In(), Out()}).status, 1);
}

TEST_F(Effects, WithDetectionOffACrashIsNotNamed)
{
    const RunResult crashed = Run({"--feature", "Vre.PluginManagerCrashDetection=off", "effects", "run",
                                   "avfilter.vidstabdetect", In(), Out()});
    EXPECT_EQ(crashed.status, 128 + SIGABRT) << crashed.err;
    // Only the black box knows: a suspect.
    EXPECT_THAT(Run({"cache", "list"}).err, AllOf(HasSubstr("avfilter.vidstabdetect was running when"),
                                                  Not(HasSubstr("crashed trhost"))));
}

TEST_F(Effects, OneThatHangsIsToldOfAndSuspectedOnceItIsKilled)
{
    {
        Child running(TRHOST_PROGRAM,
                      sPlace->Arguments({"--debug-db", "Host.WatchdogSeconds=1", "effects", "--plugins",
                                         HANGING_PLUGIN_FOLDER, "run", "frei0r.hanger", In(), Out()}));
        ASSERT_TRUE(running.WaitForError("frei0r.hanger has been running for 1 s and does not come back"));
    } // killed
    const RunResult next = Run({"cache", "list"});
    EXPECT_THAT(next.err, HasSubstr("frei0r.hanger was running when trhost was ended"));
    EXPECT_THAT(Run({"effects", "crash-report"}).out, HasSubstr("was running once when trhost was ended"));
}

TEST_F(Effects, AProvokedFaultShowsBothWays)
{
    const std::vector<std::string> provoke{"--debug-db", "TR.EffectPluginManager.ProvokeCrash=true"};
    const std::vector<std::string> run{"effects", "run", "frei0r.glow", In(), Out()};
    std::vector<std::string> survive = provoke;
    survive.insert(survive.end(), {"--trace", "Trail"});
    survive.insert(survive.end(), run.begin(), run.end());
    const RunResult survived = Run(survive);
    EXPECT_EQ(survived.status, 0) << survived.err;
    EXPECT_THAT(survived.err, HasSubstr(R"("checkpoint":"Machine Exception","exception":11)"));
    EXPECT_THAT(Run({"cache", "list"}).err, HasSubstr("frei0r.glow (Glow"));

    std::vector<std::string> die = provoke;
    die.insert(die.end(), {"--debug-db", "Host.CrashOnMachineException=true"});
    die.insert(die.end(), run.begin(), run.end());
    const RunResult died = Run(die);
    EXPECT_EQ(died.status, 128 + SIGABRT);
    EXPECT_THAT(died.err, HasSubstr("Machine Exception"));
    EXPECT_THAT(Run({"effects", "crash-report"}).out, ContainsRegex("frei0r.glow .*: crashed 2 times"));
}

TEST_F(Effects, CheckFindsWhatIsWrongAndSwitchesItOff)
{
    const RunResult good = Run({"effects", "check", "frei0r.invert0r", "ladspa.1181"});
    EXPECT_EQ(good.status, 0) << good.out;
    const RunResult bad = Run({"effects", "--plugins", HANGING_PLUGIN_FOLDER, "check", "frei0r.invert0r",
                               "frei0r.hanger", "--time-out", "2", "--disable-bad"});
    EXPECT_EQ(bad.status, 1) << bad.out;
    EXPECT_THAT(bad.out, AllOf(HasSubstr("frei0r.hanger: BAD"), HasSubstr("frei0r.hanger: switched off"),
                               HasSubstr("2 effects checked, 1 bad")));
    EXPECT_EQ(
        Run({"effects", "--plugins", HANGING_PLUGIN_FOLDER, "run", "frei0r.hanger", In(), Out()}).status, 1);
    const RunResult outside = Run({"effects", "check", "frei0r.scanline0r", "frei0r.elastic_scale"});
    EXPECT_EQ(outside.status, 1);
    EXPECT_THAT(outside.out,
                AllOf(ContainsRegex("frei0r.scanline0r: BAD, read outside its frame: .*719x487"),
                      ContainsRegex("frei0r.elastic_scale: BAD, wrote outside its frame: .*719x487")));
}

TEST_F(Effects, TypeFilesAreWrittenAndRead)
{
    const std::string file = sPlace->Root() / "type.xml";
    const std::vector<std::string> write{"effects",
                                         "type",
                                         file,
                                         "--write",
                                         "--name",
                                         "Fast",
                                         "--guid",
                                         "102BFB4C-1980-4e77-87DF-17B03D5B09DB",
                                         "--description",
                                         "en_US=Fast ones",
                                         "--description",
                                         "de_DE=Schnelle",
                                         "--match-name",
                                         "b.two",
                                         "--match-name",
                                         "a.one"};
    ASSERT_EQ(Run(write).status, 0);
    EXPECT_EQ(Run(write).status, 3) << "replaced without --force";
    const RunResult shown = Run({"effects", "type", file});
    EXPECT_THAT(shown.out, AllOf(HasSubstr("name = Fast"), HasSubstr("description = Fast ones"),
                                 HasSubstr("match-name = a.one\nmatch-name = b.two")));
    EXPECT_THAT(Run({"--lang", "de", "effects", "type", file}).out, HasSubstr("description = Schnelle"));
    EXPECT_EQ(Run({"effects", "type", In()}).status, 1);
    EXPECT_EQ(Run({"effects", "types", "--from-formats", "bgra32f", "v210"}).out.substr(0, 3), "YUV");
}

} // namespace trhosttest
