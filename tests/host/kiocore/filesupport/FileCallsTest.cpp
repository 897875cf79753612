#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/filesupport/FileCalls.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>

namespace kiocore::filesupport {
namespace {

using support::TemporaryFolder;

TEST(FileCalls, MakeFoldersMakesWhatIsMissing)
{
    TemporaryFolder folder;
    support::WriteFile(folder / "file", "");
    std::filesystem::create_directory_symlink(folder.Path(), folder / "link");
    const std::string root = folder.Path().native();
    const struct {
        const char* name;
        std::string path;
        int error;
    } kCases[] = {
        {"one", root + "/a", 0},
        {"again", root + "/a", 0},
        {"several, with separators to spare", root + "//b//c/d//", 0},
        {"through a link", root + "/link/e/f", 0},
        {"below a file", root + "/file/g/h", ENOTDIR},
        {"a file has the name", root + "/file", EEXIST},
        {"empty", "", ENOENT},
        {"too long a name", root + "/i/" + std::string(256, 'n'), ENAMETOOLONG},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        errno = 0;
        const int result = MakeFolders(test.path);
        EXPECT_EQ(result, test.error ? -1 : 0);
        if (test.error) {
            EXPECT_EQ(errno, test.error);
        } else {
            EXPECT_TRUE(std::filesystem::is_directory(test.path));
        }
    }
}

TEST(FileCalls, AReplacementEndsWithItsScope)
{
    support::FaultyFileCalls outer;
    {
        support::FaultyFileCalls inner;
        EXPECT_EQ(&GetFileCalls(), &inner);
    }
    EXPECT_EQ(&GetFileCalls(), &outer);
}

TEST(FileCalls, WriteAllEndsWhenNothingIsTaken)
{
    struct NothingWritten : FileCalls {
        ssize_t Write(int, const void*, std::size_t) override { return 0; }
    } calls;
    const ScReplaceFileCalls replace(calls);
    EXPECT_EQ(WriteAll(STDERR_FILENO, "x", 1), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(WriteAll(STDERR_FILENO, "", 0), 0);
}

} // namespace
} // namespace kiocore::filesupport
