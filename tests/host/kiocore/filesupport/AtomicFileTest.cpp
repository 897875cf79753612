#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/NativePath.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

namespace kiocore::filesupport {
namespace {

using support::FaultyFileCalls;
using support::ReadFile;
using support::TemporaryFolder;
using support::WriteFile;
using testing::AnyOf;
using testing::Eq;

constexpr Durability kDurabilities[] = {Durability::kFull, Durability::kFile, Durability::kNone};

std::vector<std::string> NamesIn(const std::filesystem::path& inFolder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(inFolder)) {
        names.push_back(entry.path().filename().native());
    }
    std::sort(names.begin(), names.end());
    return names;
}

struct stat StatusOf(const std::filesystem::path& inPath)
{
    struct stat status {};
    EXPECT_EQ(::stat(inPath.c_str(), &status), 0) << inPath;
    return status;
}

void SetTime(const std::filesystem::path& inPath, timespec inTime)
{
    const timespec times[2] = {{0, UTIME_OMIT}, inTime};
    ASSERT_EQ(::utimensat(AT_FDCWD, inPath.c_str(), times, 0), 0);
}

TEST(AtomicFile, MakesAndReplaces)
{
    for (const Durability durability : kDurabilities) {
        SCOPED_TRACE(static_cast<int>(durability));
        TemporaryFolder folder;
        const SaveResult made = SaveFileAtomically(folder.UTF16("record"), "first", durability);
        ASSERT_EQ(made.result, 0) << made.failedStep;
        const SaveResult replaced = SaveFileAtomically(folder.UTF16("record"), "", durability);
        ASSERT_EQ(replaced.result, 0) << replaced.failedStep;
        EXPECT_EQ(ReadFile(folder / "record"), "");
        EXPECT_EQ(replaced.modificationTime, ToFileTime(StatusOf(folder / "record").st_mtim));
        EXPECT_GT(replaced.modificationTime, made.modificationTime);
        EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre("record"));
    }
}

TEST(AtomicFile, DurabilityDecidesWhatIsSynced)
{
    const struct {
        const char* name;
        Durability durability;
        int syncs;
    } kCases[] = {
        {"full", Durability::kFull, 2}, {"file", Durability::kFile, 1}, {"none", Durability::kNone, 0}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        TemporaryFolder folder;
        FaultyFileCalls calls;
        ASSERT_EQ(SaveFileAtomically(folder.UTF16("record"), "bytes", test.durability).result, 0);
        const std::vector<std::string> names = calls.Names();
        EXPECT_EQ(std::count(names.begin(), names.end(), "Sync"), test.syncs);
    }
}

TEST(AtomicFile, TheNewTimeIsLaterThanTheReplacedOne)
{
    const struct {
        const char* name;
        timespec replaced;
        bool keepsClock;
    } kCases[] = {
        {"before 1970", {-1000000000, 5}, true},
        {"an ordinary past", {1400000000, 999999999}, true},
        {"the clock went back", {4000000000, 17}, false},
        {"carried into the next second", {4000000000, 999999999}, false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        TemporaryFolder folder;
        WriteFile(folder / "record", "old");
        SetTime(folder / "record", test.replaced);
        const FileTime before = ToFileTime(StatusOf(folder / "record").st_mtim);
        const SaveResult saved = SaveFileAtomically(folder.UTF16("record"), "new", Durability::kNone);
        ASSERT_EQ(saved.result, 0);
        EXPECT_EQ(ToFileTime(StatusOf(folder / "record").st_mtim), saved.modificationTime);
        if (test.keepsClock) {
            EXPECT_GT(saved.modificationTime, before);
        } else {
            EXPECT_EQ(saved.modificationTime, before + 1);
        }
    }
}

TEST(AtomicFile, QuickSavesNeverShareATime)
{
    TemporaryFolder folder;
    FileTime last = kNoFileTime;
    for (int i = 0; i < 500; ++i) {
        const SaveResult saved = SaveFileAtomically(folder.UTF16("record"), "bytes", Durability::kNone);
        ASSERT_GT(saved.modificationTime, last);
        last = saved.modificationTime;
    }
}

TEST(AtomicFile, KeepsThePermissionsOfTheReplacedFile)
{
    TemporaryFolder folder;
    WriteFile(folder / "record", "old");
    for (const mode_t mode : {0600, 0640, 0666, 0444}) {
        ASSERT_EQ(::chmod((folder / "record").c_str(), mode), 0);
        ASSERT_EQ(SaveFileAtomically(folder.UTF16("record"), "new", Durability::kNone).result, 0);
        EXPECT_EQ(StatusOf(folder / "record").st_mode & 07777, mode);
    }
}

struct FaultCase {
    const char* name;
    bool replaces;
    Durability durability;
};
constexpr FaultCase kFaultCases[] = {
    {"replacing, full", true, Durability::kFull}, {"replacing, file", true, Durability::kFile},
    {"replacing, none", true, Durability::kNone}, {"making, full", false, Durability::kFull},
    {"making, file", false, Durability::kFile},
};
constexpr std::string_view kOldBytes = "the old contents";
constexpr std::string_view kNewBytes = "the new contents, which take several writes";

int CountCalls(const FaultCase& inCase)
{
    TemporaryFolder folder;
    if (inCase.replaces) {
        WriteFile(folder / "record", kOldBytes);
    }
    FaultyFileCalls calls;
    calls.WriteAtMost(10);
    EXPECT_EQ(SaveFileAtomically(folder.UTF16("record"), kNewBytes, inCase.durability).result, 0);
    EXPECT_EQ(ReadFile(folder / "record"), kNewBytes);
    return static_cast<int>(calls.Names().size());
}

TEST(AtomicFile, AnyFailedCallLeavesTheOldFileAndNothingElse)
{
    for (const FaultCase& test : kFaultCases) {
        const int count = CountCalls(test);
        ASSERT_GE(count, 8);
        for (int failing = 0; failing < count; ++failing) {
            for (const int error : {ENOSPC, EIO, EACCES, EROFS}) {
                TemporaryFolder folder;
                if (test.replaces) {
                    WriteFile(folder / "record", kOldBytes);
                }
                WriteFile(folder / "canary", "canary");
                FaultyFileCalls calls;
                calls.WriteAtMost(10);
                calls.FailCall(failing, error);
                const SaveResult saved =
                    SaveFileAtomically(folder.UTF16("record"), kNewBytes, test.durability);
                const std::string failed = calls.Names()[static_cast<std::size_t>(failing)];
                SCOPED_TRACE(test.name + std::string(", call ") + std::to_string(failing) + " " + failed +
                             " fails: " + std::strerror(error));
                EXPECT_EQ(ReadFile(folder / "canary"), "canary");
                if (saved.result == 0) {
                    // Only what follows the last step that matters may fail unnoticed.
                    EXPECT_GE(failing, count - 2);
                    EXPECT_THAT(failed, AnyOf(Eq("Unlink"), Eq("Close")));
                    EXPECT_EQ(ReadFile(folder / "record"), kNewBytes);
                    continue;
                }
                EXPECT_EQ(saved.errorNumber, error);
                EXPECT_STRNE(saved.failedStep, "");
                if (test.replaces) {
                    EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre("canary", "record"));
                    EXPECT_EQ(ReadFile(folder / "record"), kOldBytes);
                } else {
                    EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre("canary"));
                }
            }
        }
    }
}

TEST(AtomicFile, AnInterruptedCallIsMadeAgain)
{
    const FaultCase& test = kFaultCases[0];
    for (const std::string interrupted : {"Open", "Write", "Sync", "Close"}) {
        TemporaryFolder folder;
        WriteFile(folder / "record", kOldBytes);
        std::vector<std::string> names;
        {
            FaultyFileCalls calls;
            ASSERT_EQ(SaveFileAtomically(folder.UTF16("record"), kNewBytes, test.durability).result, 0);
            names = calls.Names();
        }
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i] == interrupted) {
                FaultyFileCalls calls;
                calls.FailCall(static_cast<int>(i), EINTR);
                const SaveResult saved =
                    SaveFileAtomically(folder.UTF16("record"), kNewBytes, test.durability);
                EXPECT_EQ(saved.result, 0) << interrupted << " at " << i << ": " << saved.failedStep;
            }
        }
    }
}

TEST(AtomicFile, AProcessThatDiesAtAnyCallLeavesTheOldFileOrTheNewOne)
{
    for (const FaultCase& test : kFaultCases) {
        const int count = CountCalls(test);
        bool sawNew = false;
        for (int deadly = 0; deadly < count; ++deadly) {
            SCOPED_TRACE(test.name + std::string(", dead at call ") + std::to_string(deadly));
            TemporaryFolder folder;
            if (test.replaces) {
                WriteFile(folder / "record", kOldBytes);
            }
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                FaultyFileCalls calls;
                calls.WriteAtMost(10);
                calls.DieAtCall(deadly);
                SaveFileAtomically(folder.UTF16("record"), kNewBytes, test.durability);
                ::_exit(0);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            ASSERT_EQ(WEXITSTATUS(status), FaultyFileCalls::kDeadStatus);
            if (test.replaces || std::filesystem::exists(folder / "record")) {
                const std::string bytes = ReadFile(folder / "record");
                EXPECT_THAT(bytes, AnyOf(Eq(kOldBytes), Eq(kNewBytes)));
                sawNew |= bytes == kNewBytes;
            }
            for (const std::string& name : NamesIn(folder.Path())) {
                if (name != "record") {
                    EXPECT_TRUE(name.starts_with("record" + std::string(kTemporaryFileMark))) << name;
                }
            }
            // What the dead process left does not stand in the way.
            EXPECT_EQ(SaveFileAtomically(folder.UTF16("record"), "later", test.durability).result, 0);
            EXPECT_EQ(ReadFile(folder / "record"), "later");
        }
        EXPECT_EQ(sawNew, test.durability == Durability::kFull) << "the rename is the last call otherwise";
    }
}

TEST(AtomicFile, NamesTheStepThatFailed)
{
    const struct {
        const char* call;
        const char* step;
    } kCases[] = {{"Open", "open"}, {"Write", "write"}, {"ChangeMode", "set mode"}, {"SetTimes", "set time"},
                  {"Sync", "sync"}, {"Close", "close"}, {"Link", "link"},           {"Rename", "rename"}};
    for (const auto& test : kCases) {
        TemporaryFolder folder;
        WriteFile(folder / "record", kOldBytes);
        ASSERT_EQ(::chmod((folder / "record").c_str(), 04666),
                  0); // no new file is given such a mode by itself
        FaultyFileCalls calls;
        calls.FailCalls(test.call, EIO);
        const SaveResult saved = SaveFileAtomically(folder.UTF16("record"), kNewBytes, Durability::kFull);
        EXPECT_LT(saved.result, 0);
        EXPECT_STREQ(saved.failedStep, test.step);
    }
}

TEST(AtomicFile, WorksWithoutHardLinksAndWithoutFoldersThatSync)
{
    TemporaryFolder folder;
    WriteFile(folder / "record", kOldBytes);
    FaultyFileCalls calls;
    calls.FailCalls("Link", EPERM);
    EXPECT_EQ(SaveFileAtomically(folder.UTF16("record"), kNewBytes, Durability::kFull).result, 0);
    EXPECT_EQ(ReadFile(folder / "record"), kNewBytes);
}

TEST(AtomicFile, LeavesAloneWhatIsNoRegularFile)
{
    TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const struct {
        const char* name;
        UTF16String path;
        const char* step;
    } kCases[] = {
        {"a folder", folder.UTF16("folder"), "check"},
        {"a pipe", folder.UTF16("pipe"), "check"},
        {"a missing folder", folder.UTF16("missing/record"), "open"},
        {"an empty path", u"", "open"},
        {"a zero unit", folder.UTF16("a") + u'\0', "open"},
        {"a path that is too long", folder.UTF16("") + UTF16String(32768, u'x'), "check"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const SaveResult saved = SaveFileAtomically(test.path, "bytes", Durability::kFile);
        EXPECT_LT(saved.result, 0);
        EXPECT_STREQ(saved.failedStep, test.step);
    }
    EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre("folder", "pipe"));
    FaultyFileCalls calls;
    SaveFileAtomically(u"", "bytes", Durability::kFile);
    EXPECT_THAT(calls.Names(), testing::IsEmpty()) << "the working folder is nobody's to write to";
}

TEST(AtomicFile, SavesUnderOddNames)
{
    const struct {
        const char* name;
        std::string native;
    } kCases[] = {
        {"an emoji", "\xF0\x9F\x8E\xAC"},
        {"control characters", "a\x01\n\x7F"},
        {"no UTF-8", "\xFF\xC0"},
        {"the longest name", std::string(255, 'n')},
        {"the longest name, of long characters", std::string("n") +
                                                     [] {
                                                         std::string text;
                                                         for (int i = 0; i < 84; ++i) {
                                                             text += "\xE9\x9F\xB3";
                                                         }
                                                         return text;
                                                     }()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        TemporaryFolder folder;
        const UTF16String path = FromNative((folder.Path() / test.native).native());
        for (const char* bytes : {"one", "two"}) {
            const SaveResult saved = SaveFileAtomically(path, bytes, Durability::kFull);
            ASSERT_EQ(saved.result, 0) << saved.failedStep << ": " << std::strerror(saved.errorNumber);
            EXPECT_EQ(ReadFile(folder.Path() / test.native), bytes);
        }
        EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre(test.native));
    }
}

TEST(AtomicFile, SavesOfOnePathAtOnceLeaveOneOfThem)
{
    TemporaryFolder folder;
    const UTF16String path = folder.UTF16("record");
    std::vector<std::thread> threads;
    for (char mark = 'a'; mark < 'e'; ++mark) {
        threads.emplace_back([&path, mark] {
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(SaveFileAtomically(path, std::string(5000, mark), Durability::kNone).result, 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::string bytes = ReadFile(folder / "record");
    EXPECT_EQ(bytes, std::string(5000, bytes.at(0)));
    EXPECT_THAT(NamesIn(folder.Path()), testing::ElementsAre("record"));
}

} // namespace
} // namespace kiocore::filesupport
