// "trhost devices": scripts on ALSA's "null" device, which is on every machine.

#include "ProgramRunner.h"
#include "SmallMedia.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace trhosttest {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

RunResult RunScript(const Workplace& inPlace, const std::string& inScript,
                    const std::vector<std::string>& inOptions = {})
{
    std::ofstream(inPlace.Root() / "script") << inScript;
    std::vector<std::string> arguments{"devices", inPlace.Root() / "script"};
    arguments.insert(arguments.end(), inOptions.begin(), inOptions.end());
    return inPlace.Run(arguments);
}

std::string Field(const std::string& inLine, const std::string& inName)
{
    const std::string mark = "\"" + inName + "\":\"";
    const std::size_t at = inLine.find(mark);
    return at == std::string::npos
               ? ""
               : inLine.substr(at + mark.size(), inLine.find('"', at + mark.size()) - at - mark.size());
}

/// "thread: device event" of the events of one device, in order.
std::vector<std::string> EventsOf(const RunResult& inRun, const std::string& inDevice)
{
    std::istringstream lines(inRun.out);
    std::vector<std::string> events;
    for (std::string line; std::getline(lines, line);) {
        if (Field(line, "device") == inDevice) {
            events.push_back(Field(line, "thread") + ": " + Field(line, "event"));
        }
    }
    return events;
}

} // namespace

TEST(DevicesCommand, ARecordingTakesTheDeviceFromAPlayerAndNotTheOtherWayRound)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    const RunResult run =
        RunScript(place,
                  "player player1 device=null key=1 media=" + place.Media("a.wav").native() +
                      "\n"
                      "recorder recorder1 device=null key=2\n"
                      "activate player1\n"
                      "expect active player1\n"
                      "expect open player1\n"
                      "record recorder1\n"
                      "expect active recorder1\n"
                      "expect not open player1\n"
                      "activate player1 # replaces the recording without asking\n"
                      "expect active player1\n"
                      "expect recording recorder1\n"
                      "await finished player1\n"
                      "stop recorder1\n"
                      "open recorder1 # of equal priority now: asks\n"
                      "expect active recorder1\n"
                      "expect not open player1\n",
                  {"--json"});
    EXPECT_EQ(run.status, 0) << run.err << run.out;
    EXPECT_THAT(EventsOf(run, "player1"),
                testing::IsSupersetOf({"devices: asks", "devices: active", "player1: opened",
                                       "devices: askedToLetGo", "player1: closed", "player1: letGo"}));
    const auto recorder = EventsOf(run, "recorder1");
    EXPECT_EQ(std::count(recorder.begin(), recorder.end(), "devices: replaced"), 1);
    // Asked only once: when the program is over.
    EXPECT_EQ(std::count(recorder.begin(), recorder.end(), "devices: askedToLetGo"), 1) << run.out;
    EXPECT_THAT(run.out,
                HasSubstr(R"("event":"asks","device":"recorder1","other":"player1","priority":2,"key":2,)"
                          R"("otherPriority":5,"otherKey":1)"));
}

TEST(DevicesCommand, AHeldDeviceLetsTheScriptGoOnAndTheRequestEndsWhenItIsReleased)
{
    const Workplace place;
    const RunResult run = RunScript(place,
                                    "player player1 device=null key=1\n"
                                    "player player2 device=null key=2\n"
                                    "activate player1\n"
                                    "hold player1\n"
                                    "activate player2\n"
                                    "expect waiting player2 for player1\n"
                                    "expect active player1\n"
                                    "expect not open player2\n"
                                    "release player1\n"
                                    "expect waiting nobody\n"
                                    "expect active player2\n"
                                    "hold player2\n"
                                    "activate player1\n"
                                    "destroy player2 # the other way to let go\n"
                                    "expect active player1\n"
                                    "reset\n"
                                    "expect active nobody\n",
                                    {"--json"});
    EXPECT_EQ(run.status, 0) << run.err << run.out;
    EXPECT_THAT(EventsOf(run, "player2"),
                ElementsAre("devices: asks", testing::_, testing::_, "devices: askedToLetGo",
                            "player2: holdsOn", "player2: closed", "main: destroyed"));
}

TEST(DevicesCommand, SaysWhatItFoundInsteadAndWhere)
{
    const Workplace place;
    const struct {
        const char* name;
        const char* script;
        int status;
        const char* error;
    } kCases[] = {
        {"something else is so", "player p device=null\nactivate p\n\nexpect active nobody", 1,
         "/script:4: expected: active nobody; found: active p, open p"},
        {"it does not come to be", "player p device=null\nawait open p within=10ms", 1,
         "/script:2: expected: open p; found: active nobody"},
        {"a device that is not there", "player p device=no-such-card\nactivate p", 3,
         "p failed, which the script does not expect"},
        {"unless that is expected",
         "player p device=no-such-card\nactivate p\nexpect failed p\n"
         "expect active nobody",
         0, ""},
        {"media that is not there", "player p media=/nowhere/a.wav", 3, "/script:1: "},
        {"a broken script", "player p\nactivate q", 2, "/script:2: there is no device q"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = RunScript(place, test.script);
        EXPECT_EQ(run.status, test.status) << run.err << run.out;
        EXPECT_THAT(run.err, HasSubstr(test.error));
        EXPECT_LE(CountLines(run.err, ""), 1);
    }
    EXPECT_EQ(place.Run({"devices", "/nowhere/script"}).status, 3);
    EXPECT_EQ(place.Run({"devices", "-"}).status, 0); // nothing to do
}

TEST(DevicesCommand, FilesAppearWhenTheirDevicesAreDone)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    const std::string out = place.Root() / "out.wav";
    const std::string script = "player p media=" + place.Media("a.wav").native() + " sink=wav:" + out +
                               " pace=no\nactivate p\nawait finished p\n";
    ASSERT_EQ(RunScript(place, script).status, 0);
    EXPECT_EQ(std::filesystem::file_size(out), 80u + 4800 * 2);
    const RunResult again = RunScript(place, script);
    EXPECT_EQ(again.status, 3);
    EXPECT_THAT(again.err, HasSubstr(out + " is there already"));
    EXPECT_EQ(RunScript(place, script, {"--force"}).status, 0);
}

} // namespace trhosttest
