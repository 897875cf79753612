#include <support/PictureQuantities.h>

#include <gtest/gtest.h>

namespace trhost {

using kiomediatypes::TickTime;

TEST(PictureQuantities, ReadsTimesExactly)
{
    constexpr std::int64_t kSecond = TickTime::kTicksPerSecond;
    const struct {
        const char* text;
        std::int64_t ticks; // -1: refused
    } kCases[] = {
        {"0s", 0},
        {"1.5s", kSecond * 3 / 2},
        {"1.5", kSecond * 3 / 2},
        {"1500ms", kSecond * 3 / 2},
        {"0.04s", kSecond / 25},
        {"100000.04s", kSecond * 100000 + kSecond / 25},
        {"0.5ms", kSecond / 2000},
        {"2m", kSecond * 120},
        {"1.5h", kSecond * 5400},
        {"1:30", kSecond * 90},
        {"00:00:01.5", kSecond * 3 / 2},
        {"100:59:59.96", kSecond * 363599 + kSecond * 24 / 25},
        {"", -1},
        {"s", -1},
        {"-1s", -1},
        {"+1s", -1},
        {".", -1},
        {".5s", -1},
        {"1.s", -1},
        {"1.2.3s", -1},
        {"1e3s", -1},
        {"1 s", -1},
        {"1S", -1},
        {"1:60", -1},
        {"1:-5", -1},
        {"1.5:00", -1},
        {"1:2:3:4", -1},
        {":30", -1},
        {"0x10s", -1},
        {"9999999999s", -1},
        {"1.0000000000s", -1},
    };
    for (const auto& test : kCases) {
        const auto time = ParseMediaTime(test.text);
        EXPECT_EQ(time && !time->frame ? time->time.Ticks() : -1, test.ticks) << test.text;
    }
}

TEST(PictureQuantities, ReadsFrames)
{
    EXPECT_EQ(ParseMediaTime("36f")->frame, 36);
    EXPECT_EQ(ParseMediaTime("0f")->frame, 0);
    for (const char* text : {"f", "-1f", "1.5f", "1:00f", "99999999999999999999f"}) {
        EXPECT_FALSE(ParseMediaTime(text)) << text;
    }
}

TEST(PictureQuantities, ReadsSizesAndShapes)
{
    EXPECT_EQ(ParsePictureSize("1920x1080"), (PictureSize{1920, 1080}));
    EXPECT_EQ(ParsePictureSize("1x65535"), (PictureSize{1, 65535}));
    for (const char* text :
         {"", "x", "1920", "1920x", "x1080", "0x1", "1x0", "65536x1", "-1x1", "1x1x1", "1X1", "1 x1"}) {
        EXPECT_FALSE(ParsePictureSize(text)) << text;
    }
    EXPECT_EQ(ParsePixelAspectRatio("16:15"), (kiomediatypes::PixelAspectRatio{16, 15}));
    EXPECT_EQ(ParsePixelAspectRatio("2:2"), (kiomediatypes::PixelAspectRatio{2, 2}));
    for (const char* text : {"", "1", "1:", ":1", "0:1", "1:0", "1.5:1", "4294967296:1"}) {
        EXPECT_FALSE(ParsePixelAspectRatio(text)) << text;
    }
}

} // namespace trhost
