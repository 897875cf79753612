#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/DocumentLock.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <functional>
#include <future>
#include <optional>
#include <thread>

namespace kiocore::filesupport {
namespace {

using support::TemporaryFolder;

const utility::Guid kDocument("102bfb4c-1980-4e77-87df-17b03d5b09db");
const utility::Guid kOtherDocument("102bfb4c-1980-4e77-87df-17b03d5b09dc");

/// A child that lives until it is told to go on, or killed.
class Child {
public:
    /// @param inWork  runs in the child, which calls its argument once and is waited for until then.
    explicit Child(const std::function<void(const std::function<void()>&)>& inWork)
    {
        int ready[2];
        if (::pipe(ready) != 0) {
            throw std::runtime_error("pipe");
        }
        mPid = ::fork();
        if (mPid == 0) {
            ::close(ready[0]);
            inWork([&] { static_cast<void>(!::write(ready[1], "r", 1)); });
            ::_exit(0);
        }
        ::close(ready[1]);
        char byte;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1) << "the child ended before it was ready";
        ::close(ready[0]);
    }
    ~Child()
    {
        if (mPid > 0) {
            Kill();
        }
    }
    void Kill()
    {
        ::kill(mPid, SIGKILL);
        Wait();
    }
    int Wait()
    {
        int status = 0;
        EXPECT_EQ(::waitpid(mPid, &status, 0), mPid);
        mPid = -1;
        return status;
    }

private:
    pid_t mPid;
};

void CountUp(const UTF16String& inLockFile, const std::filesystem::path& inCounter, int inTimes)
{
    for (int i = 0; i < inTimes; ++i) {
        const ScDocumentLock lock(inLockFile, kDocument);
        const int count = std::stoi(support::ReadFile(inCounter));
        std::this_thread::yield();
        std::ofstream(inCounter, std::ios::trunc) << count + 1;
    }
}

TEST(DocumentLock, NoCountIsLostBetweenThreadsOfTwoProcesses)
{
    static constexpr int kThreads = 4;
    static constexpr int kTimes = 100;
    TemporaryFolder folder;
    support::WriteFile(folder / "counter", "0");
    const UTF16String lockFile = folder.UTF16("locks/documents.lock");
    {
        const ScDocumentLock lock(lockFile, kDocument); // leaves a description that the child inherits
    }
    const auto work = [&] {
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] { CountUp(lockFile, folder / "counter", kTimes); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    };
    Child child([&](const auto& ready) {
        ready();
        work();
    });
    work();
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(support::ReadFile(folder / "counter"), std::to_string(2 * kThreads * kTimes));
}

TEST(DocumentLock, OtherDocumentsAndOtherLockFilesDoNotWait)
{
    TemporaryFolder folder;
    const ScDocumentLock lock(folder.UTF16("a.lock"), kDocument);
    const ScDocumentLock otherDocument(folder.UTF16("a.lock"), kOtherDocument);
    const ScDocumentLock otherFile(folder.UTF16("b.lock"), kDocument);
    EXPECT_EQ(std::filesystem::file_size(folder / "a.lock"), 0u);
}

TEST(DocumentLock, AKilledProcessReleasesIt)
{
    TemporaryFolder folder;
    const UTF16String lockFile = folder.UTF16("documents.lock");
    Child child([&](const auto& ready) {
        const ScDocumentLock lock(lockFile, kDocument);
        ready();
        ::pause();
    });
    std::atomic<bool> killed{false};
    std::promise<void> waiting;
    auto waiter = std::async(std::launch::async, [&] {
        waiting.set_value();
        const ScDocumentLock lock(lockFile, kDocument);
        EXPECT_TRUE(killed) << "it was locked while the child held it";
    });
    waiting.get_future().wait();
    killed = true;
    child.Kill();
    waiter.get();
}

TEST(DocumentLock, AChildStartedMeanwhileDoesNotKeepIt)
{
    TemporaryFolder folder;
    const UTF16String lockFile = folder.UTF16("documents.lock");
    std::optional<ScDocumentLock> lock(std::in_place, lockFile, kDocument);
    Child child([](const auto& ready) {
        ready();
        ::pause();
    });
    lock.reset();
    const ScDocumentLock again(lockFile, kDocument);
}

TEST(DocumentLock, ALockFileThatWasDeletedOrReplacedIsMadeAgain)
{
    TemporaryFolder folder;
    const UTF16String lockFile = folder.UTF16("locks/documents.lock");
    const std::function<void()> kChanges[] = {
        [&] { std::filesystem::remove(folder / "locks/documents.lock"); },
        [&] { std::filesystem::remove_all(folder / "locks"); },
        [&] {
            support::WriteFile(folder / "other", "");
            std::filesystem::rename(folder / "other", folder / "locks/documents.lock");
        },
        [&] { std::filesystem::rename(folder / "locks/documents.lock", folder / "moved"); },
    };
    for (const auto& change : kChanges) {
        {
            const ScDocumentLock lock(lockFile, kDocument);
        }
        change();
        const ScDocumentLock lock(lockFile, kDocument);
        ASSERT_TRUE(std::filesystem::exists(folder / "locks/documents.lock"));
        // Another process, which knows nothing of the old file, is excluded: it is still waiting when killed.
        Child child([&](const auto& ready) {
            ready();
            const ScDocumentLock theirs(lockFile, kDocument);
            std::ofstream(folder / "locked by both");
        });
        child.Kill();
        EXPECT_FALSE(std::filesystem::exists(folder / "locked by both"));
    }
}

TEST(DocumentLock, ManyAtOnceLeaveFewDescriptorsOpen)
{
    TemporaryFolder folder;
    const auto countOpen = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = countOpen();
    {
        std::vector<std::unique_ptr<ScDocumentLock>> locks;
        for (int i = 0; i < 100; ++i) {
            locks.push_back(
                std::make_unique<ScDocumentLock>(folder.UTF16("a.lock"), utility::Guid::CreateUnique()));
        }
    }
    EXPECT_LE(countOpen(), before + 20);
    support::FaultyFileCalls calls;
    {
        const ScDocumentLock lock(folder.UTF16("a.lock"), kDocument);
    }
    EXPECT_TRUE(calls.Names().empty()) << "an open description is used again";
}

TEST(DocumentLock, SaysWhichFileCannotBeMade)
{
    TemporaryFolder folder;
    support::WriteFile(folder / "file", "");
    const UTF16String paths[] = {folder.UTF16("file/documents.lock"), u"", folder.UTF16("")};
    for (const UTF16String& path : paths) {
        EXPECT_THROW(ScDocumentLock(path, kDocument), file_exception);
    }
    support::FaultyFileCalls calls;
    calls.FailCalls("Open", EROFS);
    try {
        const ScDocumentLock lock(folder.UTF16("locked"), kDocument);
        ADD_FAILURE() << "it was locked without a file";
    } catch (const file_exception& error) {
        EXPECT_EQ(error.Errno(), EROFS);
        EXPECT_NE(std::string(error.what()).find("/locked"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace kiocore::filesupport
