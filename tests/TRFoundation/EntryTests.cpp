#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <TR/MediaAcceleratorDatabaseEntry.h>

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using support::TemporaryFolder;
using support::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;
using TR::MediaAcceleratorDatabaseEntry;
using TR::MediaAcceleratorItem;
using EntryRef = InterfaceRef<MediaAcceleratorDatabaseEntry>;

const Guid kState("00000000-0000-0000-0000-000000000001");
const Guid kOtherState("00000000-0000-0000-0000-000000000002");

MediaAcceleratorItem Item(const UTF16String& inKey, const UTF16String& inPath,
                          const UTF16String& inWinPath = {}, bool inCanBeCopied = false)
{
    return {inPath, inWinPath, inKey, inCanBeCopied};
}

std::vector<UTF16String> PathsOf(const EntryRef& inEntry, const UTF16String& inStream)
{
    std::vector<MediaAcceleratorItem> items;
    inEntry->GetItems(inStream, items);
    std::vector<UTF16String> paths;
    for (const auto& item : items) {
        paths.push_back(item.path);
    }
    return paths;
}

TEST(MediaAcceleratorDatabaseEntry, FlagsFollowEachOperation)
{
    const TemporaryFolder folder;
    const UTF16String file = WriteFile(folder / "a", "a");
    const struct {
        const char* name;
        std::function<void(MediaAcceleratorDatabaseEntry&)>
            operation; // on an entry with item 0/k, state kState
        bool expectedUpToDate;
        bool expectedModified;
    } kCases[] = {
        {"nothing", [](auto&) {}, true, true},
        {"same content state", [](auto& entry) { entry.SetContentState(kState); }, true, true},
        {"another content state", [](auto& entry) { entry.SetContentState(kOtherState); }, false, true},
        {"a stream invalidated", [](auto& entry) { entry.Invalidate(0); }, false, true},
        {"an unknown stream invalidated", [](auto& entry) { entry.Invalidate(1); }, true, true},
        {"invalidated, then added to",
         [](auto& entry) {
             entry.Invalidate(0);
             entry.AddItem(1u, Item(u"k", u"/new"), true);
         },
         true, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(kState);
        entry->AddItem(0u, Item(u"k", file), true);
        test.operation(*entry);
        EXPECT_EQ(entry->IsUpToDate(), test.expectedUpToDate);
        EXPECT_EQ(entry->IsModified(), test.expectedModified);
        WriteFile(folder / "a", "a");
    }
}

TEST(MediaAcceleratorDatabaseEntry, IsCreatedUpToDateOnlyForTheZeroState)
{
    EXPECT_TRUE(MediaAcceleratorDatabaseEntry::Create(Guid())->IsUpToDate());
    EXPECT_FALSE(MediaAcceleratorDatabaseEntry::Create(kState)->IsUpToDate());
    EXPECT_FALSE(MediaAcceleratorDatabaseEntry::Create(kState)->IsModified());
}

TEST(MediaAcceleratorDatabaseEntry, NumbersAndTextsMeetTheSameStream)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(3u, Item(u"k", u"/a"), true);
    entry->AddItem(u"17", Item(u"k", u"/b"), true);
    EXPECT_THAT(PathsOf(entry, u"3"), ElementsAre(u"/a"));
    std::vector<MediaAcceleratorItem> items;
    entry->GetItems(17u, items);
    entry->GetItems(3u, items); // appends
    EXPECT_EQ(items.size(), 2u);
    std::vector<UTF16String> streams;
    entry->GetStreamIDs(streams);
    EXPECT_THAT(streams, ElementsAre(u"17", u"3")); // code unit order
    EXPECT_EQ(entry->GetStreamCount(), 2u);
    EXPECT_EQ(entry->GetItemCount(), 2u);
}

TEST(MediaAcceleratorDatabaseEntry, ReplacesByPathAndKeepsTheOldWindowsPath)
{
    const struct {
        const char* name;
        MediaAcceleratorItem added;
        bool replace;
        MediaAcceleratorItem expected;
    } kCases[] = {
        {"same path changes nothing", Item(u"k", u"/a", u"C:\\new", true), true,
         Item(u"k", u"/a", u"C:\\old", false)},
        {"another path keeps the Windows path", Item(u"k", u"/b", u"C:\\new", true), true,
         Item(u"k", u"/b", u"C:\\old", true)},
        {"without replace the old one stays", Item(u"k", u"/b", u"C:\\new", true), false,
         Item(u"k", u"/a", u"C:\\old", false)},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
        entry->AddItem(0u, Item(u"k", u"/a", u"C:\\old", false), true);
        entry->AddItem(0u, test.added, test.replace);
        std::vector<MediaAcceleratorItem> items;
        entry->GetItems(0u, items);
        ASSERT_EQ(items.size(), 1u);
        EXPECT_EQ(items[0].path, test.expected.path);
        EXPECT_EQ(items[0].winPath, test.expected.winPath);
        EXPECT_EQ(items[0].canBeCopied, test.expected.canBeCopied);
    }
}

TEST(MediaAcceleratorDatabaseEntry, DeletesEveryStreamsFilesBeforeTheNextItemWhenOutOfDate)
{
    const TemporaryFolder folder;
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, Item(u"k", WriteFile(folder / "a", "a")), true);
    entry->AddItem(1u, Item(u"k", WriteFile(folder / "b", "b")), true);
    const UTF16String canary = WriteFile(folder / "canary", "c");

    entry->Invalidate(0);
    EXPECT_THAT(PathsOf(entry, u"1"), IsEmpty()); // out of date: nothing is handed out
    EXPECT_TRUE(std::filesystem::exists(folder / "b"));
    entry->AddItem(2u, Item(u"k", canary), true);

    EXPECT_FALSE(std::filesystem::exists(folder / "a"));
    EXPECT_FALSE(std::filesystem::exists(folder / "b"));
    EXPECT_TRUE(std::filesystem::exists(folder / "canary"));
    EXPECT_EQ(entry->GetItemCount(), 1u);
}

TEST(MediaAcceleratorDatabaseEntry, DeletesNothingButRegularFiles)
{
    const TemporaryFolder folder;
    const UTF16String target = WriteFile(folder / "target", "t");
    std::filesystem::create_symlink(folder / "target", folder / "link");
    std::filesystem::create_directory(folder / "sub");
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, Item(u"link", folder.UTF16("link")), true);
    entry->AddItem(0u, Item(u"folder", folder.UTF16("sub")), true);
    entry->AddItem(0u, Item(u"gone", folder.UTF16("gone")), true);
    entry->AddItem(0u, Item(u"no path", u""), true);

    entry->SetContentState(kState);
    entry->Clean();

    EXPECT_EQ(entry->GetStreamCount(), 0u);
    EXPECT_TRUE(entry->IsModified());
    EXPECT_FALSE(entry->IsUpToDate());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_TRUE(std::filesystem::exists(folder / "target"));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "sub"));
}

TEST(MediaAcceleratorDatabaseEntry, ForgetsNothingWhenAFileCannotBeDeleted)
{
    const TemporaryFolder folder;
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, Item(u"k", WriteFile(folder / "a", "a")), true);
    entry->SetContentState(kState);
    support::FaultyFileCalls calls;
    calls.FailCalls("Unlink", EACCES);
    EXPECT_THROW(entry->Clean(), kiocore::file_exception);
    EXPECT_EQ(entry->GetItemCount(), 1u);
}

TEST(MediaAcceleratorDatabaseEntry, FindingTouchesTheAccessTimeOnly)
{
    const TemporaryFolder folder;
    const UTF16String file = WriteFile(folder / "a", "a");
    const timespec old[2] = {{1000, 1}, {2000, 123456789}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder / "a").c_str(), old, 0), 0);
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, Item(u"k", file), true);
    entry->AddItem(0u, Item(u"empty", u""), true);
    entry->Invalidate(0);

    UTF16String path = u"before";
    EXPECT_EQ(entry->FindItem(1u, u"k", path), -1);
    EXPECT_EQ(entry->FindItem(0u, u"other", path), -1);
    EXPECT_EQ(path, u"before");
    EXPECT_EQ(entry->FindItem(0u, u"empty", path), -1);
    EXPECT_EQ(entry->FindItem(0u, u"k", path), 0); // also when out of date
    EXPECT_EQ(path, file);

    struct stat status {};
    ASSERT_EQ(stat((folder / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 2000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123456789);
    EXPECT_GT(status.st_atim.tv_sec, 1000000000);
}

TEST(MediaAcceleratorDatabaseEntry, AFailedTouchIsTracedAndFoundAllTheSame)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->AddItem(0u, Item(u"k", u"/no/such/file"), true);
    UTF16String path;
    EXPECT_EQ(entry->FindItem(0u, u"k", path), 0); // silent while the channel is off
    const support::TraceRecorder trace("MCDB", 8);
    EXPECT_EQ(entry->FindItem(0u, u"k", path), 0);
    EXPECT_THAT(
        trace.Lines(),
        ElementsAre(
            "MediaAcceleratorDatabaseEntry::FindItem - FileUtils UpdateFileAccessTime threw an exception "
            "for path: /no/such/file\n"));
}

TEST(MediaAcceleratorDatabaseEntry, ACloneIsItsOwn)
{
    const EntryRef entry = MediaAcceleratorDatabaseEntry::Create(Guid());
    entry->SetOriginal(u"/media/a.wav");
    entry->AddItem(0u, Item(u"k", u"/a"), true);
    const EntryRef clone = entry->Clone();
    clone->AddItem(1u, Item(u"k", u"/b"), true);
    clone->SetContentState(kState);
    EXPECT_EQ(entry->GetItemCount(), 1u);
    EXPECT_TRUE(entry->IsUpToDate());
    EXPECT_EQ(clone->GetItemCount(), 2u);
    EXPECT_EQ(clone->GetOriginal(), u"/media/a.wav");
    EXPECT_FALSE(clone == entry);
}

} // namespace
