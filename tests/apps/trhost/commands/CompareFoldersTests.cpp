#include "../ProgramRunner.h"
#include "../TestPictures.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>

namespace trhosttest {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// Two folders, "a" and "b", with a pair of every outcome.
class CompareFoldersTest : public testing::Test {
protected:
    CompareFoldersTest()
    {
        WriteBoth("same.png", 1, 1);
        WriteBoth("deep/er/different.png", 1, 2);
        WriteBoth("deep/same.PNG", 3, 3);
        WriteNoise(mA / "only-a.png");
        WriteNoise(mB / "only-b.png");
        WriteBytes(mA / "raw.raw", RawFile().Bytes());
        WriteBytes(mB / "raw.raw", RawFile().Bytes());
    }

    void WriteBoth(const std::string& inName, unsigned inSeedA, unsigned inSeedB) const
    {
        WriteNoise(mA / inName, 16, 9, inSeedA);
        WriteNoise(mB / inName, 16, 9, inSeedB);
    }

    RunResult Compare(const std::vector<std::string>& inOptions = {}) const
    {
        std::vector<std::string> arguments{"compare", mA, mB};
        arguments.insert(arguments.end(), inOptions.begin(), inOptions.end());
        return mPlace.Run(arguments);
    }

    const Workplace mPlace;
    const std::filesystem::path mA = mPlace.Media("a");
    const std::filesystem::path mB = mPlace.Media("b");
};

} // namespace

TEST_F(CompareFoldersTest, TellsWhatIsNotTheSameInOrderAndCountsTheRest)
{
    const RunResult run = Compare();
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, testing::MatchesRegex(
                             "deep/er/different\\.png: different: 14[0-9] of 144 pixels .*\n"
                             "only-a\\.png: only in the first folder\n"
                             "only-b\\.png: only in the second folder\n"
                             "6 pictures: 3 the same, 1 different, 2 in one folder only \\(.*\\)\n"));

    std::filesystem::remove(mA / "only-a.png");
    std::filesystem::remove(mB / "only-b.png");
    EXPECT_EQ(Compare({"--tolerance", "1"}).status, 0);
    std::filesystem::remove(mB / "deep/er/different.png");
    EXPECT_EQ(Compare().status, 1) << "a picture that is missing is a difference";
}

TEST_F(CompareFoldersTest, ProgramsGetOneObjectAPairAndASummary)
{
    const RunResult run = mPlace.Run({"compare", "--json", mA, mB.native() + "/"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(CountLines(run.out, R"("name":")"), 6);
    EXPECT_THAT(run.out, HasSubstr(R"({"name":"only-b.png","b":")" + (mB / "only-b.png").native() +
                                   R"(","outcome":"onlyInB"})"));
    EXPECT_THAT(run.out, HasSubstr(R"({"name":"same.png","a":")" + (mA / "same.png").native() + "\""));
    EXPECT_THAT(run.out, HasSubstr(R"({"summary":true,"pictures":6,"same":3,"different":1,"onlyInA":1,)"
                                   R"("onlyInB":1,"failed":0,"notDone":0,"leftOut":0,"seconds":)"));
    EXPECT_EQ(Compare({"--json", "--jobs", "1"}).out.substr(0, 500),
              mPlace.Run({"compare", "--json", mA, mB}).out.substr(0, 500));
}

TEST_F(CompareFoldersTest, WhatCannotBeComparedFailsAndTheRestIsToldAllTheSame)
{
    WriteBytes(mA / "damaged.png", "\x89PNG\r\n\x1A\n and no more");
    WriteNoise(mB / "damaged.png");
    WriteNoise(mA / "sizes.png", 16, 9);
    WriteNoise(mB / "sizes.png", 9, 16);
    WriteBytes(mA / "notes.txt", "left out");
    WriteNoise(mA / "picture.by.nature");
    WriteNoise(mB / "picture.by.nature");
    WriteBytes(mB / "empty.png", "");
    WriteBytes(mA / "empty.png", "");
    std::filesystem::create_symlink("nowhere.png", mA / "broken.png");
    std::filesystem::create_symlink("nowhere.png", mB / "broken.png");
    std::filesystem::create_directory_symlink("..", mA / "loop");
    ASSERT_EQ(mkfifo((mA / "pipe.png").c_str(), 0600), 0);
    const RunResult run = Compare();
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(CountLines(run.err, ""), 4);
    EXPECT_THAT(run.err, AllOf(HasSubstr("a/damaged.png: a damaged PNG"), HasSubstr("a/sizes.png has 16 x 9"),
                               HasSubstr("a/empty.png: found an empty file"), HasSubstr("a/broken.png")));
    EXPECT_THAT(run.out, HasSubstr("deep/er/different.png: different"));
    EXPECT_THAT(run.out, HasSubstr("11 pictures: 4 the same, 1 different, 2 in one folder only, 4 failed, "
                                   "1 other files left out"));
}

TEST_F(CompareFoldersTest, DifferencePicturesLieAsTheirPairsDo)
{
    RawFile other;
    other.rows[0] = 'z';
    WriteBytes(mB / "raw.raw", other.Bytes());
    const std::filesystem::path folder = mPlace.Media("differences");
    EXPECT_EQ(Compare({"--diff", folder}).status, 1);
    EXPECT_EQ(ListFiles(folder).size(), 2u);
    EXPECT_EQ(ReadWrittenFrame(folder / "deep/er/different.png").width, 16u);
    EXPECT_EQ(ReadWrittenFrame(folder / "raw.raw.png").width, 4u);

    WriteBoth("deep/er/different.png", 1, 1); // put right
    EXPECT_EQ(Compare({"--diff", folder}).status, 1);
    EXPECT_EQ(FilesEndingWith(folder, ".png").size(), 1u) << "the picture of what differs no more is gone";

    const Listing before = ListFiles(mPlace.Media(""));
    const struct {
        const char* name;
        std::string folder;
        int status;
    } kRefused[] = {
        {"an input", mA, 2},
        {"within an input", mB / "deep/new", 2},
        {"around the inputs", mPlace.Media(""), 2},
        {"a file", folder / "raw.raw.png", 2},
        {"in a folder that is not there", mPlace.Media("none/differences"), 3},
    };
    for (const auto& test : kRefused) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(Compare({"--diff", test.folder}).status, test.status);
    }
    EXPECT_EQ(ListFiles(mPlace.Media("")), before);
}

TEST_F(CompareFoldersTest, FoldersWithoutPicturesAreTheSame)
{
    std::filesystem::create_directory(mPlace.Media("empty"));
    const RunResult run = mPlace.Run({"compare", mPlace.Media("empty"), mPlace.Media("empty")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("0 pictures: 0 the same"));
}

TEST_F(CompareFoldersTest, CtrlCStopsWithNothingHalfDone)
{
    constexpr int kPairs = 300; // nobody is that fast
    WriteNoise(mA / "0.png", 1280, 720);
    WriteNoise(mB / "0.png", 1280, 720, 2);
    for (int i = 1; i < kPairs; ++i) {
        const std::string name = std::to_string(i) + ".png";
        std::filesystem::create_hard_link(mA / "0.png", mA / name);
        std::filesystem::create_hard_link(mB / "0.png", mB / name);
    }
    const std::filesystem::path report = mPlace.Media("report");
    Child child(TRHOST_PROGRAM, mPlace.Arguments({"--trace", "Host", "compare", mA, mB, "--report", report}));
    ASSERT_TRUE(child.WaitForError("VF::DecompressPNG"));
    kill(child.Pid(), SIGINT);
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("trhost: interrupted"));
    EXPECT_THAT(run.out,
                AllOf(HasSubstr("306 pictures: "), HasSubstr(" not done"), Not(HasSubstr("failed"))));
    EXPECT_TRUE(ListFiles(report).empty()) << "a page that tells half would be taken for all";
}

} // namespace trhosttest
