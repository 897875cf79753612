#include "RegistryFixture.h"

#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <thread>

namespace kiocore::utility {
namespace {

using RegistryBetweenProcesses = RegistryFixture;

/// Starts a process that ends with status 0 when inWork says that all went well.
pid_t Fork(const std::function<bool()>& inWork)
{
    const pid_t process = ::fork();
    if (process == 0) {
        ::_exit(inWork() ? 0 : 1);
    }
    return process;
}

void ExpectSuccess(pid_t inProcess)
{
    int status = -1;
    ASSERT_EQ(::waitpid(inProcess, &status, 0), inProcess);
    EXPECT_EQ(status, 0);
}

/// Adds values that nobody else adds, each to a key that all add to.
bool AddValues(const std::string& inWho, int inCount)
{
    for (int i = 0; i < inCount; ++i) {
        RegistryKey key;
        if (key.Create(kRegistryRoot_CurrentUser, "Shared\\" + std::to_string(i)) != 0 ||
            key.SetStringValue(inWho, inWho) != 0) {
            return false;
        }
    }
    return true;
}

TEST_F(RegistryBetweenProcesses, NoChangeIsLostAmongThreadsOfSeveralProcesses)
{
    static constexpr int kProcesses = 3;
    static constexpr int kThreads = 2;
    static constexpr int kValues = 25;
    Made("Shared"); // so that the children inherit what this process has open by then
    std::vector<pid_t> processes;
    for (int process = 0; process < kProcesses; ++process) {
        processes.push_back(Fork([process] {
            std::vector<std::thread> threads;
            std::vector<int> done(kThreads);
            for (int thread = 0; thread < kThreads; ++thread) {
                threads.emplace_back([&done, process, thread] {
                    const std::string who = std::to_string(process) + "." + std::to_string(thread);
                    done[static_cast<std::size_t>(thread)] = AddValues(who, kValues);
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
            return done == std::vector<int>(kThreads, 1);
        }));
    }
    EXPECT_TRUE(AddValues("parent", kValues));
    for (const pid_t process : processes) {
        ExpectSuccess(process);
    }
    for (int i = 0; i < kValues; ++i) {
        EXPECT_EQ(Values(Made("Shared\\" + std::to_string(i))).size(), kProcesses * kThreads + 1u) << i;
    }
}

TEST_F(RegistryBetweenProcesses, AnotherProcessesChangesAreSeenAtOnce)
{
    RegistryKey key = Made("A");
    ASSERT_EQ(key.SetUInt32Value("x", 1), 0);
    for (std::uint32_t expected = 2; expected < 6; ++expected) {
        ExpectSuccess(Fork([&] { return key.SetUInt32Value("x", expected) == 0; }));
        std::uint32_t found = 0;
        EXPECT_EQ(key.GetUInt32Value("x", found), 0);
        EXPECT_EQ(found, expected);
    }
    ExpectSuccess(Fork([] { return Made("").DeleteKey("A") == 0; }));
    EXPECT_EQ(key.SetUInt32Value("x", 1), -1) << "the key is gone";
}

TEST_F(RegistryBetweenProcesses, ABatchIsMadeOnTopOfWhatOthersDidMeanwhile)
{
    RegistryKey key = Made("A");
    RegistryKey deleted = Made("B");
    ScRegistryBatch batch;
    ASSERT_EQ(key.SetUInt32Value("mine", 1), 0);
    ASSERT_EQ(key.SetUInt32Value("both", 1), 0);
    ASSERT_EQ(deleted.SetUInt32Value("mine", 1), 0);
    // The child works on a thread that has no batch.
    ExpectSuccess(Fork([&] {
        bool done = false;
        std::thread([&] {
            done = key.SetUInt32Value("theirs", 2) == 0 && key.SetUInt32Value("both", 2) == 0 &&
                   Made("").DeleteKey("B") == 0;
        }).join();
        return done;
    }));
    EXPECT_EQ(Values(key), (std::vector<std::string>{"both", "mine", "theirs"})) << "seen before it is saved";
    EXPECT_EQ(batch.Finish(), 0);
    EXPECT_EQ(Values(key), (std::vector<std::string>{"both", "mine", "theirs"}));
    std::uint32_t number = 0;
    EXPECT_EQ(key.GetUInt32Value("both", number), 0);
    EXPECT_EQ(number, 1u) << "the later save counts";
    EXPECT_FALSE(Exists("B")) << "deleted after our change, so to speak";
}

TEST_F(RegistryBetweenProcesses, OthersSeeABatchWholeOrNotAtAll)
{
    static constexpr std::uint32_t kRounds = 40;
    const auto setBoth = [](RegistryKey& ioKey, std::uint32_t inValue) {
        ScRegistryBatch batch(filesupport::Durability::kNone);
        return ioKey.SetUInt32Value("a", inValue) == 0 && ioKey.SetUInt32Value("b", inValue) == 0 &&
               batch.Finish() == 0;
    };
    RegistryKey key = Made("A");
    ASSERT_TRUE(setBoth(key, 0));
    const pid_t writer = Fork([&] {
        for (std::uint32_t i = 1; i <= kRounds; ++i) {
            if (!setBoth(key, i)) {
                return false;
            }
        }
        return true;
    });
    // Each of the two never falls; b, read later, could be behind a only while a pair is saved by halves.
    for (std::uint32_t b = 0; b < kRounds;) {
        std::uint32_t a = 0;
        ASSERT_EQ(key.GetUInt32Value("a", a), 0);
        ASSERT_EQ(key.GetUInt32Value("b", b), 0);
        ASSERT_GE(b, a);
        int status = 0;
        if (b < kRounds && ::waitpid(writer, &status, WNOHANG) == writer) {
            ASSERT_EQ(status, 0);
            ASSERT_EQ(key.GetUInt32Value("b", b), 0);
            ASSERT_EQ(b, kRounds) << "the last pair was saved before the writer ended";
            return;
        }
    }
    ExpectSuccess(writer);
}

} // namespace
} // namespace kiocore::utility
