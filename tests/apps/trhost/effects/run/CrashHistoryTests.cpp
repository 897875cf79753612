#include "run/CrashHistory.h"
#include "support/FaultyFileCalls.h"
#include "support/HandWoundClock.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace trhost::effects {
namespace {

using support::ReadFile;
using support::TemporaryFolder;
using support::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto kSomeTime = std::chrono::sys_days(std::chrono::year(2024) / 2 / 29) + 23h + 59min + 58s;

class ACrashHistory : public testing::Test {
protected:
    ACrashHistory() { clock.SetWallTime(kSomeTime); }

    CrashHistory Open()
    {
        return CrashHistory(folder.UTF16("state/crashes.json"), [this](const kiocore::UTF16String& line) {
            told.push_back(kiocore::utility::ToUTF8(line));
        });
    }
    std::string FileText() const { return ReadFile(folder / "state/crashes.json"); }
    std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        for (const CrashHistoryEntry& entry : Open().Entries()) {
            names.push_back(entry.matchName);
        }
        return names;
    }

    TemporaryFolder folder;
    support::HandWoundClock clock;
    std::vector<std::string> told;
};

TEST_F(ACrashHistory, CountsAndDatesAndComesBack)
{
    EXPECT_THAT(Open().Entries(), testing::IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder / "state")) << "asking makes nothing";
    Open().AddCrash({"frei0r.glow", "Glow \u00e4", "0.2", "session 1"});
    EXPECT_EQ(FileText(), R"({
  "entries": [
    {
      "crashes": 1,
      "displayName": "Glow ä",
      "lastDate": "2024-02-29T23:59:58Z",
      "lastSessionID": "session 1",
      "matchName": "frei0r.glow",
      "suspicions": 0,
      "version": "0.2",
      "wasShown": false
    }
  ],
  "version": 1
}
)");
    clock.Advance(2s);
    Open().AddSuspect("avfilter.hflip");
    Open().AddSuspect("frei0r.glow");
    clock.Advance(1s);
    Open().AddCrash({"frei0r.glow", "Glow", "0.3", "session 2"});
    const auto entries = Open().Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].matchName, "frei0r.glow") << "the newest first";
    EXPECT_EQ(entries[0].displayName, "Glow");
    EXPECT_EQ(entries[0].version, "0.3");
    EXPECT_EQ(entries[0].crashes, 2);
    EXPECT_EQ(entries[0].suspicions, 1);
    EXPECT_EQ(entries[0].lastDate, "2024-03-01T00:00:01Z");
    EXPECT_EQ(entries[0].lastSessionID, "session 2");
    EXPECT_EQ(entries[1].matchName, "avfilter.hflip");
    EXPECT_EQ(entries[1].crashes, 0);
    EXPECT_EQ(entries[1].lastDate, "2024-03-01T00:00:00Z");
    EXPECT_TRUE(Open().Clear("frei0r.glow"));
    EXPECT_FALSE(Open().Clear("frei0r.glow"));
    EXPECT_THAT(Names(), ElementsAre("avfilter.hflip"));
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(ACrashHistory, ShowsAgainWhatHappenedSinceItWasShown)
{
    CrashHistory history = Open();
    history.AddCrash({"a", "", "", ""});
    history.AddCrash({"b", "", "", ""});
    history.AddSuspect("c");
    const auto shown = history.Entries();
    history.AddCrash({"b", "", "", ""}); // by another process, while the user reads
    history.AddSuspect("d");
    history.MarkShown(shown);
    std::vector<std::string> unshown;
    for (const CrashHistoryEntry& entry : history.Entries()) {
        if (!entry.wasShown) {
            unshown.push_back(entry.matchName);
        }
    }
    EXPECT_THAT(unshown, testing::UnorderedElementsAre("b", "d"));
    history.MarkShown(history.Entries());
    history.AddSuspect("a");
    for (const CrashHistoryEntry& entry : history.Entries()) {
        EXPECT_EQ(entry.wasShown, entry.matchName != "a") << entry.matchName;
    }
}

TEST_F(ACrashHistory, LosesNothingWhenSeveralWriteAtOnce)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 10; ++i) {
                CrashHistory history = Open();
                history.AddCrash({"shared", "", "", ""});
                history.AddSuspect("of thread " + std::to_string(t));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto entries = Open().Entries();
    ASSERT_EQ(entries.size(), 5u);
    for (const CrashHistoryEntry& entry : entries) {
        EXPECT_EQ(entry.crashes + entry.suspicions, entry.matchName == "shared" ? 40 : 10);
    }
}

TEST_F(ACrashHistory, SetsADamagedFileAside)
{
    const struct {
        const char* name;
        std::string bytes;
    } kCases[] = {
        {"empty", ""},
        {"cut", R"({"version": 1, "entries": [)"},
        {"no object", "[]"},
        {"no version", R"({"entries": []})"},
        {"a version that is no number", R"({"version": "1", "entries": []})"},
        {"no entries", R"({"version": 1})"},
        {"an entry without a match name", R"({"version": 1, "entries": [{"crashes": 1}]})"},
        {"a count that is none", R"({"version": 1, "entries": [{"matchName": "a", "crashes": "many"}]})"},
        {"no UTF-8", "{\"version\": 1, \"entries\": [{\"matchName\": \"\xff\"}]}"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        for (const char* taken : {"", "-2"}) { // the second time in one second
            told.clear();
            WriteFile(folder / "state/crashes.json", test.bytes);
            if (*taken) {
                Open().AddCrash({"a", "", "", ""});
                EXPECT_THAT(Names(), ElementsAre("a"));
            } else {
                EXPECT_THAT(Open().Entries(), testing::IsEmpty());
            }
            const std::string aside =
                (folder / "state/crashes.json.damaged-2024-02-29T23:59:58Z").native() + taken;
            EXPECT_EQ(ReadFile(aside), test.bytes);
            EXPECT_THAT(told, ElementsAre(testing::AllOf(HasSubstr("/crashes.json is damaged ("),
                                                         HasSubstr("kept as " + aside))));
        }
        std::filesystem::remove_all(folder / "state");
    }
}

TEST_F(ACrashHistory, LeavesAFileOfANewerVersionAlone)
{
    const std::string newer = R"({"version": 2, "plugins": {}})";
    WriteFile(folder / "state/crashes.json", newer);
    CrashHistory history = Open();
    EXPECT_THROW(history.Entries(), kiocore::kio_exception);
    try {
        history.AddCrash({"a", "", "", ""});
        ADD_FAILURE() << "changed it";
    } catch (const kiocore::kio_exception& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("has version 2; this program reads up to 1"));
    }
    EXPECT_EQ(FileText(), newer);
}

TEST_F(ACrashHistory, KeepsWhatItHasWhenTheDiskFails)
{
    CrashHistory history = Open();
    history.AddCrash({"a", "", "", ""});
    const std::string before = FileText();
    for (const char* call : {"Write", "Sync", "Rename"}) {
        SCOPED_TRACE(call);
        support::FaultyFileCalls calls;
        calls.FailCalls(call, ENOSPC);
        EXPECT_THROW(history.AddCrash({"b", "", "", ""}), kiocore::file_exception);
        EXPECT_EQ(FileText(), before);
    }
    WriteFile(folder / "state/crashes.json", "damaged");
    support::FaultyFileCalls calls;
    calls.FailCalls("Link", EPERM);
    calls.FailCalls("Rename", ENOSPC);
    EXPECT_THROW(history.AddCrash({"b", "", "", ""}), kiocore::file_exception);
    EXPECT_EQ(FileText(), "damaged") << "what cannot be set aside is not written over";
}

} // namespace
} // namespace trhost::effects
