#include "run/BlackBox.h"
#include "run/BoxLayout.h"
#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace trhost::effects {
namespace {

using support::TemporaryFolder;
using support::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> FilesIn(const TemporaryFolder& inFolder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(inFolder.Path())) {
        names.push_back(entry.path().filename().native());
    }
    return names;
}

std::vector<std::string> SuspectNames(const TemporaryFolder& inFolder)
{
    std::vector<std::string> names;
    for (const Suspect& suspect : ReadSuspects(inFolder.UTF16())) {
        names.push_back(suspect.matchName);
    }
    return names;
}

/// A process that does something with a box of its own and then waits to be killed.
class Victim {
public:
    Victim(const TemporaryFolder& inFolder, void (*inRun)(BlackBox&))
    {
        int ready[2];
        if (::pipe(ready) != 0) {
            throw std::runtime_error("no pipe");
        }
        std::fflush(nullptr);
        mProcess = ::fork();
        if (mProcess == 0) {
            ::close(ready[0]);
            ::fcntl(ready[1], F_SETFD, FD_CLOEXEC);
            {
                BlackBox box(inFolder.UTF16());
                inRun(box);
                [[maybe_unused]] const auto written = ::write(ready[1], "r", 1);
                for (;;) {
                    ::pause();
                }
            }
        }
        ::close(ready[1]);
        char byte = 0;
        mIsReady = ::read(ready[0], &byte, 1) == 1;
        ::close(ready[0]);
    }
    ~Victim()
    {
        if (mProcess > 0) {
            Kill();
        }
    }
    void Kill()
    {
        ::kill(mProcess, SIGKILL);
        ::waitpid(mProcess, nullptr, 0);
        mProcess = -1;
    }
    /// False when it ended by itself.
    bool IsReady() const { return mIsReady; }

private:
    pid_t mProcess;
    bool mIsReady;
};

/// Keeps those alive who read from it, until the test is done with them.
int sHold[2] = {-1, -1};

void LeaveChildBehind(BlackBox& ioBox)
{
    int done[2];
    if (::pipe(done) != 0) {
        ::_exit(1);
    }
    char byte = 'd';
    if (::fork() != 0) {
        ::close(done[1]);
        [[maybe_unused]] const auto got = ::read(done[0], &byte, 1);
        return;
    }
    ::close(sHold[1]);
    ioBox.Leave();
    ioBox.Enter("of the child");
    BlackBox::MarkCrashReported();
    [[maybe_unused]] const auto written = ::write(done[1], &byte, 1);
    [[maybe_unused]] const auto got = ::read(sHold[0], &byte, 1);
    ::_exit(0);
}

TEST(BlackBox, NamesWhatRanWhenItsProcessEnded)
{
    ASSERT_EQ(::pipe(sHold), 0);
    const struct {
        const char* name;
        void (*run)(BlackBox&); // then killed, unless it ends by itself
        std::vector<std::string> suspects;
    } kCases[] = {
        {"nothing ran", [](BlackBox&) {}, {}},
        {"killed in a call", [](BlackBox& box) { box.Enter("frei0r.glow"); }, {"frei0r.glow"}},
        {"killed after it",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             box.Leave();
         },
         {}},
        {"killed in an inner call",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             box.Enter("avfilter.hflip");
         },
         {"avfilter.hflip"}},
        {"killed after an inner call",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             box.Enter("avfilter.hflip");
             box.Leave();
         },
         {"frei0r.glow"}},
        {"killed in several threads",
         [](BlackBox& box) {
             static std::latch entered(3);
             for (const char* name : {"ladspa.1413", "frei0r.curves", "frei0r.curves"}) {
                 std::thread([&box, name] {
                     box.Enter(name);
                     entered.count_down();
                     for (;;) {
                         ::pause();
                     }
                 }).detach();
             }
             entered.wait();
             box.Enter("frei0r.glow");
         },
         {"frei0r.glow", "ladspa.1413", "frei0r.curves"}},
        {"ended in a call without a word",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             ::_exit(3);
         },
         {"frei0r.glow"}},
        {"crashed in a call, and that is reported",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             BlackBox::MarkCrashReported();
             ::signal(SIGABRT, SIG_DFL);
             std::abort();
         },
         {}},
        {"left a child behind that runs on and runs plug-ins",
         [](BlackBox& box) {
             box.Enter("frei0r.glow");
             LeaveChildBehind(box);
         },
         {"frei0r.glow"}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        TemporaryFolder folder;
        {
            Victim victim(folder, test.run);
            if (victim.IsReady()) {
                EXPECT_THAT(SuspectNames(folder), IsEmpty()) << "its process lives";
                EXPECT_EQ(FilesIn(folder).size(), 1u);
            }
        }
        EXPECT_THAT(SuspectNames(folder), testing::UnorderedElementsAreArray(test.suspects));
        EXPECT_THAT(FilesIn(folder), IsEmpty());
        EXPECT_THAT(SuspectNames(folder), IsEmpty()) << "told once";
    }
    ::close(sHold[0]);
    ::close(sHold[1]);
}

TEST(BlackBox, GoesAtACleanEndAndNotWithAChild)
{
    TemporaryFolder folder;
    {
        BlackBox box(folder.UTF16("state/blackbox"));
        box.Enter("frei0r.glow");
        EXPECT_THROW(BlackBox(folder.UTF16("other")), kiocore::kio_exception) << "one at a time";
        const auto files = [&] {
            return std::distance(std::filesystem::directory_iterator(folder / "state/blackbox"), {});
        };
        ASSERT_EQ(files(), 1);
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            box.~BlackBox();
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
        EXPECT_EQ(files(), 1);
        EXPECT_THAT(ReadSuspects(folder.UTF16("state/blackbox")), IsEmpty()) << "also to its own process";
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder / "state/blackbox"));
    BlackBox::MarkCrashReported(); // without a box
    BlackBox next(folder.UTF16("state/blackbox"));
}

TEST(BlackBox, FailsAsAWholeAndLeavesNothingBehind)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "");
    EXPECT_THROW(BlackBox(folder.UTF16("file/below")), kiocore::file_exception);
    {
        support::FaultyFileCalls calls;
        calls.FailCalls("Rename", EACCES);
        EXPECT_THROW(BlackBox(folder.UTF16("boxes")), kiocore::file_exception);
    }
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0); // as a full disk: no room for the whole of it
    EXPECT_THROW(BlackBox(folder.UTF16("boxes")), kiocore::file_exception);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "boxes"));
    BlackBox box(folder.UTF16("boxes"));
}

/// The bytes of a box in whose first slot a plug-in runs.
std::string BoxBytes(std::string_view inBootID = "another start")
{
    auto box = std::make_unique<BoxLayout>();
    BeginBox(*box, 17, 1, inBootID);
    box->table.slots[0].Push(0, "frei0r.glow", 0);
    return {reinterpret_cast<const char*>(box.get()), sizeof(BoxLayout)};
}

TEST(ReadSuspects, TakesDamagedBoxesForNothingAndRemovesThem)
{
    const auto changed = [](std::size_t inAt, unsigned char inByte) {
        std::string bytes = BoxBytes();
        bytes.at(inAt) = static_cast<char>(inByte);
        return bytes;
    };
    constexpr std::size_t kSlot = offsetof(BoxLayout, table);
    constexpr std::size_t kCall = kSlot + offsetof(CallSlot, calls);
    const struct {
        const char* name;
        std::string bytes;
        bool isWhole;
    } kCases[] = {
        {"whole", BoxBytes(), true},
        {"a high depth, of which four are told apart", changed(kSlot + 1, 1), false},
        {"empty", "", false},
        {"one byte short", BoxBytes().substr(1), false},
        {"one byte too many", BoxBytes() + '\0', false},
        {"another kind of file", std::string(sizeof(BoxLayout), 'x'), false},
        {"zero bytes", std::string(sizeof(BoxLayout), '\0'), false},
        {"another version", changed(offsetof(BoxHeader, version), 2), false},
        {"another process number", changed(offsetof(BoxHeader, processNumber), 18), false},
        {"too long a name", changed(kCall + offsetof(CallEntry, nameSize), 200), false},
        {"no name", changed(kCall + offsetof(CallEntry, nameSize), 0), false},
        {"a zero byte in the name", changed(kCall + offsetof(CallEntry, name), 0), false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        TemporaryFolder folder;
        WriteFile(folder / "17-1.box", test.bytes);
        EXPECT_EQ(SuspectNames(folder).size(), test.isWhole ? 1u : 0u);
        EXPECT_THAT(FilesIn(folder), IsEmpty());
    }
}

TEST(ReadSuspects, TellsWhetherTheMachineWentDown)
{
    TemporaryFolder folder;
    WriteFile(folder / "17-1.box", BoxBytes());
    auto suspects = ReadSuspects(folder.UTF16());
    ASSERT_EQ(suspects.size(), 1u);
    EXPECT_TRUE(suspects[0].machineWentDown);
    Victim(folder, [](BlackBox& box) { box.Enter("a"); });
    suspects = ReadSuspects(folder.UTF16());
    ASSERT_EQ(suspects.size(), 1u);
    EXPECT_FALSE(suspects[0].machineWentDown);
}

TEST(ReadSuspects, LeavesAloneWhatIsNoBoxOfItsOwn)
{
    TemporaryFolder folder;
    WriteFile(folder / "elsewhere", BoxBytes());
    std::filesystem::create_symlink(folder / "elsewhere", folder / "link.box");
    std::filesystem::create_directory(folder / "folder.box");
    ASSERT_EQ(::mkfifo((folder / "pipe.box").c_str(), 0600), 0);
    WriteFile(folder / "1-1.box.kiotmp-1-1", "young");
    WriteFile(folder / "2-2.box.kiotmp-2-2", "old");
    const timespec times[2] = {{0, UTIME_OMIT}, {1000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "2-2.box.kiotmp-2-2").c_str(), times, 0), 0);
    EXPECT_THAT(SuspectNames(folder), IsEmpty());
    EXPECT_THAT(FilesIn(folder), UnorderedElementsAre("elsewhere", "link.box", "folder.box", "pipe.box",
                                                      "1-1.box.kiotmp-1-1"));
    EXPECT_THAT(ReadSuspects(folder.UTF16("missing")), IsEmpty());
}

TEST(ReadSuspects, KeepsABoxUntilItsSuspectsAreKept)
{
    TemporaryFolder folder;
    WriteFile(folder / "17-1.box", BoxBytes());
    EXPECT_THROW(ReadSuspects(folder.UTF16(), [](const auto&) { throw std::runtime_error("disk full"); }),
                 std::runtime_error);
    std::vector<std::string> kept;
    ReadSuspects(folder.UTF16(), [&](const std::vector<Suspect>& suspects) {
        kept.push_back(suspects.at(0).matchName);
        EXPECT_THAT(SuspectNames(folder), IsEmpty()) << "whoever else asks now";
    });
    EXPECT_THAT(kept, ElementsAre("frei0r.glow"));
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

TEST(ReadSuspects, TellsOfEachBoxToOneOfSeveralReaders)
{
    TemporaryFolder folder;
    constexpr int kBoxes = 100;
    for (int i = 0; i < kBoxes; ++i) {
        WriteFile(folder / (std::to_string(i) + "-1.box"), BoxBytes());
    }
    std::atomic<int> told{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] { told += static_cast<int>(ReadSuspects(folder.UTF16()).size()); });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(told, kBoxes);
}

} // namespace
} // namespace trhost::effects
