#include <MF/FileManager.h>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <stdexcept>

namespace MF {
namespace {

constexpr kiocore::UTF16View kPath = u"/cache/clip.cfa";

TEST(FileManager, AFileThatNobodyHoldsIsClosed)
{
    EXPECT_TRUE(FileManager::TryToCloseFileWithoutBlocking(kPath));
    int asked = 0;
    const FileManager::ScOpenFile other(u"/cache/other.cfa", [&] { return ++asked, false; });
    EXPECT_TRUE(FileManager::TryToCloseFileWithoutBlocking(kPath));
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(FileManager::IsOpen(u"/cache/other.cfa"));
}

TEST(FileManager, ClosedWhenAllWhoHoldItHaveClosed)
{
    bool lets = false;
    int asked = 0;
    const FileManager::ScOpenFile willing(kPath, [&] { return ++asked, true; });
    const FileManager::ScOpenFile unwilling(kPath, [&] { return lets; });
    const FileManager::ScOpenFile throwing(u"/cache/throwing.cfa",
                                           []() -> bool { throw std::runtime_error("busy"); });
    EXPECT_FALSE(FileManager::TryToCloseFileWithoutBlocking(kPath));
    EXPECT_TRUE(FileManager::IsOpen(kPath));
    EXPECT_FALSE(FileManager::TryToCloseFileWithoutBlocking(u"/cache/throwing.cfa"));
    lets = true;
    EXPECT_TRUE(FileManager::TryToCloseFileWithoutBlocking(kPath));
    EXPECT_FALSE(FileManager::IsOpen(kPath));
    EXPECT_EQ(asked, 1) << "what is closed is not asked again";
}

TEST(FileManager, ACloserMayDestroyItsRegistrationAndAskTheManager)
{
    std::optional<FileManager::ScOpenFile> open;
    open.emplace(kPath, [&] {
        EXPECT_TRUE(FileManager::IsOpen(kPath));
        EXPECT_FALSE(FileManager::TryToCloseFileWithoutBlocking(kPath)) << "it is being closed";
        open.reset();
        return true;
    });
    EXPECT_TRUE(FileManager::TryToCloseFileWithoutBlocking(kPath));
    EXPECT_FALSE(open.has_value());
    EXPECT_FALSE(FileManager::IsOpen(kPath));
}

TEST(FileManager, NobodyWaitsForACloserButItsOwner)
{
    std::promise<void> entered;
    std::promise<void> mayReturn;
    auto open = std::make_unique<FileManager::ScOpenFile>(kPath, [&] {
        entered.set_value();
        mayReturn.get_future().wait();
        return true;
    });
    auto asking =
        std::async(std::launch::async, [] { return FileManager::TryToCloseFileWithoutBlocking(kPath); });
    entered.get_future().wait();
    EXPECT_FALSE(FileManager::TryToCloseFileWithoutBlocking(kPath))
        << "asked by another thread at this moment";

    std::atomic<bool> returned{false};
    auto destroying = std::async(std::launch::async, [&] {
        open.reset();
        EXPECT_TRUE(returned) << "destroyed while its closer was running";
    });
    returned = true;
    mayReturn.set_value();
    EXPECT_TRUE(asking.get());
    destroying.get();
}

} // namespace
} // namespace MF
