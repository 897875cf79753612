#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <ZOL/File.h>
#include <ZOL/FolderSearch.h>

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace ZOL {
namespace {

namespace fs = std::filesystem;
using kiocore::filesupport::FileTime;
using support::FaultyFileCalls;
using support::ReadFile;
using support::TemporaryFolder;
using support::WriteFile;

/// A folder with one of each: "file", "link" (to file), "folder", "folder link", "loop", "pipe".
class Zoo : public TemporaryFolder {
public:
    Zoo()
    {
        WriteFile(*this / "file", "canary");
        fs::create_symlink(*this / "file", *this / "link");
        WriteFile(*this / "folder/inside", "canary");
        fs::create_directory_symlink(*this / "folder", *this / "folder link");
        fs::create_symlink(*this / "loop", *this / "loop");
        EXPECT_EQ(::mkfifo((*this / "pipe").c_str(), 0600), 0);
    }
};

TEST(File, TellsTheModificationTimeToTheNanosecond)
{
    TemporaryFolder folder;
    const timespec kTimes[] = {
        {-2000000000, 1}, {-1, 999999999}, {0, 0}, {1400000000, 123456789}, {5000000000, 7}};
    for (const timespec& time : kTimes) {
        const UTF16String path = WriteFile(folder / "file", "x");
        const timespec times[2] = {{0, UTIME_OMIT}, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "file").c_str(), times, 0), 0);
        FileTime found = kiocore::filesupport::kNoFileTime;
        ASSERT_EQ(File::GetLastModificationTime(path, found), 0);
        EXPECT_EQ(found, kiocore::filesupport::ToFileTime(time)) << time.tv_sec;
    }
}

TEST(File, AMissingFileHasNoTime)
{
    Zoo zoo;
    const UTF16String paths[] = {zoo.UTF16("missing"), zoo.UTF16("loop"), zoo.UTF16("file/below"), u"",
                                 UTF16String(32768, u'x')};
    for (const UTF16String& path : paths) {
        FileTime time = 42;
        EXPECT_LT(File::GetLastModificationTime(path, time), 0);
        EXPECT_EQ(time, 42u);
    }
}

TEST(File, DeletesRegularFilesOnly)
{
    const struct {
        const char* name;
        const char* path;
        int result;
    } kCases[] = {
        {"a file", "file", 0},
        {"a file through a linked folder", "folder link/inside", 0},
        {"a link", "link", -2},
        {"a folder", "folder", -2},
        {"a linked folder", "folder link", -2},
        {"a loop", "loop", -2},
        {"a pipe", "pipe", -2},
        {"nothing", "missing", -1},
        {"below a file", "file/below", -1},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        Zoo zoo;
        EXPECT_EQ(File::Delete(zoo.UTF16(test.path)), test.result);
        EXPECT_EQ(fs::exists(fs::symlink_status(zoo / test.path)), test.result == -2);
    }
    EXPECT_EQ(File::Delete(u""), -1);
    EXPECT_EQ(File::Delete(UTF16String(32768, u'x')), -1);
}

TEST(File, ARefusedDeleteSaysWhy)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "canary");
    const FileList files = FolderSearch::FindFiles(folder.UTF16(), {});
    FaultyFileCalls calls;
    for (const int error : {EACCES, EPERM, EROFS, EIO}) {
        calls.FailCalls("Unlink", error);
        calls.FailCalls("UnlinkAt", error);
        OpenFolder open;
        for (const bool listed : {false, true}) {
            try {
                const int result = listed ? File::Delete(files, 0, open) : File::Delete(folder.UTF16("file"));
                ADD_FAILURE() << result;
            } catch (const kiocore::file_exception& failure) {
                EXPECT_EQ(failure.Errno(), error);
                EXPECT_NE(std::string(failure.what()).find("/file"), std::string::npos) << failure.what();
            }
        }
    }
    EXPECT_EQ(ReadFile(folder / "file"), "canary");
}

TEST(File, DeletesEveryListedFileAndNothingElse)
{
    Zoo zoo;
    WriteFile(zoo / "deep/a/b/c.pek", "x");
    WriteFile(zoo / "deep/a/canary.txt", "canary");
    WriteFile(zoo.Path() / "deep" / "\xFF\xF0\x9F\x8E\xAC\n" / (std::string(251, 'n') + ".pek"), "x");
    WriteFile(zoo / "top.PEK", "x");
    fs::create_symlink(zoo / "file", zoo / "linked.pek");
    const FileList files = FolderSearch::FindFiles(zoo.UTF16(), {u".pek"});
    ASSERT_EQ(files.Size(), 3u);
    support::TraceRecorder trace("Host");
    OpenFolder open;
    std::vector<std::string> expectedTrace;
    for (std::size_t i = 0; i < files.Size(); ++i) {
        EXPECT_EQ(File::Delete(files, i, open), 0);
        EXPECT_EQ(File::Delete(files, i, open), -1) << "it is gone";
    }
    EXPECT_EQ(trace.CountContaining("ZOL::File::Delete(\"" + zoo.Path().native() + "/top.PEK\")"), 2);
    EXPECT_TRUE(FolderSearch::FindFiles(zoo.UTF16(), {u".pek"}).IsEmpty());
    EXPECT_EQ(ReadFile(zoo / "file"), "canary");
    EXPECT_EQ(ReadFile(zoo / "deep/a/canary.txt"), "canary");
    EXPECT_TRUE(fs::is_symlink(zoo / "linked.pek"));
}

TEST(File, WhatTookTheListedFilesPlaceIsNotFollowed)
{
    Zoo outside;
    TemporaryFolder folder;
    WriteFile(folder / "sub/inside", "x");
    WriteFile(folder / "other/file", "x");
    WriteFile(folder / "third/file", "x");
    const FileList files = FolderSearch::FindFiles(folder.UTF16(), {});
    ASSERT_EQ(files.Size(), 3u); // other/file, sub/inside, third/file
    fs::rename(folder / "sub", folder / "moved");
    fs::create_directory_symlink(outside / "folder", folder / "sub");
    fs::remove(folder / "other/file");
    fs::create_directory(folder / "other/file");
    fs::remove(folder / "third/file");
    fs::create_symlink(outside / "file", folder / "third/file");

    OpenFolder open;
    EXPECT_EQ(File::Delete(files, 0, open), -2) << "a folder has the name now";
    EXPECT_EQ(File::Delete(files, 1, open), -1) << "the folder on the way is a link now";
    EXPECT_EQ(File::Delete(files, 2, open), 0) << "the link goes, not its target";
    EXPECT_EQ(ReadFile(outside / "folder/inside"), "canary");
    EXPECT_EQ(ReadFile(outside / "file"), "canary");
    EXPECT_EQ(ReadFile(folder / "moved/inside"), "x");
}

TEST(File, OneOpenFolderServesSeveralLists)
{
    TemporaryFolder folder;
    WriteFile(folder / "a/one", "x");
    WriteFile(folder / "b/one", "x");
    OpenFolder open;
    for (const char* name : {"a", "b"}) {
        const FileList files = FolderSearch::FindFiles(folder.UTF16(name), {});
        EXPECT_EQ(File::Delete(files, 0, open), 0) << name;
    }
    EXPECT_FALSE(fs::exists(folder / "b/one"));
}

TEST(File, CopiesContentsAndPermissions)
{
    std::string large(3'000'000, 'x');
    large[1'234'567] = '\0';
    const struct {
        const char* name;
        std::string bytes;
        mode_t mode;
        const char* failing; // a call that this system does not have
    } kCases[] = {
        {"empty", "", 0644, nullptr},
        {"small", "bytes", 0600, nullptr},
        {"read-only", "bytes", 0444, nullptr},
        {"large", large, 0755, nullptr},
        {"large, by hand", large, 0644, "CopyRange"},
    };
    for (const auto& test : kCases) {
        for (const bool replaces : {false, true}) {
            SCOPED_TRACE(test.name);
            TemporaryFolder folder;
            const UTF16String from = WriteFile(folder / "from", test.bytes);
            ASSERT_EQ(::chmod((folder / "from").c_str(), test.mode), 0);
            if (replaces) {
                WriteFile(folder / "to", "something longer that was there before");
            }
            FaultyFileCalls calls;
            if (test.failing) {
                calls.FailCalls(test.failing, EXDEV);
                calls.WriteAtMost(100'000);
            }
            EXPECT_EQ(File::Copy(from, folder.UTF16("to")), 0);
            EXPECT_EQ(ReadFile(folder / "to"), test.bytes);
            EXPECT_EQ(fs::status(folder / "to").permissions(), static_cast<fs::perms>(test.mode));
        }
    }
}

TEST(File, AFailedCopyChangesNothing)
{
    TemporaryFolder folder;
    const UTF16String from = WriteFile(folder / "from", std::string(1000, 'x'));
    const UTF16String to = WriteFile(folder / "to", "old");
    std::vector<std::string> names;
    for (const bool byHand : {false, true}) {
        const auto prepare = [byHand](FaultyFileCalls& calls) {
            if (byHand) {
                calls.FailCalls("CopyRange", ENOSYS);
                calls.WriteAtMost(300);
            }
        };
        {
            FaultyFileCalls calls;
            prepare(calls);
            ASSERT_EQ(File::Copy(from, folder.UTF16("other")), 0);
            names = calls.Names();
            fs::remove(folder / "other");
        }
        for (std::size_t failing = 0; failing < names.size(); ++failing) {
            SCOPED_TRACE(names[failing]);
            FaultyFileCalls calls;
            prepare(calls);
            calls.FailCall(static_cast<int>(failing), ENOSPC);
            EXPECT_LT(File::Copy(from, to), 0);
            EXPECT_LT(File::Copy(from, folder.UTF16("missing/folder")), 0);
            EXPECT_EQ(ReadFile(folder / "to"), "old");
            EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2);
        }
    }
}

TEST(File, CopiesOnlyRegularFilesOverRegularFiles)
{
    Zoo zoo;
    for (const char* from : {"folder", "loop", "pipe", "missing"}) {
        EXPECT_LT(File::Copy(zoo.UTF16(from), zoo.UTF16("new")), 0) << from;
        EXPECT_FALSE(fs::exists(zoo / "new"));
    }
    for (const char* to : {"folder", "link", "folder link", "loop", "pipe"}) {
        EXPECT_LT(File::Copy(zoo.UTF16("file"), zoo.UTF16(to)), 0) << to;
    }
    EXPECT_TRUE(fs::is_symlink(zoo / "link"));
    EXPECT_LT(File::Copy(zoo.UTF16("file"), u""), 0);
    EXPECT_EQ(File::Copy(zoo.UTF16("file"), zoo.UTF16("file")), 0) << "onto itself";
    EXPECT_EQ(ReadFile(zoo / "file"), "canary");
    EXPECT_EQ(File::Copy(zoo.UTF16("link"), zoo.UTF16("new")), 0) << "a linked source is read";
    EXPECT_FALSE(fs::is_symlink(zoo / "new"));
}

TEST(Directory, MakesTellsEmptyAndDeletes)
{
    Zoo zoo;
    EXPECT_LT(Directory::CreateOnDisk(zoo.UTF16("x/y"), false), 0);
    EXPECT_EQ(Directory::CreateOnDisk(zoo.UTF16("x/y/"), true), 0);
    EXPECT_EQ(Directory::CreateOnDisk(zoo.UTF16("x/y"), false), 0) << "it is there";
    EXPECT_EQ(Directory::CreateOnDisk(zoo.UTF16("folder link"), false), 0) << "a link to a folder will do";
    EXPECT_LT(Directory::CreateOnDisk(zoo.UTF16("file"), false), 0);
    EXPECT_LT(Directory::CreateOnDisk(zoo.UTF16("file"), true), 0);
    EXPECT_LT(Directory::CreateOnDisk(u"", true), 0);

    EXPECT_TRUE(Directory::IsDirectoryEmpty(zoo.UTF16("x/y")));
    for (const char* path : {"x", "folder", "file", "missing", "loop"}) {
        EXPECT_FALSE(Directory::IsDirectoryEmpty(zoo.UTF16(path))) << path;
    }
    for (const char* path : {"x", "x/", "folder", "folder link", "folder link/", "file", "missing", ""}) {
        EXPECT_LT(Directory::Delete(zoo.UTF16(path)), 0) << path;
    }
    EXPECT_EQ(Directory::Delete(zoo.UTF16("x/y/")), 0);
    EXPECT_EQ(Directory::Delete(zoo.UTF16("x")), 0);
    EXPECT_EQ(ReadFile(zoo / "folder/inside"), "canary");
    EXPECT_TRUE(fs::is_symlink(zoo / "folder link"));
}

} // namespace
} // namespace ZOL
