#include "ProgramRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

namespace trhosttest {

using testing::HasSubstr;
using testing::Not;

namespace {

/// A workplace with a project of three files, one in a folder of its own and one of a name that is no UTF-8.
class AssetsTest : public ::testing::Test {
protected:
    AssetsTest()
    {
        std::filesystem::create_directories(mPlace.Media("day 1"));
        for (const char* name : {"a.wav", "day 1/b.wav", "c\xFF.wav", "notes.txt"}) {
            std::ofstream(mPlace.Media(name)) << "not looked into";
        }
        const RunResult made = mPlace.Run({"assets", "new-project", mProject, mPlace.Media("")});
        EXPECT_EQ(made.status, 0) << made.err;
        EXPECT_THAT(made.out, HasSubstr("3 clips"));
    }

    /// Runs with a text on standard input.
    RunResult RunWith(const std::string& inInput, const std::vector<std::string>& inArguments) const
    {
        const std::string input = mPlace.Root() / "input";
        std::ofstream(input, std::ios::binary) << inInput;
        std::vector<std::string> arguments{"-c", "exec \"$@\" <\"$0\"", input, TRHOST_PROGRAM};
        for (const std::string& argument : mPlace.Arguments(inArguments)) {
            arguments.push_back(argument);
        }
        return Child("/bin/sh", arguments).Wait();
    }
    RunResult Apply(const std::string& inInput, std::vector<std::string> inMore = {}) const
    {
        std::vector<std::string> arguments{"assets", "apply", "--project", mProject};
        arguments.insert(arguments.end(), inMore.begin(), inMore.end());
        return RunWith(inInput, arguments);
    }
    std::string Specifiers() const { return mPlace.Run({"--json", "assets", "from-project", mProject}).out; }

    const Workplace mPlace;
    const std::string mProject = mPlace.Root() / "film.hproj";
    const std::string mA = mPlace.Media("a.wav");
};

TEST_F(AssetsTest, ListsGoThroughPathsAndBackWhole)
{
    const std::string specifiers = Specifiers();
    EXPECT_THAT(specifiers, HasSubstr("media/c\\udcff.wav"));
    EXPECT_THAT(specifiers, Not(HasSubstr("notes")));
    const RunResult paths = RunWith(specifiers, {"assets", "to-paths"});
    EXPECT_EQ(paths.status, 0) << paths.err;
    EXPECT_EQ(CountLines(paths.out, ".wav"), 3);
    EXPECT_EQ(RunWith(paths.out, {"assets", "from-paths", "--json"}).out, specifiers);
    EXPECT_EQ(RunWith("[]", {"assets", "to-paths"}).out, "[]\n");
}

TEST_F(AssetsTest, PointsAreAppliedToTheClipsOfTheFilesAndSaved)
{
    const std::string points =
        "[{\"Path\":\"" + mA + "\",\"InPoint\":254016000000,\"OutPoint\":9223372036854775807}]";
    const Listing before = ListFiles(mPlace.Root());
    const RunResult dry = Apply(points, {"--dry-run"});
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_THAT(dry.out, HasSubstr("wouldSet  a.wav  in 1.000000 s"));
    Listing after = ListFiles(mPlace.Root());
    after.erase(mPlace.Root() / "input");
    EXPECT_EQ(after, before);

    const std::string elsewhere = mPlace.Root() / "copy.hproj";
    EXPECT_EQ(Apply(points, {"--output", elsewhere}).status, 0);
    EXPECT_THAT(Specifiers(), Not(HasSubstr("254016000000")));
    EXPECT_THAT(
        mPlace.Run({"--json", "assets", "from-project", elsewhere}).out,
        HasSubstr("{\"InPoint\":254016000000,\"OutPoint\":9223372036854775807,\"Path\":\"" + mA + "\"}"));

    EXPECT_EQ(CountLines(Apply(points).out, ""), 1);
    EXPECT_THAT(Specifiers(), HasSubstr("\"InPoint\":254016000000"));
    EXPECT_THAT(Apply(points).out, HasSubstr("unchanged"));
    // What is not named is taken away.
    EXPECT_THAT(Apply("[{\"Path\":\"" + mA + "\"}]").out, HasSubstr("set  a.wav  in unset  out unset"));
    EXPECT_THAT(Specifiers(), Not(HasSubstr("254016000000")));

    const RunResult unknown =
        Apply("[{\"Path\":\"/nowhere/a.wav\"},{\"Path\":\"" + mA + "\",\"InPoint\":7}]", {"--json"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.out, HasSubstr(R"({"action":"noClip","path":"/nowhere/a.wav"})"));
    EXPECT_THAT(Specifiers(), HasSubstr("\"InPoint\":7"));
}

TEST_F(AssetsTest, ABadListChangesNothingAndIsToldWithItsPlace)
{
    const struct {
        const char* name;
        std::string input;
        const char* error;
    } kCases[] = {
        {"nothing", "", "line 1, column 1: found the end of the text, expected a value"},
        {"cut off", "[{\"Path\":", "line 1, column 10: found the end of the text, expected a value"},
        {"no list", "{}", "$: found an object, expected an array"},
        {"no object", "[3]", "$[0]: found the number 3, expected an object"},
        {"no path", R"([{"Path":"/a"},{}])", "$[1]: found no member Path"},
        {"empty path", R"([{"Path":""}])", "$[0].Path: found an empty text"},
        {"a name off by case", R"([{"Path":"/a","Inpoint":1}])",
         "$[0]: found a member named Inpoint, expected InPoint"},
        {"a point that is no number", R"([{"Path":"/a","InPoint":"1"}])",
         "$[0].InPoint: found the text \"1\""},
        {"points the wrong way round",
         "[{\"Path\":\"" + mA + "\"},{\"Path\":\"" + mA + R"(","InPoint":2,"OutPoint":1}])",
         "$[1]: OutPoint 1"},
    };
    const std::string before = Specifiers();
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = Apply(test.input);
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, HasSubstr("trhost: standard input: "));
        EXPECT_THAT(run.err, HasSubstr(test.error));
    }
    EXPECT_EQ(Specifiers(), before);
    EXPECT_THAT(RunWith("[\"/a\",null]", {"assets", "from-paths"}).err,
                HasSubstr("$[1]: found null, expected a text"));
}

TEST_F(AssetsTest, AProjectIsNeitherOverwrittenNorMadeOfNothing)
{
    const std::string fresh = mPlace.Root() / "fresh.hproj";
    std::filesystem::create_directories(mPlace.Root() / "empty");
    std::ofstream(mPlace.Root() / "damaged.hproj") << "{\"format\": 3}";
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } kCases[] = {
        {"there already", {"new-project", mProject, mA}, 3, "film.hproj is there already"},
        {"another extension", {"new-project", mPlace.Root() / "film.mov", mA}, 2, "ends with .hproj"},
        {"missing media", {"new-project", fresh, mA, "/nowhere/x.wav"}, 3, "/nowhere/x.wav: No such file"},
        {"folder without media", {"new-project", fresh, mPlace.Root() / "empty"}, 1, "no media files in"},
        {"no folder to save in", {"new-project", mPlace.Root() / "none/f.hproj", mA}, 3, "save project file"},
        {"missing project", {"from-project", fresh}, 3, "fresh.hproj: No such file"},
        {"damaged project",
         {"from-project", mPlace.Root() / "damaged.hproj"},
         3,
         "$.format: found the number 3, expected a text"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::string> arguments{"assets"};
        arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
        const RunResult run = mPlace.Run(arguments);
        EXPECT_EQ(run.status, test.status);
        EXPECT_THAT(run.err, HasSubstr(test.error));
    }
    EXPECT_FALSE(std::filesystem::exists(fresh));
    EXPECT_THAT(mPlace.Run({"assets", "new-project", "--force", mProject, mA, mPlace.Media("")}).out,
                HasSubstr("3 clips"))
        << "what is named twice comes once";
}

TEST_F(AssetsTest, CtrlCEndsTheWaitForInput)
{
    Child child(TRHOST_PROGRAM, mPlace.Arguments({"--trace", "Host", "assets", "to-paths"}),
                Child::Input::kTerminal);
    ASSERT_TRUE(child.WaitForError("\"TRDisplaySettings\""));
    kill(child.Pid(), SIGINT);
    EXPECT_EQ(child.Wait().status, 3);
}

TEST(Display, ShowsTheSettingsOfApplicationAndUser)
{
    const Workplace place;
    EXPECT_EQ(place.Run({"--json", "display"}).out,
              R"({"extendedDynamicRange":true,"displayColorManagement":true,"zoomInTextureFilteringMode":0,)"
              R"("zoomOutTextureFilteringMode":1,"bufferScalingMode":0,"swapChainFillColor":"#1d1d1d"})"
              "\n");
    EXPECT_THAT(place.Run({"display", "--app-type", "5"}).out, HasSubstr("extended-dynamic-range = off"));
    ASSERT_EQ(place.Run({"prefs", "set", "extended-dynamic-range", "on"}).status, 0);
    ASSERT_EQ(place.Run({"prefs", "set", "display-color-management", "off"}).status, 0);
    ASSERT_EQ(place.Run({"prefs", "set", "theme", "light"}).status, 0);
    const std::string shown = place.Run({"display", "--app-type", "5"}).out;
    EXPECT_THAT(shown, HasSubstr("extended-dynamic-range = on"));
    EXPECT_THAT(shown, HasSubstr("display-color-management = off"));
    EXPECT_THAT(shown, HasSubstr("#f5f5f5"));
    ASSERT_EQ(place.Run({"prefs", "set", "extended-dynamic-range", "default"}).status, 0);
    EXPECT_THAT(place.Run({"display", "--app-type", "5"}).out, HasSubstr("extended-dynamic-range = off"));
    EXPECT_THAT(place.Run({"prefs", "show"}).out, HasSubstr("extended-dynamic-range = default"));
    EXPECT_EQ(place.Run({"prefs", "set", "theme", "pink"}).status, 2);
    EXPECT_EQ(place.Run({"prefs", "set", "display-color-management", "maybe"}).status, 2);
}

} // namespace
} // namespace trhosttest
