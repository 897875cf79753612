#include <devices/DeviceScript.h>

#include <kiocore/utility/UTF16String.h>

#include <gmock/gmock.h>

using namespace trhost::devices;
using testing::HasSubstr;

TEST(DeviceScript, ReadsWhatItsLinesSay)
{
    const DeviceScript script =
        ParseDeviceScript("# a comment\n"
                          "\n"
                          "player p media=\"my song.wav\" device=hw:1,0 key=7 # and more\r\n"
                          "  recorder\tr rate=44100 channels=1\n"
                          "open r priority=3 key=4294967295\n"
                          "expect not waiting r for p\n"
                          "await active nobody within=1:30\n"
                          "destroy p\n"
                          "player p sink=wav:p.wav pace=no");
    ASSERT_TRUE(script.errors.empty()) << kiocore::utility::ToUTF8(script.errors.front().text);
    ASSERT_EQ(script.statements.size(), 7u);
    const auto& lines = script.statements;
    EXPECT_EQ(lines[0].line, 3);
    EXPECT_EQ(lines[0].media, "my song.wav");
    EXPECT_EQ(lines[0].device, "hw:1,0");
    EXPECT_EQ(lines[0].key, 7u);
    EXPECT_EQ(lines[1].rate, 44100);
    EXPECT_EQ(lines[2].verb, ScriptStatement::Verb::kActivate);
    EXPECT_EQ(lines[2].key, 4294967295u);
    EXPECT_TRUE(lines[3].condition.negated);
    EXPECT_EQ(lines[3].condition.forName, "p");
    EXPECT_EQ(lines[4].condition.name, "");
    EXPECT_EQ(lines[4].duration, std::chrono::seconds(90));
    EXPECT_FALSE(lines[6].paced);
    EXPECT_EQ(lines[6].line, 9);
}

TEST(DeviceScript, NamesTheLineAndWhatIsWrongWithIt)
{
    const struct {
        const char* line; // the second one, after "player p" and before "recorder r"
        const char* error;
    } kCases[] = {
        {"play p", "play is no command; expected player"},
        {"activate", "something is missing behind activate"},
        {"activate q", "there is no device q"},
        {"activate r", "there is no device r"}, // only later
        {"player p", "there is a device p already"},
        {"player nobody", "cannot be the name"},
        {"player key=1", "cannot be the name"},
        {"player q device=null sink=wav:a", "either a device or a sink"},
        {"player q sink=mp3:a", "expected wav:FILE"},
        {"player q key=-1", "expected a number from 0 to 4294967295"},
        {"player q key=4294967296", "expected a number from 0"},
        {"player q rate=48000", "rate=48000 is not known here; expected media="},
        {"player q media=", "expected a value"},
        {"player q pace=maybe", "expected yes or no"},
        {"recorder q channels=65", "expected a number from 1 to 64"},
        {"recorder q media=a.wav", "is not known here"},
        {"record p", "p is no recorder"},
        {"stop p", "p is no recorder"},
        {"reset p", "p is too much here"},
        {"wait 5 minutes", "minutes is too much here"},
        {"wait soon", "soon is no duration"},
        {"expect happy p", "happy cannot be expected"},
        {"expect open nobody", "there is no device nobody"},
        {"expect recording p", "p is no recorder"},
        {"expect active p within=2s", "is too much here"},
        {"await active p within=never", "never is no duration"},
        {"expect active p for p", "for is too much"},
        {"activate \"p", "quotation mark"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.line);
        const DeviceScript script =
            ParseDeviceScript("player p\n" + std::string(test.line) + "\nrecorder r\n");
        ASSERT_EQ(script.errors.size(), 1u);
        EXPECT_EQ(script.errors[0].line, 2);
        EXPECT_THAT(kiocore::utility::ToUTF8(script.errors[0].text), HasSubstr(test.error));
    }
}

TEST(DeviceScript, TellsAllErrorsAtOnce)
{
    const DeviceScript script = ParseDeviceScript("fly\nplayer p\ndestroy p\nactivate p\n\nrecord p x");
    ASSERT_EQ(script.errors.size(), 3u);
    EXPECT_EQ(script.errors[0].line, 1);
    EXPECT_EQ(script.errors[1].line, 4);
    EXPECT_EQ(script.errors[1].text, u"p was destroyed before");
    EXPECT_EQ(script.errors[2].line, 6);
}
