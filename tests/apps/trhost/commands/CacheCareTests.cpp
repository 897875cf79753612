#include "../ProgramRunner.h"
#include "../SmallMedia.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>

namespace trhosttest {

using testing::HasSubstr;

namespace {

/// Three ingested wave files.
struct Ingested : Workplace {
    Ingested()
    {
        for (int i = 1; i <= 3; ++i) {
            WriteWave(Media("clip" + std::to_string(i) + ".wav"), 4800 * i, i);
        }
        const RunResult run = Run({"ingest", Media("")});
        EXPECT_EQ(run.status, 0) << run.err;
    }

    /// The present files and the given ones less: what a command that removes those must leave.
    Listing WithoutFilesOf(const std::string& inMediaName) const
    {
        Listing listing = ListFiles(Root());
        const std::string record = Run({"cache", "--json", "show", Media(inMediaName)}).out;
        std::erase_if(listing, [&](const auto& inFile) {
            return record.find("\"" + inFile.first + "\"") != std::string::npos &&
                   inFile.first != Media(inMediaName);
        });
        return listing;
    }
};

std::string ReadAll(const std::filesystem::path& inPath)
{
    std::ifstream file(inPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(CacheClean, RemovesWhatBelongsToAlteredMediaAndTouchesNothingElse)
{
    const Ingested place;
    EXPECT_EQ(place.Run({"cache", "clean"}).status, 0);
    std::ofstream(place.Media("clip2.wav"), std::ios::app) << "more";
    std::filesystem::remove(place.Media("clip3.wav"));
    Listing expected = place.WithoutFilesOf("clip2.wav");
    std::erase_if(expected, [rest = place.WithoutFilesOf("clip3.wav")](const auto& inFile) {
        return !rest.contains(inFile.first);
    });

    const Listing before = ListFiles(place.Root());
    const RunResult dry = place.Run({"cache", "clean", "--dry-run"});
    EXPECT_EQ(ListFiles(place.Root()), before);
    EXPECT_EQ(std::size_t(CountLines(dry.out, "")), before.size() - expected.size()) << dry.out;

    const RunResult run = place.Run({"cache", "clean"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("3 records: 2 removed, 1 kept"));
    EXPECT_EQ(ListFiles(place.Root()), expected);
}

TEST(CacheDeleteAll, AsksFirstAndLoadsNoEngine)
{
    const Ingested place;
    const Listing before = ListFiles(place.Root());
    Child child(TRHOST_PROGRAM, place.Arguments({"cache", "delete-all"}), Child::Input::kTerminal);
    ASSERT_TRUE(child.WaitForError("[y/N]"));
    const std::string maps = ReadAll("/proc/" + std::to_string(child.Pid()) + "/maps");
    EXPECT_THAT(maps, HasSubstr("libTRFoundation"));
    for (const char* engine : {"libQt", "libav", "libswresample", "javascriptcore"}) {
        EXPECT_THAT(maps, testing::Not(HasSubstr(engine)));
    }
    child.Type("n\n");
    EXPECT_EQ(child.Wait().status, 1);
    EXPECT_EQ(ListFiles(place.Root()), before);

    Child interrupted(TRHOST_PROGRAM, place.Arguments({"cache", "delete-all"}), Child::Input::kTerminal);
    ASSERT_TRUE(interrupted.WaitForError("[y/N]"));
    kill(interrupted.Pid(), SIGINT);
    EXPECT_EQ(interrupted.Wait().status, 3);
    EXPECT_EQ(ListFiles(place.Root()), before);
}

TEST(CacheDeleteAll, LeavesEveryOtherFile)
{
    const Ingested place;
    for (const std::string folder :
         {"", "Media Cache/", "Media Cache Files/", "Peak Files/", "Metadata Cache/"}) {
        support::WriteFile(place.State(folder + "canary.txt"), "tweet");
        support::WriteFile(place.State(folder + "canary.cfa.bak"), "tweet");
    }
    support::WriteFile(place.State("canary.cfa"), "beside the folders, not in them");
    std::filesystem::create_directory_symlink(place.Media(""), place.State("Media Cache Files/linked"));
    support::WriteFile(place.Media("canary.cfa"), "behind a link");
    Listing expected = ListFiles(place.Root());
    std::erase_if(expected, [](const auto& inFile) {
        const std::filesystem::path path = inFile.first;
        return path.filename() != "canary.cfa" &&
               (path.extension() == ".mcdb" || path.extension() == ".cfa" || path.extension() == ".pek" ||
                path.extension() == ".ccjson");
    });
    EXPECT_EQ(place.Run({"cache", "delete-all", "--yes"}).status, 0);
    EXPECT_EQ(ListFiles(place.Root()), expected);
}

TEST(CachePrune, RemovesWhatWasNotUsedForLongest)
{
    const Ingested place;
    const auto age = [&](const std::string& inMediaName, int inDays) {
        for (const auto& path : FilesEndingWith(place.State(""), "")) {
            if (path.filename().native().starts_with(inMediaName)) {
                timespec times[2] = {{time(nullptr) - inDays * 86400, 0}, {0, UTIME_OMIT}};
                ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
            }
        }
    };
    age("clip1.wav", 100);
    age("clip2.wav", 20);
    const Listing before = ListFiles(place.Root());
    const Listing withoutFirst = place.WithoutFilesOf("clip1.wav");

    EXPECT_EQ(CountLines(place.Run({"cache", "prune", "--older-than", "90d", "--dry-run"}).out, "clip1.wav"),
              3);
    EXPECT_EQ(ListFiles(place.Root()), before);
    EXPECT_THAT(place.Run({"cache", "prune", "--older-than", "101d"}).out, HasSubstr("0 cache files"));
    EXPECT_THAT(place.Run({"cache", "prune", "--older-than", "90d"}).out, HasSubstr("3 cache files"));
    EXPECT_EQ(ListFiles(place.Root()), withoutFirst);

    // Room for all but one file: only the oldest goes, and its record still names the others.
    std::uintmax_t bytes = 0;
    for (const char* end : {".cfa", ".pek", ".ccjson"}) {
        for (const auto& path : FilesEndingWith(place.State(""), end)) {
            bytes += std::filesystem::file_size(path);
        }
    }
    EXPECT_THAT(place.Run({"cache", "prune", "--max-size", std::to_string(bytes - 1)}).out,
                HasSubstr("1 cache files"));
    EXPECT_EQ(place.Run({"cache", "verify"}).status, 0);
    EXPECT_EQ(CountLines(place.Run({"cache", "list"}).out, "clip2.wav"), 1);
    EXPECT_THAT(place.Run({"cache", "prune", "--max-size", "0"}).out, HasSubstr("2 records removed"));
    EXPECT_EQ(FilesEndingWith(place.State(""), ".mcdb").size(), 0u);
}

TEST(CacheVerify, FindsWhatIsWrongAndSetsDamagedRecordsAside)
{
    const Ingested place;
    EXPECT_EQ(place.Run({"cache", "verify"}).status, 0);
    const auto records = FilesEndingWith(place.State(""), ".mcdb");
    ASSERT_EQ(records.size(), 3u);
    const std::string damaged = ReadAll(records[0]).substr(0, 200);
    std::ofstream(records[0], std::ios::trunc) << damaged;
    // The name's first 36 characters are the document's identifier, the tag follows.
    const auto shadowed =
        records[1].parent_path() / (records[1].filename().native().substr(0, 36) + "1536.mcdb");
    std::filesystem::copy_file(records[1], shadowed);
    support::WriteFile(place.State("Media Cache Files/stray.cfa"), "x");
    support::WriteFile(place.State("Media Cache/x.mcdb.kiotmp-1-1"), "x");

    const RunResult found = place.Run({"cache", "verify", "--json"});
    EXPECT_EQ(found.status, 1);
    for (const char* finding : {"unreadableRecord", "shadowedRecord", "orphanCacheFile", "temporaryFile"}) {
        EXPECT_GE(CountLines(found.out, "\"finding\":\"" + std::string(finding) + "\""), 1) << found.out;
    }
    const Listing before = ListFiles(place.Root());
    EXPECT_EQ(place.Run({"cache", "verify", "--repair", "--dry-run"}).status, 1);
    EXPECT_EQ(ListFiles(place.Root()), before);

    EXPECT_EQ(place.Run({"cache", "verify", "--repair"}).status, 1) << "the other findings stay";
    EXPECT_FALSE(std::filesystem::exists(records[0]));
    EXPECT_EQ(ReadAll(records[0].native() + ".bad"), damaged);
    EXPECT_EQ(CountLines(place.Run({"cache", "verify", "--json"}).out, "unreadableRecord"), 0);

    std::filesystem::remove_all(place.State("Peak Files"));
    EXPECT_EQ(CountLines(place.Run({"cache", "verify", "--json"}).out, "missingCacheFile"), 2);
}

} // namespace trhosttest
