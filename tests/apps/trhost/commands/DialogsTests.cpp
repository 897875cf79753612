// Commands that show windows, used through scripts of mouse and key events.

#include "../ProgramRunner.h"
#include "../SmallMedia.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sys/stat.h>

namespace trhosttest {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// In memory, with no plug-ins but the media library's own filters.
class Dialogs : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("FREI0R_PATH", "/nowhere", 1);
        setenv("LADSPA_PATH", "/nowhere", 1);
        sPlace = new Workplace; // one scan for all tests
        ASSERT_EQ(sPlace->Run({"effects", "list"}).status, 0);
    }
    static void TearDownTestSuite()
    {
        delete sPlace;
        unsetenv("QT_QPA_PLATFORM");
        unsetenv("FREI0R_PATH");
        unsetenv("LADSPA_PATH");
    }
    void TearDown() override { Run({"effects", "enable", "--all"}); }

    static RunResult Run(std::vector<std::string> inArguments) { return sPlace->Run(inArguments); }
    static RunResult Drive(const char* inDialog, const std::string& inScript,
                           std::vector<std::string> inMore = {})
    {
        const std::string file = sPlace->Root() / "script.ui";
        std::ofstream(file) << inScript;
        std::vector<std::string> arguments{"ui", "drive", inDialog, file};
        arguments.insert(arguments.end(), inMore.begin(), inMore.end());
        return Run(arguments);
    }
    /// Those that are switched off.
    static std::string SwitchedOff()
    {
        std::string off;
        std::istringstream lines(Run({"effects", "list"}).out);
        for (std::string line; std::getline(lines, line);) {
            off += line.find("switched off") != std::string::npos ? line.substr(0, line.find(' ')) + " " : "";
        }
        return off;
    }

    static Workplace* sPlace;
};
Workplace* Dialogs::sPlace = nullptr;

constexpr const char* kSwitchOffHflip = "click OnlyShowThirdPartyEffectsCheckbox\n"
                                        "click SearchText\n"
                                        "type \"hflip\"\n"
                                        "expect PluginTree rows 2\n"
                                        "expect OK state disabled\n"
                                        "click PluginTree row \"hflip\" column Enabled\n"
                                        "expect OK state enabled\n";
// As it was, for the next test.
constexpr const char* kShowThirdPartyOnly = "click OnlyShowThirdPartyEffectsCheckbox\n";

TEST_F(Dialogs, AnEffectIsSearchedAndSwitchedOff)
{
    const RunResult run =
        Drive("effects-manage", std::string(kSwitchOffHflip) + kShowThirdPartyOnly +
                                    "click OK\n"
                                    "expect Message text \"You will need to restart Media Host "
                                    "for the changes to take place.\"\n"
                                    "click Button2\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(SwitchedOff(), "avfilter.hflip ");
    EXPECT_EQ(Run({"effects", "info", "avfilter.hflip"}).status, 0);
}

TEST_F(Dialogs, CancelChangesNothingAndPuttingBackIsNoChange)
{
    const RunResult cancelled =
        Drive("effects-manage", std::string(kSwitchOffHflip) + kShowThirdPartyOnly + "click Cancel\n");
    EXPECT_EQ(cancelled.status, 0) << cancelled.err;
    EXPECT_EQ(SwitchedOff(), "");
    const RunResult run = Drive("effects-manage", std::string(kSwitchOffHflip) +
                                                      "click PluginTree row \"hflip\" column Enabled\n"
                                                      "expect OK state disabled\n" +
                                                      kShowThirdPartyOnly + "key Escape\n");
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(Dialogs, ColumnsAndTheBoxAreKeptUntilTheNextTime)
{
    ASSERT_EQ(Drive("effects-manage", "click OnlyShowThirdPartyEffectsCheckbox\n"
                                      "drag title \"File Path\" to title \"Enabled\" at 2,5\n"
                                      "click Cancel\n")
                  .status,
              0);
    const RunResult dump = Run({"ui", "dump", "effects-manage"});
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_LT(dump.out.find("\"File Path\""), dump.out.find("\"Enabled\"")) << dump.out;
    EXPECT_EQ(Drive("effects-manage", "expect OnlyShowThirdPartyEffectsCheckbox state unchecked\n"
                                      "click OnlyShowThirdPartyEffectsCheckbox\nclick Cancel\n")
                  .status,
              0);
}

TEST_F(Dialogs, AChangeMadeByAnotherProgramLeadsToTheOtherWording)
{
    // Reading its script, the dialog's program waits for us: it knows by then what was switched off before.
    const std::string fifo = sPlace->Root() / "script.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    Child child(TRHOST_PROGRAM, sPlace->Arguments({"ui", "drive", "effects-manage", fifo}));
    {
        std::ofstream script(fifo);
        EXPECT_EQ(Run({"effects", "disable", "avfilter.vflip"}).status, 0);
        script << "click Cancel\n"
                  "expect Message text \"You have enabled or disabled effects in another app. Please restart "
                  "Media "
                  "Host to sync these changes.\"\n"
                  "click Button1\n";
    }
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(SwitchedOff(), "avfilter.vflip ");
}

TEST_F(Dialogs, AreDescribedAndPictured)
{
    for (const char* name : {"effects-manage", "restart-prompt", "progress", "redirect"}) {
        SCOPED_TRACE(name);
        const RunResult dump = Run({"ui", "dump", name});
        EXPECT_EQ(dump.status, 0) << dump.err;
        EXPECT_THAT(dump.out, AllOf(HasSubstr("\"id\""), HasSubstr("\"class\""), HasSubstr("\"bounds\"")));
        const std::string small = sPlace->Root() / "1.png";
        const std::string large = sPlace->Root() / "2.png";
        ASSERT_EQ(Run({"ui", "screenshot", name, small}).status, 0);
        ASSERT_EQ(Run({"ui", "screenshot", name, large, "--scale", "2", "--theme", "light"}).status, 0);
        const std::uint32_t width = ReadWrittenFrame(large).width;
        const bool isCutByTheDisplay = name == std::string("effects-manage"); // 400 units wide at this scale
        EXPECT_EQ(width, isCutByTheDisplay ? 800u : 2 * ReadWrittenFrame(small).width);
    }
    EXPECT_THAT(Run({"ui", "dump", "progress"}).out, HasSubstr("\"done\": 456"));
    EXPECT_EQ(SwitchedOff(), "");
}

TEST_F(Dialogs, SayWhatIsWrong)
{
    const struct {
        const char* name;
        const char* script;
        int status;
        std::string error;
    } kCases[] = {
        {"wrong syntax, found before anything is done", "click Cancel\nclikc OK\n", 2, "script.ui:2: "},
        {"an expectation that is not met", "expect OK state enabled\n", 1, "script.ui:1: "},
        {"a node that there is not", "click Nothing\n", 1, "Nothing"},
        {"more to do than dialogs", "click Cancel\nclick Cancel\n", 1, "script.ui:2: "},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = Drive("effects-manage", test.script);
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.err, HasSubstr(test.error));
    }
    EXPECT_EQ(Run({"ui", "dump", "nonsense"}).status, 2);
    unsetenv("QT_QPA_PLATFORM");
    setenv("DISPLAY", ":4711", 1);
    const RunResult run = Run({"ui", "dump", "progress"});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr(":4711"));
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    unsetenv("DISPLAY");
}

TEST_F(Dialogs, RawCameraFilesLeadToTheirPlugin)
{
    const std::string clip = sPlace->Root() / "A001.BRAW";
    std::ofstream(clip) << "anything";
    const std::string out = sPlace->Root() / "frame.png";
    const RunResult run = Run({"frame", clip, "-o", out});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, AllOf(HasSubstr("A001.BRAW"), HasSubstr("https://example.org/")));
    EXPECT_EQ(CountLines(run.err, ""), 1);
    EXPECT_FALSE(std::filesystem::exists(out));
    const RunResult box = Drive("redirect", "expect GoURL text \"Go to "
                                            "https://example.org/plugins/blackmagic-raw\"\nclick Button1\n");
    EXPECT_EQ(box.status, 0) << box.err;
}

TEST_F(Dialogs, TheCacheIsCleanedUnderAProgressDialog)
{
    WriteWave(sPlace->Media("clip.wav"), 4800, 1);
    ASSERT_EQ(Run({"ingest", sPlace->Media("")}).status, 0);
    EXPECT_THAT(Run({"cache", "clean", "--ui"}).out, HasSubstr("cleaned 1 records: 0 removed, 1 kept"));
    EXPECT_EQ(Run({"cache", "delete-all", "--yes", "--ui"}).status, 0);
    EXPECT_EQ(Run({"cache", "clean", "--ui", "--dry-run"}).status, 2);
}

TEST_F(Dialogs, CtrlCClosesWindows)
{
    Child child(TRHOST_PROGRAM, sPlace->Arguments({"--trace", "Host", "effects", "manage"}));
    ASSERT_TRUE(child.WaitForError("UI_Dialog::RunModal"));
    kill(child.Pid(), SIGINT);
    EXPECT_EQ(child.Wait().status, 3);
}

TEST_F(Dialogs, ACommandWithoutThemLoadsNoToolkit)
{
    Child child(TRHOST_PROGRAM, sPlace->Arguments({"--trace", "Host", "effects", "list"}));
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.err, Not(HasSubstr("kioui::")));
}

} // namespace trhosttest
