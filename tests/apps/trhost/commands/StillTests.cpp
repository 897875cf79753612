#include "../ProgramRunner.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace trhosttest {

using testing::HasSubstr;

TEST(Still, EveryOneComesOutInEveryForm)
{
    const Workplace place;
    std::set<std::string> pictures;
    for (const char* still :
         {"MediaPending", "MediaOffline", "PlayingOnHardware", "Blank", "ColorBars",
          "CapturePreviewOnHardware", "SizeDependent", "MediaOfflineStill", "AudioVideoClip"}) {
        for (const char* format : {"bgra8", "uyvy", "v210"}) {
            SCOPED_TRACE(std::string(still) + " as " + format);
            const std::string output = place.Root() / "out.raw";
            const RunResult run = place.Run({"still", still, "--size", "161x91", "--format", format, "--par",
                                             "16:15", "--quality", "medium", "-o", output});
            ASSERT_EQ(run.status, 0) << run.err;
            const WrittenFrame frame = ReadWrittenFrame(output);
            EXPECT_EQ(frame.width, 161u);
            EXPECT_EQ(frame.height, 91u);
            EXPECT_EQ(frame.format, format);
            EXPECT_EQ(frame.shape, "16:15");
            if (format == std::string("bgra8")) {
                pictures.insert(frame.pixels);
            }
        }
    }
    // Two have no picture, and two share theirs.
    EXPECT_EQ(pictures.size(), 7u);
}

TEST(Still, IsFoundByNumberAndByNameInAnyCase)
{
    const Workplace place;
    const std::string first = place.Root() / "first.png";
    ASSERT_EQ(place.Run({"still", "10000", "--size", "64x36", "-o", first}).status, 0);
    for (const char* name : {"AudioVideoClip", "audiovideoclip", "AUDIOVIDEOCLIP"}) {
        const std::string output = place.Root() / "out.png";
        ASSERT_EQ(place.Run({"still", name, "--size", "64x36", "-o", output}).status, 0) << name;
        EXPECT_TRUE(ReadWrittenFrame(output).pixels == ReadWrittenFrame(first).pixels) << name;
    }
}

TEST(Still, OneWithoutPictureIsBlackAndSaidToBe)
{
    const Workplace place;
    for (const char* still : {"4", "7", "0", "9", "-3"}) {
        SCOPED_TRACE(still);
        const std::string output = place.Root() / "out.raw";
        const RunResult run = place.Run({"still", "--size", "5x3", "-o", output, "--", still});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_THAT(run.out, HasSubstr("has no picture"));
        std::string black;
        for (int i = 0; i < 15; ++i) {
            black += std::string("\0\0\0\xFF", 4);
        }
        EXPECT_EQ(ReadWrittenFrame(output).pixels, black);
    }
}

TEST(Still, ComesOutAsItWasDrawn)
{
    const Workplace place;
    const std::string output = place.Root() / "out.png";
    ASSERT_EQ(place.Run({"still", "ColorBars", "--format", "bgra16", "-o", output}).status, 0);
    EXPECT_TRUE(ReadWrittenFrame(output).pixels == ReadWrittenFrame(STILLS_FOLDER "/ColorBars.png").pixels);
}

TEST(Still, RefusesWithAReason)
{
    const Workplace place;
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } kCases[] = {
        {"no such name", {"Media", "-o", "out.png"}, 2, "MediaPending (1), MediaOffline (2)"},
        {"no name", {"-o", "out.png"}, 2, "ID or NAME"},
        {"no output", {"Blank"}, 2, "--output is required"},
        {"planes in a raw file", {"Blank", "--format", "yuv420", "-o", "out.raw"}, 2, "uyvy"},
        {"a quality that is none",
         {"Blank", "--quality", "best", "-o", "out.png"},
         2,
         "draft, medium or high"},
        {"a shape without height", {"Blank", "--par", "1:0", "-o", "out.png"}, 2, "16:15"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"still"};
        arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
        const RunResult run = place.Run(arguments);
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.err, HasSubstr(test.error));
    }
}

TEST(Still, TheListTellsAll)
{
    const Workplace place;
    const RunResult run = place.Run({"still", "list"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(CountLines(run.out, ""), 9);
    EXPECT_EQ(CountLines(run.out, "1920 x 1080"), 7);
    EXPECT_THAT(run.out, HasSubstr("8  MediaOfflineStill  MediaOffline.png (1920 x 1080, bgra8)\n"));
    EXPECT_THAT(
        place.Run({"still", "list", "--json"}).out,
        HasSubstr(R"({"id":5,"name":"ColorBars","resource":"ColorBars","width":1920,"height":1080,)"));
}

} // namespace trhosttest
