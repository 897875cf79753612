// "trhost play" and "trhost record", to files and on ALSA's "null" device.

#include "ProgramRunner.h"
#include "SmallMedia.h"

#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

namespace trhosttest {

using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// What lies in the chunk of a WAVE file.
std::string Chunk(const std::filesystem::path& inPath, const std::string& inName)
{
    const std::string bytes = support::ReadFile(inPath);
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        std::uint32_t size = 0;
        for (int i = 3; i >= 0; --i) {
            size = size << 8 | static_cast<unsigned char>(bytes[at + 4 + std::size_t(i)]);
        }
        if (bytes.compare(at, 4, inName) == 0) {
            return bytes.substr(at + 8, size);
        }
        at += 8 + size + size % 2;
    }
    return "no chunk " + inName;
}

bool RunTool(const std::string& inCommand)
{
    return std::system(inCommand.c_str()) == 0;
}

} // namespace

TEST(Play, AFileGetsTheVerySamplesOfTheMedia)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"), 48'001, 3);
    const std::string source = Chunk(place.Media("a.wav"), "data");
    const struct {
        const char* name;
        std::vector<std::string> options;
        std::string expected;
    } kCases[] = {
        {"all of it", {}, source},
        {"from a time on", {"--from", "0.5"}, source.substr(48'000)},
        {"so much of it", {"--from", "100ms", "--duration", "0.25s"}, source.substr(9600, 24'000)},
        {"no more than there is", {"--from", "0:00.9", "--duration", "1:00"}, source.substr(86'400)},
        {"from behind its end", {"--from", "1:00:00"}, ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto out = place.Root() / "out.wav";
        std::vector<std::string> arguments{"play", place.Media("a.wav"), "--sink", "wav:" + out.native(),
                                           "--force"};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const RunResult run = place.Run(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(Chunk(out, "data") == test.expected) << Chunk(out, "data").size();
        EXPECT_EQ(Chunk(out, "fmt "), Chunk(place.Media("a.wav"), "fmt "));
    }
}

TEST(Play, MoreThanSixteenBitsStayToo)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    const auto deep = place.Media("deep.wav");
    // Halved, the samples need the 17th bit.
    ASSERT_TRUE(RunTool("ffmpeg -v error -i '" + place.Media("a.wav").native() +
                        "' -af volume=0.5:precision=double -c:a pcm_s24le '" + deep.native() + "'"));
    const auto out = place.Root() / "out.wav";
    ASSERT_EQ(place.Run({"play", deep, "--sink", "wav:" + out.native()}).status, 0);
    const auto back = place.Root() / "back.wav";
    ASSERT_TRUE(RunTool("ffmpeg -v error -i '" + out.native() + "' -c:a pcm_s24le '" + back.native() + "'"));
    EXPECT_TRUE(Chunk(back, "data") == Chunk(deep, "data"));
    ASSERT_EQ(
        place.Run({"play", deep, "--sink", "wav:" + back.native(), "--format", "s24", "--force"}).status, 0);
    EXPECT_TRUE(Chunk(back, "data") == Chunk(deep, "data"));
}

TEST(Play, PlaysCompressedSoundOnADevice)
{
    const Workplace place;
    WriteMovie(place.Media("movie.mp4"));
    const RunResult run = place.Run({"play", place.Media("movie.mp4"), "--device", "null", "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr(R"("to":"null","frames":4)"));
    EXPECT_THAT(run.out, HasSubstr(R"("rate":44100,"channels":1,)"));
}

TEST(Play, SaysWhatIsWrongAndLeavesNothing)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    const std::string sink = "wav:" + (place.Root() / "out.wav").native();
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } kCases[] = {
        {"no such media", {"play", "/nowhere/a.wav", "--sink", sink}, 3, "No such file"},
        {"no such stream", {"play", place.Media("a.wav"), "--stream", "4", "--sink", sink}, 3, "stream 4"},
        {"no such device", {"play", place.Media("a.wav"), "--device", "no-such-card"}, 3, "no-such-card"},
        {"no such sink", {"play", place.Media("a.wav"), "--sink", "a.mp3"}, 2, "expected wav:FILE"},
        {"no folder", {"play", place.Media("a.wav"), "--sink", "wav:/nowhere/a.wav"}, 3, "/nowhere/a.wav"},
        {"over the media itself",
         {"play", place.Media("a.wav"), "--sink", "wav:" + place.Media("a.wav").native()},
         3,
         "already"},
        {"no time", {"play", place.Media("a.wav"), "--from", "noon"}, 2, "expected a time"},
        {"device and sink",
         {"play", place.Media("a.wav"), "--device", "null", "--sink", sink},
         2,
         "--device"},
        {"format without sink", {"play", place.Media("a.wav"), "--format", "s16"}, 2, "--sink"},
    };
    const Listing before = ListFiles(place.Media(""));
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = place.Run(test.arguments);
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.err, HasSubstr(test.error));
    }
    EXPECT_EQ(ListFiles(place.Media("")), before);
    EXPECT_FALSE(std::filesystem::exists(place.Root() / "out.wav"));
}

TEST(Play, StoppedHalfwayItLeavesNoFile)
{
    const Workplace place;
    WriteSparseWave(place.Media("long.wav"), 48'000 * 3600);
    std::filesystem::create_directories(place.Root() / "out");
    const auto out = place.Root() / "out/out.wav";
    Child child(TRHOST_PROGRAM,
                place.Arguments({"play", place.Media("long.wav"), "--sink", "wav:" + out.native(),
                                 "--real-time", "--trace", "Devices:1"}));
    ASSERT_TRUE(child.WaitForError("opened: "));
    kill(child.Pid(), SIGINT);
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("trhost: interrupted"));
    EXPECT_TRUE(std::filesystem::is_empty(place.Root() / "out"));
}

TEST(Record, MakesAFileOfTheLengthAsked)
{
    const Workplace place;
    const auto out = place.Root() / "take.wav";
    const RunResult run = place.Run({"record", out, "--device", "null", "--duration", "250ms", "--rate",
                                     "44100", "--channels", "1", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Chunk(out, "data"), std::string(11'025 * 2, '\0'));
    EXPECT_THAT(run.out, HasSubstr(R"("frames":11025,"rate":44100,"channels":1,"seconds":0.25,"peak":0,)"));

    const std::string before = support::ReadFile(out);
    const RunResult again = place.Run({"record", out, "--device", "null", "--duration", "1ms"});
    EXPECT_EQ(again.status, 3);
    EXPECT_THAT(again.err, HasSubstr("overwritten only with --force"));
    EXPECT_EQ(support::ReadFile(out), before);
    EXPECT_EQ(place.Run({"record", out, "--device", "null", "--duration", "1ms", "--force"}).status, 0);
    EXPECT_EQ(Chunk(out, "data").size(), 48u * 4);
}

TEST(Record, StoppedItKeepsWhatThereIs)
{
    const struct {
        const char* name;
        std::vector<std::string> options;
        int status;
    } kCases[] = {
        {"as one stops a recording", {}, 0},
        {"before the time is up", {"--duration", "1:00:00"}, 3},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Workplace place;
        const auto out = place.Root() / "take.wav";
        std::vector<std::string> arguments{"record", out, "--device", "null", "--trace", "Devices:1"};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        Child child(TRHOST_PROGRAM, place.Arguments(arguments));
        ASSERT_TRUE(child.WaitForError("recording: "));
        kill(child.Pid(), SIGINT);
        const RunResult run = child.Wait();
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.out, StartsWith("recorded " + out.native()));
        EXPECT_GE(Chunk(out, "data").size(), 4u);
        EXPECT_EQ(Chunk(out, "data").size() % 4, 0u);
    }
}

TEST(Record, ThatNeverBeganLeavesNothing)
{
    const Workplace place;
    std::filesystem::create_directories(place.Root() / "out");
    const RunResult run = place.Run({"record", place.Root() / "out/take.wav", "--device", "no-such-card"});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("no-such-card"));
    EXPECT_TRUE(std::filesystem::is_empty(place.Root() / "out"));
}

TEST(Play, ToAFileNeedsNoAudioLibrary)
{
    // The same program with the same libraries, but without the module that has it.
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    const std::filesystem::path program = TRHOST_PROGRAM;
    const std::filesystem::path libraries = program.parent_path().parent_path() / "lib";
    std::filesystem::create_directories(place.Root() / "bin");
    std::filesystem::create_directories(place.Root() / "lib/trhost");
    std::filesystem::copy_file(program, place.Root() / "bin/trhost");
    for (const auto& entry : std::filesystem::directory_iterator(libraries)) {
        if (!entry.is_directory()) {
            std::filesystem::create_symlink(entry.path(), place.Root() / "lib" / entry.path().filename());
        }
    }
    std::filesystem::create_symlink(libraries / "trhost/trhost_media.so",
                                    place.Root() / "lib/trhost/trhost_media.so");
    const std::string bare = place.Root() / "bin/trhost";
    const std::string sink = "wav:" + (place.Root() / "out.wav").native();
    EXPECT_EQ(Child(bare, place.Arguments({"play", place.Media("a.wav"), "--sink", sink})).Wait().status, 0);
    const RunResult run =
        Child(bare, place.Arguments({"play", place.Media("a.wav"), "--device", "null"})).Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("trhost_devices.so"));
}

} // namespace trhosttest
