#include "../ProgramRunner.h"
#include "../TestPictures.h"
#include "../WrittenFrames.h"

#include <support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trhosttest {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class CompareReportTest : public testing::Test {
protected:
    CompareReportTest()
    {
        WriteNoise(mA / "same.png");
        WriteNoise(mB / "same.png");
        WriteNoise(mA / "different.png", 16, 9, 1);
        WriteNoise(mB / "different.png", 16, 9, 2);
    }

    RunResult Compare() const { return mPlace.Run({"compare", mA, mB, "--report", mReport}); }
    std::string Page() const { return support::ReadFile(mReport / "index.html"); }

    const Workplace mPlace;
    const std::filesystem::path mA = mPlace.Media("a");
    const std::filesystem::path mB = mPlace.Media("b");
    const std::filesystem::path mReport = mPlace.Media("report");
};

/// The bytes of a picture of the page.
std::string PictureIn(const std::string& inPage, const std::string& inID)
{
    const std::string begin = "id=\"" + inID + "\">";
    const std::size_t at = inPage.find(begin);
    if (at == std::string::npos) {
        return {};
    }
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (std::size_t i = at + begin.size(); inPage[i] != '<' && inPage[i] != '='; ++i) {
        constexpr std::string_view kLetters =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        bits = bits << 6 | std::uint32_t(kLetters.find(inPage[i]));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += char(bits >> count);
        }
    }
    return bytes;
}

} // namespace

TEST_F(CompareReportTest, HoldsFiguresOfAllAndPicturesOfWhatDiffers)
{
    const RunResult run = Compare();
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("report: " + (mReport / "index.html").native() + "\n"));
    EXPECT_EQ(ListFiles(mReport).size(), 1u) << "one file that can be mailed";
    const std::string page = Page();
    EXPECT_THAT(page, AllOf(HasSubstr(R"("name":"same.png")"), HasSubstr(R"("name":"different.png")"),
                            HasSubstr("2 pictures: 1 the same, 1 different")));
    EXPECT_THAT(page, Not(HasSubstr("{{"))) << "a place without a text";
    EXPECT_THAT(page, AllOf(Not(HasSubstr("http://")), Not(HasSubstr("https://")), Not(HasSubstr("src=\""))))
        << "it asks nothing of the network";
    const bool isFirst = page.find(R"("name":"different.png")") < page.find(R"("name":"same.png")");
    const std::string number = isFirst ? "0" : "1";
    const std::string other = isFirst ? "1" : "0";
    const std::string path = mPlace.Media("taken.png");
    WriteBytes(path, PictureIn(page, "picture-" + number + "-a"));
    EXPECT_EQ(mPlace.Run({"compare", path, mA / "different.png"}).status, 0);
    WriteBytes(path, PictureIn(page, "picture-" + number + "-b"));
    EXPECT_EQ(mPlace.Run({"compare", path, mB / "different.png"}).status, 0);
    mPlace.Run({"compare", mA / "different.png", mB / "different.png", "--diff", mPlace.Media("d.png")});
    WriteBytes(path, PictureIn(page, "picture-" + number + "-difference"));
    EXPECT_EQ(mPlace.Run({"compare", path, mPlace.Media("d.png")}).status, 0);
    EXPECT_EQ(PictureIn(page, "picture-" + other + "-a"), "");
}

TEST_F(CompareReportTest, NamesAreNothingButNames)
{
    const std::string inFolder = "<b>/script><!--\"'&\xFF.png"; // as "</script>" a folder's name goes on
    WriteNoise(mA / inFolder, 16, 9, 1);
    WriteNoise(mB / inFolder, 16, 9, 2);
    WriteNoise(mA / "<!--<script>.png", 16, 9, 1);
    WriteNoise(mB / "<!--<script>.png", 16, 9, 2);
    EXPECT_EQ(Compare().status, 1);
    const std::string page = Page();
    EXPECT_THAT(page, HasSubstr(R"("name":"\u003c!--\u003cscript>.png")"));
    EXPECT_THAT(page, HasSubstr(R"("name":"\u003cb>/script>\u003c!--\"'&\udcff.png")"));
    EXPECT_THAT(page, Not(HasSubstr("<!--<script>")));
    // Scripts: texts, data, the program, and three pictures of each of the three pairs that differ.
    EXPECT_EQ(CountLines(page, "<script"), 3 + 9);
    EXPECT_EQ(CountLines(page, "</script>"), 3 + 9);
}

TEST_F(CompareReportTest, WidePicturesAreScaledButNoDifferenceVanishes)
{
    std::filesystem::remove_all(mA);
    std::filesystem::remove_all(mB);
    WriteNoise(mA / "wide.png", 4000, 3);
    const MF::IVideoFrameRef changed = MakeNoise(4000, 3);
    ChangeByte(changed, 1, 2003 * 4, 1);
    WritePNG(mB / "wide.png", changed);
    EXPECT_EQ(Compare().status, 1);
    const std::string page = Page();
    EXPECT_THAT(page, HasSubstr(R"("scaled":true)"));
    WriteBytes(mPlace.Media("taken.png"), PictureIn(page, "picture-0-difference"));
    const WrittenFrame picture = ReadWrittenFrame(mPlace.Media("taken.png"));
    EXPECT_EQ(picture.width, 1600u);
    EXPECT_EQ(picture.height, 1u);
    EXPECT_EQ(picture.pixels[801 * 4], 65) << "64 + 0.75, rounded to nearest";
}

TEST_F(CompareReportTest, TwoFilesHaveOneToo)
{
    const std::vector<std::string> arguments{"compare", mA / "different.png", mB / "different.png",
                                             "--report", mReport};
    EXPECT_EQ(mPlace.Run(arguments).status, 1);
    EXPECT_THAT(Page(), AllOf(HasSubstr(R"("pictures":true)"), HasSubstr("picture-0-difference")));
    EXPECT_EQ(
        mPlace.Run({"compare", mA / "different.png", mPlace.Media("none.png"), "--report", mReport}).status,
        3);
}

TEST_F(CompareReportTest, ReplacesNothingButAReport)
{
    EXPECT_EQ(Compare().status, 1);
    WriteNoise(mB / "different.png", 16, 9, 1);
    EXPECT_EQ(Compare().status, 0) << "an earlier report is replaced";
    EXPECT_THAT(Page(), HasSubstr("2 pictures: 2 the same"));

    std::filesystem::remove(mReport / "index.html");
    WriteBytes(mReport / "index.html.kiotmp-1-1", "what a killed run has left");
    EXPECT_EQ(Compare().status, 0);

    WriteBytes(mReport / "index.html", "<html>of somebody else</html>");
    const Listing before = ListFiles(mPlace.Root());
    const RunResult run = Compare();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("name an empty or a new folder"));
    EXPECT_EQ(mPlace.Run({"compare", mA, mB, "--report", mA}).status, 3);
    EXPECT_EQ(mPlace.Run({"compare", mA, mB, "--report", mA / "same.png"}).status, 2);
    EXPECT_EQ(mPlace.Run({"compare", mA, mB, "--report", mPlace.Media("none/report")}).status, 3);
    EXPECT_EQ(ListFiles(mPlace.Root()), before);
}

TEST_F(CompareReportTest, SpeaksTheReadersLanguage)
{
    EXPECT_EQ(mPlace.Run({"--lang", "de", "compare", mA, mB, "--report", mReport}).status, 1);
    EXPECT_THAT(Page(), AllOf(HasSubstr("<html lang=\"de\">"), HasSubstr("Nebeneinander"),
                              HasSubstr(R"("different":"verschieden")")));
}

} // namespace trhosttest
