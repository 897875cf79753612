#include "../ProgramRunner.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace trhosttest {

using testing::HasSubstr;

namespace {

/// 60 pictures at 25 a second, each different from the others, each kept to the bit.
void WritePictures(const std::filesystem::path& inPath, const std::string& inCodec, const std::string& inSize)
{
    RunFFmpeg("-f lavfi -i testsrc2=r=25:d=2.4:s=" + inSize + " " + inCodec + " '" + inPath.native() + "'");
}
constexpr const char* kRGB = "-c:v qtrle";

} // namespace

TEST(Frame, WritesThePictureOfTheTime)
{
    const Workplace place;
    const std::string media = place.Media("rgb.mov");
    WritePictures(media, kRGB, "46x30");
    const std::string all = FFmpegBytes("-i '" + media + "' -pix_fmt bgra -f rawvideo", place.Root());
    constexpr std::size_t kBytes = 46 * 30 * 4;
    ASSERT_EQ(all.size(), 60 * kBytes);
    const struct {
        const char* name;
        std::vector<std::string> at;
        std::size_t expected;
    } kCases[] = {
        {"nothing said", {}, 0},
        {"seconds", {"--at", "1.5s"}, 37},
        {"a hair before the next", {"--at", "1.519999999s"}, 37},
        {"the very start of one", {"--at", "1.52s"}, 38},
        {"milliseconds", {"--at", "1500ms"}, 37},
        {"as on a clock", {"--at", "00:00:01.5"}, 37},
        {"a frame", {"--at", "36f"}, 36},
        {"the last", {"--at", "59f"}, 59},
        {"beyond the end", {"--at", "2h"}, 59},
    };
    for (const auto& test : kCases) {
        for (const char* file : {"out.png", "out.raw"}) {
            SCOPED_TRACE(std::string(test.name) + ": " + file);
            const std::string output = place.Root() / file;
            std::vector<std::string> arguments{"frame", media, "-o", output};
            arguments.insert(arguments.end(), test.at.begin(), test.at.end());
            const RunResult run = place.Run(arguments);
            ASSERT_EQ(run.status, 0) << run.err;
            const WrittenFrame frame = ReadWrittenFrame(output);
            EXPECT_EQ(frame.width, 46u);
            EXPECT_EQ(frame.height, 30u);
            EXPECT_EQ(frame.format, "bgra8");
            EXPECT_TRUE(frame.pixels == all.substr(test.expected * kBytes, kBytes));
            EXPECT_THAT(run.out, HasSubstr("46 x 30, bgra8"));
        }
    }
}

TEST(Frame, MatchesWhatFFmpegMakesOfRealFootage)
{
    const std::string kToRGB = "zscale=min=709:rin=limited:cin=left:m=gbr:r=full";
    const struct {
        const char* name;
        std::vector<std::string> options;
        std::string filter;
    } kCases[] = {
        {"as large as it is", {"--quality", "medium"}, kToRGB + ":f=bilinear"},
        {"as large as it is, best", {"--quality", "high"}, kToRGB + ":f=lanczos"},
        {"smaller", {"--quality", "medium", "--size", "160x90"}, kToRGB + ":f=bicubic:s=160x90"},
        {"larger", {"--quality", "medium", "--size", "854x480"}, kToRGB + ":f=bicubic:s=854x480"},
        {"smaller, best", {"--size", "123x99"}, kToRGB + ":f=lanczos:s=123x99"},
    };
    const Workplace place;
    const std::string media = place.Media("yuv.mp4");
    WritePictures(media,
                  "-vf noise=alls=20:allf=t -pix_fmt yuv420p -c:v libx264 -preset ultrafast -crf 18 -bf 2 "
                  "-colorspace bt709 "
                  "-color_range tv",
                  "320x176");
    const std::string output = place.Root() / "out.png";
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"frame", media, "--at", "31f", "-o", output};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const RunResult run = place.Run(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        // On one thread: cut into slices, the filter orders its steps differently.
        const std::string expected =
            FFmpegBytes("-filter_threads 1 -i '" + media + "' -vf 'select=eq(n\\,31)," + test.filter +
                            ",format=gbrp' -frames:v 1 -pix_fmt bgra -f rawvideo",
                        place.Root());
        const std::string found = ReadWrittenFrame(output).pixels;
        ASSERT_EQ(found.size(), expected.size());
        int most = 0;
        for (std::size_t i = 0; i < found.size(); ++i) {
            most = std::max(most, std::abs(int(std::uint8_t(found[i])) - int(std::uint8_t(expected[i]))));
        }
        EXPECT_LE(most, 1);
    }
}

TEST(Frame, GivesTheFormThatWasAskedFor)
{
    const Workplace place;
    const std::string media = place.Media("wide.mov");
    WritePictures(media, "-pix_fmt yuv420p -c:v libx264 -vf setsar=16/15", "64x48");
    const struct {
        const char* name;
        const char* file;
        std::vector<std::string> options;
        std::uint32_t width;
        std::uint32_t height;
        const char* format;
        const char* shape; // of pixels
    } kCases[] = {
        {"as it is, PNG", "a.png", {}, 64, 48, "bgra8", "16:15"},
        {"as it is, raw: packed", "a.raw", {}, 64, 48, "uyvy", "16:15"},
        {"a size", "a.raw", {"--size", "33x77"}, 33, 77, "uyvy", "1:1"},
        {"a size and a shape", "a.raw", {"--size", "32x24", "--par", "2:2"}, 32, 24, "uyvy", "2:2"},
        {"a format", "a.raw", {"--format", "v210"}, 64, 48, "v210", "16:15"},
        {"floats", "a.raw", {"--format", "bgra32f", "--size", "7x5"}, 7, 5, "bgra32f", "1:1"},
        {"deep", "a.png", {"--format", "bgra16"}, 64, 48, "bgra16", ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const std::string output = place.Root() / test.file;
        std::vector<std::string> arguments{"--json", "frame", media, "-o", output};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const RunResult run = place.Run(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        const WrittenFrame frame = ReadWrittenFrame(output);
        EXPECT_EQ(frame.width, test.width);
        EXPECT_EQ(frame.height, test.height);
        EXPECT_EQ(frame.format, test.format);
        if (test.file == std::string("a.raw")) {
            EXPECT_EQ(frame.shape, test.shape);
        }
        EXPECT_THAT(run.out, HasSubstr("\"format\":\"" + std::string(test.format) +
                                       "\",\"pixelAspectRatio\":\"" + test.shape));
        EXPECT_THAT(run.out, HasSubstr("\"offline\":false"));
    }
}

TEST(Frame, MediaThatIsOfflineGivesItsStill)
{
    const Workplace place;
    std::filesystem::create_directories(place.Media("folder.mov"));
    WriteBytes(place.Media("empty.mov"), "");
    WriteBytes(place.Media("text.mov"), std::string(3000, 'x'));
    const std::string still = place.Root() / "still.png";
    ASSERT_EQ(place.Run({"still", "MediaOffline", "--size", "320x180", "-o", still}).status, 0);
    const std::string expected = ReadWrittenFrame(still).pixels;
    const std::string output = place.Root() / "out.png";
    for (const char* file : {"none.mov", "folder.mov", "empty.mov", "text.mov"}) {
        SCOPED_TRACE(file);
        const std::string media = place.Media(file);
        const std::vector<std::string> arguments{"--json", "frame",   media, "--at", "36f",
                                                 "--size", "320x180", "-o",  output};
        const RunResult run = place.Run(arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.err, HasSubstr("media offline: "));
        EXPECT_THAT(run.err, HasSubstr(media));
        EXPECT_THAT(run.out, HasSubstr("\"offline\":true"));
        EXPECT_TRUE(ReadWrittenFrame(output).pixels == expected);

        std::filesystem::remove(output);
        const RunResult strict = place.Run({"frame", media, "--strict", "-o", output});
        EXPECT_EQ(strict.status, 3);
        EXPECT_THAT(strict.err, HasSubstr(media));
        EXPECT_FALSE(std::filesystem::exists(output));
    }
    ASSERT_EQ(place.Run({"frame", place.Media("none.mov"), "-o", output}).status, 0);
    EXPECT_EQ(ReadWrittenFrame(output).width, 1920u);
}

TEST(Frame, RefusesWithAReasonAndWritesNothing)
{
    const Workplace place;
    const std::string media = place.Media("movie.mov");
    const std::string sound = place.Media("sound.wav");
    WritePictures(media, kRGB, "16x16");
    RunFFmpeg("-f lavfi -i sine=d=0.1 '" + sound + "'");
    std::filesystem::create_directories(place.Root() / "folder.png");
    const std::string raw = place.Media("media.raw");
    std::filesystem::copy_file(media, raw);
    const std::string output = place.Root() / "out.png";
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } kCases[] = {
        {"no output", {media}, 2, "--output is required"},
        {"no such kind of file", {media, "-o", place.Root() / "out.jpg"}, 2, ".png or .raw"},
        {"a folder", {media, "-o", place.Root() / "folder.png"}, 2, "is a folder"},
        {"a folder that is not there", {media, "-o", place.Root() / "no/out.png"}, 3, "No such file"},
        {"the media itself", {raw, "-o", raw}, 2, "the media itself"},
        {"planes in a raw file", {media, "--format", "yuv420", "-o", place.Root() / "out.raw"}, 2, "uyvy"},
        {"no such format", {media, "--format", "rgb", "-o", output}, 2, "bgra8, argb8"},
        {"a size of nothing", {media, "--size", "0x5", "-o", output}, 2, "1920x1080"},
        {"a time of an unknown unit", {media, "--at", "1.5x", "-o", output}, 2, "1.5s"},
        {"sound only", {sound, "-o", output}, 1, "no video stream"},
        {"no such stream", {media, "--stream", "3", "-o", output}, 1, "stream 3"},
    };
    const std::string before = FFmpegBytes("-i '" + raw + "' -c copy -f md5", place.Root());
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"frame"};
        arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
        const RunResult run = place.Run(arguments);
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.err, HasSubstr(test.error));
        EXPECT_FALSE(std::filesystem::exists(output));
        EXPECT_FALSE(std::filesystem::exists(place.Root() / "out.raw"));
    }
    EXPECT_EQ(FFmpegBytes("-i '" + raw + "' -c copy -f md5", place.Root()), before);
}

} // namespace trhosttest
