#include "../ProgramRunner.h"
#include "../TestPictures.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <unistd.h>

namespace trhosttest {

namespace {

constexpr int kPairs = 50;

/// What another tool says of 50 generated pairs is what trhost says.
class CompareJudges : public testing::Test {
protected:
    /// @param inCount  finds the number of differing pixels in what the tool says; 0 where it says none.
    void Judge(const std::string& inTool, const std::vector<std::string>& inOptions,
               const std::regex& inCount)
    {
        const std::string program = PEERS_FOLDER "/bin/" + inTool;
        if (access(program.c_str(), X_OK) != 0) {
            GTEST_SKIP() << "there is no " << program << "; tools/fetch-compare-peers build/peers gets it";
        }
        for (int pair = 0; pair < kPairs; ++pair) {
            SCOPED_TRACE(pair);
            WritePair(unsigned(pair));
            std::vector<std::string> arguments{mA, mB};
            arguments.insert(arguments.end(), inOptions.begin(), inOptions.end());
            const RunResult theirs = Child(program, arguments).Wait();
            std::smatch count;
            const std::string said = theirs.out + theirs.err;
            const std::string expected = std::regex_search(said, count, inCount) ? count[1].str() : "0";
            const RunResult ours = mPlace.Run({"--json", "compare", mA, mB});
            EXPECT_NE(ours.out.find("\"differingPixels\":" + expected + ","), std::string::npos)
                << ours.out << "\n"
                << said;
            mDiffering += expected != "0";
        }
        EXPECT_GT(mDiffering, kPairs / 2) << "the tool was not understood";
    }

private:
    /// Opaque, of 8 bits, of any size; from the same to all different, by 1 and by more.
    void WritePair(unsigned inSeed)
    {
        std::mt19937 random(inSeed);
        const std::uint32_t width = 1 + random() % 90;
        const std::uint32_t height = 1 + random() % 60;
        WriteNoise(mA, width, height, inSeed);
        const MF::IVideoFrameRef changed = MakeNoise(width, height, inSeed);
        const unsigned changes = inSeed % 5 == 0 ? 0 : random() % (width * height * 2);
        for (unsigned i = 0; i < changes; ++i) {
            const std::size_t byte = random() % width * 4 + random() % 3;
            ChangeByte(changed, random() % height, byte, inSeed % 2 ? 1 : int(random() % 16));
        }
        WritePNG(mB, changed);
    }

    const Workplace mPlace;
    const std::string mA = mPlace.Media("a.png");
    const std::string mB = mPlace.Media("b.png");
    int mDiffering = 0;
};

} // namespace

TEST_F(CompareJudges, OdiffCountsTheSame)
{
    Judge("odiff", {"-t", "0", "--parsable-stdout"}, std::regex("^([0-9]+);"));
}

TEST_F(CompareJudges, IdiffCountsTheSame)
{
    Judge("idiff", {"-fail", "0", "-warn", "0"}, std::regex("([0-9]+) pixels \\([^)]*\\) over 0"));
}

} // namespace trhosttest
