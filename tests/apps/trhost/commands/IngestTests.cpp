#include "../ProgramRunner.h"
#include "../SmallMedia.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <limits.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace trhosttest {

using testing::HasSubstr;

TEST(Ingest, TheSecondPassFindsAllUpToDateAndTouchesNothing)
{
    const Workplace place;
    std::filesystem::create_directories(place.Media("a"));
    std::filesystem::create_directories(place.Media("b"));
    WriteWave(place.Media("a/same.wav"));
    WriteWave(place.Media("b/same.wav"), 9600);
    WriteMovie(place.Media("movie.mp4"));
    std::ofstream(place.Media("notes.txt")) << "no media";

    const RunResult first = place.Run({"ingest", place.Media("")});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_THAT(first.out, HasSubstr("3 files: 3 made, 0 up to date, 0 failed"));
    EXPECT_EQ(FilesEndingWith(place.State("Media Cache Files"), ".cfa").size(), 3u);
    EXPECT_EQ(FilesEndingWith(place.State("Media Cache Files"), ".mcvideoindex").size(), 1u);
    EXPECT_EQ(FilesEndingWith(place.State("Peak Files"), ".pek").size(), 3u);

    const Listing before = ListFiles(place.Root());
    const RunResult second = place.Run({"ingest", place.Media("")});
    EXPECT_EQ(second.status, 0);
    EXPECT_THAT(second.out, HasSubstr("3 files: all up to date"));
    EXPECT_EQ(ListFiles(place.Root()), before);
    EXPECT_EQ(place.Run({"cache", "verify"}).status, 0);
}

TEST(Ingest, NeedsTheMediaModuleOnlyToMakeSomething)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    std::ofstream(place.Media("broken.wav")) << "no media at all";
    const RunResult first = place.Run({"ingest", place.Media("")});
    EXPECT_EQ(first.status, 0);
    EXPECT_THAT(first.out, HasSubstr("2 files: 1 made, 0 up to date, 1 skipped, 0 failed"));

    // The same program with the same libraries, but without the module.
    const std::filesystem::path program = TRHOST_PROGRAM;
    const std::filesystem::path libraries = program.parent_path().parent_path() / "lib";
    std::filesystem::create_directories(place.Root() / "bin");
    std::filesystem::create_directories(place.Root() / "lib");
    std::filesystem::copy_file(program, place.Root() / "bin/trhost");
    for (const auto& entry : std::filesystem::directory_iterator(libraries)) {
        if (!entry.is_directory()) {
            std::filesystem::create_symlink(entry.path(), place.Root() / "lib" / entry.path().filename());
        }
    }
    const auto runWithout = [&] {
        return Child(place.Root() / "bin/trhost", place.Arguments({"ingest", place.Media("")})).Wait();
    };
    const RunResult second = runWithout();
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_THAT(second.out, HasSubstr("2 files: 0 made, 1 up to date, 1 skipped, 0 failed"));

    WriteWave(place.Media("a.wav"), 9600);
    const RunResult third = runWithout();
    EXPECT_EQ(third.status, 3);
    EXPECT_THAT(third.err, HasSubstr("trhost_media.so"));
}

TEST(Ingest, MakesAgainWhatIsMissingAndOnlyThat)
{
    const Workplace place;
    WriteMovie(place.Media("movie.mov"));
    WriteWave(place.Media("other.wav"));
    ASSERT_EQ(place.Run({"ingest", place.Media("")}).status, 0);
    const struct {
        const char* name;
        std::string end;
    } kCases[] = {
        {"a stream's file", ".pek"},
        {"the summary", ".ccjson"},
        {"the video index", ".mcvideoindex"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Listing before = ListFiles(place.State(""));
        std::filesystem::path removed;
        for (const auto& path : FilesEndingWith(place.State(""), test.end)) {
            if (path.filename().native().starts_with("movie")) {
                removed = path;
                std::filesystem::remove(path);
            }
        }
        const RunResult run = place.Run({"ingest", place.Media("")});
        EXPECT_THAT(run.out, HasSubstr("2 files: 1 made, 1 up to date, 0 failed"));
        for (const auto& [path, state] : ListFiles(place.State(""))) {
            if (path != removed && !path.ends_with(".mcdb")) {
                EXPECT_EQ(state, before.at(path)) << path;
            }
        }
        EXPECT_TRUE(std::filesystem::exists(removed));
        EXPECT_THAT(place.Run({"ingest", place.Media("")}).out, HasSubstr("2 files: all up to date"));
    }
}

TEST(Ingest, ForceMakesAndRecordsAnew)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    ASSERT_EQ(place.Run({"ingest", place.Media("")}).status, 0);
    EXPECT_THAT(place.Run({"ingest", "--force", place.Media("a.wav")}).out, HasSubstr("1 file: 1 made"));
    EXPECT_THAT(place.Run({"ingest", place.Media("")}).out, HasSubstr("all up to date"));
    EXPECT_EQ(place.Run({"cache", "verify"}).status, 0);
}

TEST(Ingest, AnotherStateReplacesTheOldFilesWithoutRemains)
{
    const Workplace place;
    WriteMovie(place.Media("a.mkv"));
    ASSERT_EQ(place.Run({"ingest", place.Media("")}).status, 0);
    WriteWave(place.Media("sound.wav"));
    std::filesystem::rename(place.Media("sound.wav"), place.Media("a.mkv")); // one stream instead of two
    EXPECT_THAT(place.Run({"ingest", place.Media("")}).out, HasSubstr("1 file: 1 made"));
    const RunResult verify = place.Run({"cache", "verify"});
    EXPECT_EQ(verify.status, 0) << verify.out;
    EXPECT_EQ(FilesEndingWith(place.State(""), ".mcvideoindex").size(), 0u);
}

TEST(Ingest, SideBySidePutsCacheFilesBesideTheMedia)
{
    const Workplace place;
    WriteWave(place.Media("a.wav"));
    ASSERT_EQ(place.Run({"prefs", "set", "side-by-side", "on"}).status, 0);
    ASSERT_EQ(place.Run({"ingest", place.Media("")}).status, 0);
    EXPECT_EQ(FilesEndingWith(place.Media(""), ".cfa").size(), 1u);
    EXPECT_EQ(FilesEndingWith(place.State("Peak Files"), ".pek").size(), 1u);
    EXPECT_THAT(place.Run({"ingest", place.Media("")}).out, HasSubstr("1 file: all up to date"));
}

TEST(Ingest, AnInterruptionLeavesNothingHalfDone)
{
    const Workplace place;
    WriteWave(place.Media("short.wav"));
    ASSERT_EQ(place.Run({"ingest", place.Media("")}).status, 0);
    WriteSparseWave(place.Media("long.wav"), 500'000'000); // almost three hours: nobody is that fast
    const Listing before = ListFiles(place.State(""));

    const int watch = inotify_init1(IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, place.State("Media Cache Files").c_str(), IN_CREATE), 0);
    Child child(TRHOST_PROGRAM, place.Arguments({"ingest", place.Media("")}));
    char event[sizeof(inotify_event) + NAME_MAX + 1];
    ASSERT_GT(read(watch, event, sizeof(event)), 0); // the first cache file of the long one is being written
    close(watch);
    kill(child.Pid(), SIGINT);
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.err, HasSubstr("trhost: interrupted"));
    EXPECT_THAT(run.out, HasSubstr("2 files: 0 made, 1 up to date, 1 not done, 0 failed"));
    EXPECT_EQ(ListFiles(place.State("")), before);
    EXPECT_EQ(place.Run({"cache", "show", place.Media("long.wav")}).status, 1);
}

} // namespace trhosttest
