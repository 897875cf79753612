#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"
#include "support/TraceRecorder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/FileUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kiocore::utility {
namespace {

using support::TemporaryFolder;

TEST(FileUtils, AddsASeparatorWhereThereIsNone)
{
    EXPECT_EQ(FileUtils::AddTrailingSlash(u"/a"), u"/a/");
    EXPECT_EQ(FileUtils::AddTrailingSlash(u"/a/"), u"/a/");
    EXPECT_EQ(FileUtils::AddTrailingSlash(u"/"), u"/");
    EXPECT_EQ(FileUtils::AddTrailingSlash(u""), u"") << "an empty path must not become the root";
    EXPECT_EQ(FileUtils::BuildPathSpec(u"/a", u"b"), u"/a/b");
    EXPECT_EQ(FileUtils::BuildPathSpec(u"/a/", u"b"), u"/a/b");
    EXPECT_EQ(FileUtils::BuildPathSpec(u"", u"b"), u"b");
}

TEST(FileUtils, TouchingLeavesTheModificationTimeToTheNanosecond)
{
    TemporaryFolder folder;
    const timespec kModified[] = {{-2000000000, 1}, {0, 0}, {1400000000, 123456789}, {5000000000, 999999999}};
    for (const timespec& modified : kModified) {
        const UTF16String path = support::WriteFile(folder / "cache.cfa", "x");
        const timespec times[2] = {{1000, 7}, modified};
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "cache.cfa").c_str(), times, 0), 0);
        struct stat before;
        ASSERT_EQ(::stat((folder / "cache.cfa").c_str(), &before), 0);
        FileUtils::UpdateFileAccessedTime(path);
        struct stat after;
        ASSERT_EQ(::stat((folder / "cache.cfa").c_str(), &after), 0);
        EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
        EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
        EXPECT_GT(after.st_atim.tv_sec, 1000);
    }
}

TEST(FileUtils, TouchingFailsOnlyForRealReasons)
{
    TemporaryFolder folder;
    const UTF16String path = support::WriteFile(folder / "cache.cfa", "x");
    for (const int error : {EPERM, EACCES, EROFS}) {
        support::FaultyFileCalls calls;
        calls.FailCalls("SetTimesOfPath", error);
        EXPECT_NO_THROW(FileUtils::UpdateFileAccessedTime(path)) << std::strerror(error);
    }
    support::FaultyFileCalls calls;
    calls.FailCalls("SetTimesOfPath", EIO);
    EXPECT_THROW(FileUtils::UpdateFileAccessedTime(path), file_exception);
}

TEST(FileUtils, TouchingNamesTheMissingFile)
{
    TemporaryFolder folder;
    try {
        FileUtils::UpdateFileAccessedTime(folder.UTF16("missing"));
        ADD_FAILURE();
    } catch (const file_exception& error) {
        EXPECT_EQ(error.Errno(), ENOENT);
        EXPECT_NE(std::string(error.what()).find("/missing"), std::string::npos) << error.what();
    }
    EXPECT_THROW(FileUtils::UpdateFileAccessedTime(UTF16String(32768, u'/') + u"x"), file_exception);
}

TEST(FileUtils, ExistsFollowsLinks)
{
    TemporaryFolder folder;
    const UTF16String file = support::WriteFile(folder.Path() / "\xFF\n", "x");
    std::filesystem::create_symlink(folder / "nowhere", folder / "dangling");
    std::filesystem::create_symlink(folder / "loop", folder / "loop");
    EXPECT_TRUE(FileUtils::FileOrDirExists(filesupport::FromNative((folder.Path() / "\xFF\n").native())));
    EXPECT_TRUE(FileUtils::FileOrDirExists(folder.UTF16()));
    EXPECT_FALSE(FileUtils::FileOrDirExists(folder.UTF16("dangling")));
    EXPECT_FALSE(FileUtils::FileOrDirExists(folder.UTF16("loop")));
    EXPECT_FALSE(FileUtils::FileOrDirExists(u""));
    EXPECT_FALSE(FileUtils::FileOrDirExists(folder.UTF16() + u'\0'));
}

TEST(FileUtils, ReadOnlyNeedsAFileThatIsThere)
{
    TemporaryFolder folder;
    support::WriteFile(folder / "file", "x");
    EXPECT_FALSE(FileUtils::IsReadOnly(folder.UTF16("file")));
    EXPECT_FALSE(FileUtils::IsReadOnly(folder.UTF16("missing")));
    // Also for the superuser, whom permissions do not stop.
    EXPECT_TRUE(FileUtils::IsReadOnly(u"/proc/version") || ::access("/proc/version", W_OK) == 0);
}

TEST(FileUtils, IsSeenOnTheHostTrace)
{
    TemporaryFolder folder;
    const UTF16String path = support::WriteFile(folder / "file", "x");
    support::TraceRecorder trace("Host");
    FileUtils::UpdateFileAccessedTime(path);
    EXPECT_THAT(trace.Lines(), testing::ElementsAre("kiocore::utility::FileUtils::UpdateFileAccessedTime(\"" +
                                                    (folder / "file").native() + "\")"));
}

} // namespace
} // namespace kiocore::utility
