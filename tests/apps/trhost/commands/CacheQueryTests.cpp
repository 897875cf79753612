#include "../ProgramRunner.h"
#include "../SmallMedia.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trhosttest {

using testing::HasSubstr;

TEST(CacheFind, AnswersWithItsExitStatus)
{
    const Workplace place;
    const std::string media = place.Media("movie.mp4");
    WriteMovie(media);
    ASSERT_EQ(place.Run({"ingest", media}).status, 0);
    const struct {
        const char* name;
        std::vector<std::string> more;
        int fresh;   // status while everything is there
        int altered; // after the media was written to
        int damaged; // after a peak file was removed, too
    } kCases[] = {
        {"everything", {}, 0, 0, 1},
        {"everything, as it is now", {"--up-to-date"}, 0, 1, 1},
        {"one stream", {"--stream", "0"}, 0, 0, 0},
        {"one key", {"--key", "PeakFile"}, 0, 0, 1},
        {"one item, as it is now", {"--stream", "1", "--key", "ConformedAudio", "--up-to-date"}, 0, 1, 1},
        {"no such stream", {"--stream", "9"}, 1, 1, 1},
        {"no such key", {"--key", "peakfile"}, 1, 1, 1},
    };
    const auto check = [&](const char* inWhen, auto inStatus) {
        for (const auto& test : kCases) {
            std::vector<std::string> arguments{"cache", "find", media};
            arguments.insert(arguments.end(), test.more.begin(), test.more.end());
            EXPECT_EQ(place.Run(arguments).status, test.*inStatus) << inWhen << ": " << test.name;
        }
    };
    using Case = std::remove_cvref_t<decltype(kCases[0])>;
    check("fresh", &Case::fresh);
    std::filesystem::last_write_time(media, std::filesystem::file_time_type::clock::now());
    check("altered", &Case::altered);
    std::filesystem::remove(FilesEndingWith(place.State("Peak Files"), ".pek").at(0));
    check("damaged", &Case::damaged);
    std::filesystem::remove(media);
    EXPECT_EQ(place.Run({"cache", "find", media, "--stream", "0"}).status, 0)
        << "media that is gone keeps its record";
}

TEST(CacheShow, TellsTheRecordInFull)
{
    const Workplace place;
    const std::string media = place.Media("a.wav");
    WriteWave(media);
    ASSERT_EQ(place.Run({"ingest", media}).status, 0);
    const std::string shown = place.Run({"cache", "show", media, "--json"}).out;
    EXPECT_THAT(shown, HasSubstr("\"media\":\"" + media + "\""));
    EXPECT_THAT(shown, HasSubstr("\"upToDate\":true"));
    EXPECT_THAT(shown, HasSubstr("\"key\":\"ConformedAudio\""));
    EXPECT_EQ(CountLines(place.Run({"cache", "list"}).out, media), 1);
    EXPECT_THAT(place.Run({"cache", "stats", "--json"}).out, HasSubstr("\"records\":1,"));
    EXPECT_EQ(place.Run({"cache", "folder", media}).out, place.State("Media Cache Files").native() + "\n");

    const auto records = FilesEndingWith(place.State(""), ".mcdb");
    ASSERT_EQ(records.size(), 1u);
    const std::string dump = place.Run({"cache", "dump", records[0]}).out;
    EXPECT_LT(dump.find("OriginalPath"), dump.find("Item.ContentState"));
    EXPECT_LT(dump.find("Item.ContentState"), dump.find("Stream.Count"));
    EXPECT_LT(dump.find("Stream.Count"), dump.find("Item.Path"));
}

TEST(CacheInvalidate, LetsIngestMakeTheFilesAgain)
{
    const Workplace place;
    const std::string media = place.Media("a.wav");
    WriteWave(media);
    ASSERT_EQ(place.Run({"ingest", media}).status, 0);
    EXPECT_EQ(place.Run({"cache", "invalidate", media, "--stream", "7"}).status, 1);
    EXPECT_EQ(place.Run({"cache", "find", media, "--up-to-date"}).status, 0);
    EXPECT_EQ(place.Run({"cache", "invalidate", media, "--stream", "0"}).status, 0);
    EXPECT_EQ(place.Run({"cache", "find", media, "--up-to-date"}).status, 1);
    EXPECT_THAT(place.Run({"ingest", media}).out, HasSubstr("1 made"));
    EXPECT_EQ(place.Run({"cache", "verify"}).status, 0);
}

TEST(CacheCopy, LetsTheFilesFollowTheMedia)
{
    const Workplace place;
    const std::string media = place.Media("movie.mp4");
    const std::filesystem::path folder = place.Root() / "archive";
    std::filesystem::create_directories(folder);
    WriteMovie(media);
    EXPECT_EQ(place.Run({"cache", "copy", media, folder}).status, 1) << "nothing is recorded";
    ASSERT_EQ(place.Run({"ingest", media}).status, 0);
    EXPECT_EQ(place.Run({"cache", "copy", media, folder}).status, 3) << "the media is not there yet";
    WriteWave(folder / "movie.mp4");
    EXPECT_EQ(place.Run({"cache", "copy", media, folder}).status, 1) << "another file of that name";

    std::filesystem::copy_file(media, folder / "movie.mp4",
                               std::filesystem::copy_options::overwrite_existing);
    const std::string before = place.Run({"cache", "show", media}).out;
    const RunResult copy = place.Run({"cache", "copy", media, folder});
    ASSERT_EQ(copy.status, 0) << copy.err;
    EXPECT_EQ(place.Run({"cache", "show", media}).out, before);
    EXPECT_EQ(FilesEndingWith(folder, ".cfa").size(), 1u);
    EXPECT_THAT(place.Run({"ingest", folder}).out, HasSubstr("1 file: all up to date"));
}

} // namespace trhosttest
