#include "../ProgramRunner.h"
#include "../TestPictures.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace trhosttest {

using kiomediatypes::kPixelFormat_BGRA_4444_16u;
using testing::AllOf;
using testing::HasSubstr;
using testing::Pair;

namespace {

/// "a.png", and "b.png" in which three pixels of the first differ: by 1, by 100, and in alpha by 40.
class CompareTest : public testing::Test {
protected:
    CompareTest()
    {
        WriteNoise(mA, 16, 9);
        const MF::IVideoFrameRef changed = MakeNoise(16, 9);
        ChangeByte(changed, 2, 5 * 4 + 1, 1);
        ChangeByte(changed, 4, 9 * 4 + 2, 100);
        ChangeByte(changed, 7, 3 * 4 + 3, -40);
        WritePNG(mB, changed);
    }

    RunResult Compare(std::vector<std::string> inArguments) const
    {
        inArguments.insert(inArguments.begin(), "compare");
        return mPlace.Run(inArguments);
    }

    const Workplace mPlace;
    const std::string mA = mPlace.Media("a.png");
    const std::string mB = mPlace.Media("b.png");
    const std::string mDifference = mPlace.Media("difference.png");
};

} // namespace

TEST_F(CompareTest, ExitStatusAndLineSayHowPicturesCompare)
{
    WriteNoise(mPlace.Media("wide.png"), 17, 9);
    WritePNG(mPlace.Media("deep.png"), MakeNoise(16, 9, 1, kPixelFormat_BGRA_4444_16u));
    WriteBytes(mPlace.Media("text.png"), "no picture");
    WriteBytes(mPlace.Media("empty.png"), "");
    const std::string bytes = support::ReadFile(mA);
    WriteBytes(mPlace.Media("cut.png"), bytes.substr(0, bytes.size() - 20));
    std::filesystem::create_symlink(mA, mPlace.Media("link.png"));
    const struct {
        const char* name;
        std::string b;
        std::vector<std::string> options;
        int status;
        std::string said;
    } kCases[] = {
        {"itself", mA, {}, 0, "the same (16 x 9, bgra8)"},
        {"by another name", mPlace.Media("link.png"), {}, 0, "the same"},
        {"three pixels", mB, {}, 1, "different: 3 of 144 pixels (2.08 %)"},
        {"where they are", mB, {}, 1, "largest difference 100/255, within 7 x 6 at (3, 2)"},
        {"tolerance below the largest", mB, {"--tolerance", "99/255"}, 1, "different: 1 of 144"},
        {"tolerance of just as much", mB, {"--tolerance", "100/255"}, 0, "the same within the tolerance"},
        {"tolerance in per cent", mB, {"--tolerance", "40%"}, 0, "largest difference 100/255"},
        {"tolerance as a part", mB, {"--tolerance", "0.3"}, 1, "different: 1 of 144"},
        {"more than all", mB, {"--tolerance", "1.01"}, 2, "found 1.01, expected a part of full scale"},
        {"less than nothing", mB, {"--tolerance=-1"}, 2, "found -1"},
        {"another depth", mPlace.Media("deep.png"), {}, 1, "different"},
        {"another size", mPlace.Media("wide.png"), {}, 3, "a.png has 16 x 9 pixels, "},
        {"text", mPlace.Media("text.png"), {}, 3, "text.png: found a file that starts with the bytes 6e 6f"},
        {"nothing in it", mPlace.Media("empty.png"), {}, 3, "found an empty file, expected a PNG"},
        {"cut off", mPlace.Media("cut.png"), {}, 3, "cut.png: a damaged PNG: "},
        {"not there", mPlace.Media("none.png"), {}, 3, "none.png: No such file"},
        {"a folder", mPlace.Media(""), {}, 2, "expected two files or two folders"},
        {"a device", "/dev/null", {}, 3, "/dev/null: is a pipe or a device"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{mA, test.b};
        arguments.insert(arguments.end(), test.options.begin(), test.options.end());
        const RunResult run = Compare(arguments);
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(test.status < 2 ? run.out : run.err, HasSubstr(test.said));
        EXPECT_EQ(CountLines(run.out + run.err, ""), 1);
    }
    EXPECT_EQ(Compare({mA}).status, 2);
}

TEST_F(CompareTest, FiguresAreThoseOfThePictures)
{
    const RunResult run = Compare({"--json", mA, mB});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr(R"("outcome":"different","width":16,"height":9,"formatA":"bgra8")"));
    EXPECT_THAT(run.out, HasSubstr(R"("differingPixels":3,"differingPercent":2.083333333333333)"));
    EXPECT_THAT(run.out, HasSubstr(R"("largestDifference":0.392156862745098)"));
    EXPECT_THAT(run.out, HasSubstr(R"("box":{"left":3,"top":2,"width":7,"height":6})"));
    // 100 x (1 + 100^2 + 40^2) / 255^2 / (144 x 4), and 10 log10 of its reciprocal
    const auto number = [&](const std::string& inName) {
        return std::stod(run.out.substr(run.out.find("\"" + inName + "\":") + inName.size() + 3));
    };
    EXPECT_NEAR(number("variance"), 0.0309742, 1e-6);
    EXPECT_NEAR(number("psnr"), 35.0900, 1e-3);

    EXPECT_THAT(Compare({"--json", mA, mA}).out,
                HasSubstr(R"("differingPixels":0,"differingPercent":0,"variance":0,"largestDifference":0,)"
                          R"("psnr":null)"));
    WriteNoise(mPlace.Media("wide.png"), 17, 9);
    EXPECT_THAT(Compare({"--json", mA, mPlace.Media("wide.png")}).out,
                AllOf(HasSubstr(R"("outcome":"failed","reason":"could not compare: )"),
                      HasSubstr(R"(has 17 x 9; expected one size"})")));
}

TEST_F(CompareTest, TheDifferencePictureShowsWhereAndCarriesTheFigures)
{
    WriteBytes(mDifference, "older");
    EXPECT_EQ(Compare({mA, mB, "--diff", mDifference}).status, 1);
    const WrittenFrame picture = ReadWrittenFrame(mDifference);
    EXPECT_EQ(picture.format, "bgra8");
    std::string expected;
    for (int i = 0; i < 144; ++i) {
        expected += std::string("\0\0\0\xFF", 4);
    }
    expected[(2 * 16 + 5) * 4 + 1] = 64 + 1;
    expected[(4 * 16 + 9) * 4 + 2] = char(64 + 75);
    std::memset(&expected[(7 * 16 + 3) * 4], 64 + 30, 3);
    EXPECT_EQ(picture.pixels, expected);
    EXPECT_THAT(NotesOfPNG(mDifference),
                testing::ElementsAre(Pair("Differing Pixels", "3"),
                                     Pair("Variance", testing::StartsWith("0.0309")),
                                     Pair("Bounding Box", "3,2,7,6"),
                                     Pair("Largest Difference", testing::StartsWith("0.39215")),
                                     Pair("PSNR", testing::StartsWith("35.09")), Pair("Tolerance", "0"),
                                     Pair("Software", "trhost compare")));

    WritePNG(mPlace.Media("deep.png"), MakeNoise(16, 9, 1, kPixelFormat_BGRA_4444_16u));
    EXPECT_EQ(Compare({mA, mPlace.Media("deep.png"), "--diff", mDifference}).status, 1);
    EXPECT_EQ(ReadWrittenFrame(mDifference).format, "bgra16") << "a step of 16 bits would be lost in 8";
}

TEST_F(CompareTest, AnEarlierDifferencePictureDoesNotOutliveItsComparison)
{
    EXPECT_EQ(Compare({mA, mB, "--diff", mDifference}).status, 1);
    EXPECT_EQ(Compare({mA, mA, "--diff", mDifference}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(mDifference));

    WriteNoise(mDifference); // another's picture
    const Listing before = ListFiles(mPlace.Media(""));
    EXPECT_EQ(Compare({mA, mA, "--diff", mDifference}).status, 0);
    EXPECT_EQ(ListFiles(mPlace.Media("")), before);
}

TEST_F(CompareTest, NoInputIsWrittenOver)
{
    std::filesystem::create_symlink(mB, mPlace.Media("link.png"));
    std::filesystem::create_directory(mPlace.Media("folder"));
    const Listing before = ListFiles(mPlace.Root());
    const struct {
        const char* name;
        std::string difference;
        int status;
        const char* said;
    } kCases[] = {
        {"the first", mA, 2, "is one of the pictures that are compared"},
        {"the second through a link", mPlace.Media("link.png"), 2, "is one of the pictures"},
        {"the first by another way", mPlace.Media("folder/../a.png"), 2, "is one of the pictures"},
        {"a folder", mPlace.Media("folder"), 2, "is a folder; expected a file"},
        {"in a folder that is not there", mPlace.Media("none/d.png"), 3, "there is no folder"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = Compare({mA, mB, "--diff", test.difference});
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.err, HasSubstr(test.said));
    }
    EXPECT_EQ(ListFiles(mPlace.Root()), before);
}

TEST_F(CompareTest, NamesMayHoldAnyBytes)
{
    const std::string odd = mPlace.Media("\xFF\x01<b>&\"'\n.png");
    std::filesystem::copy_file(mB, odd);
    EXPECT_THAT(Compare({mA, odd}).out, HasSubstr("\xFF\\x01<b>&\"'\\x0a.png: different: 3"));
    EXPECT_THAT(Compare({"--json", mA, odd}).out, HasSubstr(R"(\udcff\u0001<b>&\"'\n.png","outcome")"));
    EXPECT_EQ(Compare({odd, odd}).status, 0);
}

} // namespace trhosttest
