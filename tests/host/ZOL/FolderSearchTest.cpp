#include "support/TemporaryFolder.h"

#include <ZOL/File.h>
#include <ZOL/FolderSearch.h>

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace ZOL {
namespace {

namespace fs = std::filesystem;
using kiocore::filesupport::FromNative;
using support::TemporaryFolder;
using support::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;

/// What was found, below the root.
std::vector<std::string> Below(const TemporaryFolder& inFolder, const std::vector<UTF16String>& inPaths)
{
    std::vector<std::string> below;
    const UTF16String root = inFolder.UTF16() + u'/';
    for (const UTF16String& path : inPaths) {
        EXPECT_TRUE(path.starts_with(root)) << kiocore::utility::ToUTF8(path);
        below.push_back(kiocore::filesupport::ToNative(UTF16View(path).substr(root.size())));
    }
    return below;
}

std::vector<UTF16String> Paths(const FileList& inFiles)
{
    std::vector<UTF16String> paths;
    UTF16String path;
    for (std::size_t i = 0; i < inFiles.Size(); ++i) {
        inFiles.GetPath(i, path);
        EXPECT_EQ(inFiles.GetPath(i), path);
        paths.push_back(path);
    }
    return paths;
}

TEST(FolderSearch, FindsByExtensionInAllSubfolders)
{
    TemporaryFolder folder;
    for (const char* name :
         {"a.cfa", "B.CFA", "c.pek", "cfa", "d.cfa.tmp", ".cfa", "x.Cfa/inside.txt", "s/t/e.cFa"}) {
        WriteFile(folder / name, "x");
    }
    EXPECT_THAT(Below(folder, Paths(FolderSearch::FindFiles(folder.UTF16(), {u".cfa"}))),
                ElementsAre("B.CFA", "a.cfa", "s/t/e.cFa"));
    EXPECT_THAT(Below(folder, Paths(FolderSearch::FindFiles(folder.UTF16() + u'/', {u".PEK", u".txt"}))),
                ElementsAre("c.pek", "x.Cfa/inside.txt"));
    EXPECT_EQ(FolderSearch::FindFiles(folder.UTF16(), {}).Size(), 8u);
    EXPECT_TRUE(FolderSearch::FindFiles(folder.UTF16(), {u".wav"}).IsEmpty());
}

TEST(FolderSearch, AMissingRootHasNoFiles)
{
    TemporaryFolder folder;
    const UTF16String file = WriteFile(folder / "file", "x");
    const UTF16String roots[] = {folder.UTF16("missing"), file, u"", UTF16String(32768, u'x')};
    for (const UTF16String& root : roots) {
        EXPECT_TRUE(FolderSearch::FindFiles(root, {}).IsEmpty());
        EXPECT_THROW(FolderSearch::FindFolders(root), kiocore::file_exception);
    }
    EXPECT_TRUE(FileList().IsEmpty());
}

TEST(FolderSearch, SortsByTheUnitsOfTheWholePath)
{
    const std::vector<std::string> names = {
        "a-b/c",
        "a.txt",
        "a/z",
        "a/b/c",
        "a/b-c",
        "a0",
        "A",
        "\xC3\xA4",
        "\xC3\xA4/x",
        "\xC3\x41",
        "\xEF\xBD\x81",
        "\xEE\x80\x80",
        "\xF0\x9F\x8E\xAC",
        "\xFF",
        "\xE9\x9F",
        "\xE9\x9F\xB3",
        "\xE9\x9F\xB3.b",
        "\xE9\x9F\xB4",
        "a\x80\x80\x80\x80\x81",
        "a\x80\x80\x80\x80\x82",
        "\xF0\x9F\x8E\xAD/x",
        "\xF0\x9F\x8E\xAD.x",
        "\xF0\x9F\x8E",
        "\xF0\x9F\x8F\xAC",
    };
    TemporaryFolder folder;
    std::vector<UTF16String> expected;
    for (const std::string& name : names) {
        const fs::path path = folder.Path() / name;
        if (fs::is_directory(path)) {
            continue;
        }
        if (fs::is_regular_file(path.parent_path())) {
            fs::remove(path.parent_path());
            std::erase(expected, FromNative(path.parent_path().native()));
        }
        WriteFile(path, "x");
        expected.push_back(FromNative(path.native()));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Paths(FolderSearch::FindFiles(folder.UTF16(), {})), expected);
    EXPECT_THAT(Paths(FolderSearch::FindFiles(folder.UTF16(), {}, SearchOrder::kOnDisk)),
                testing::UnorderedElementsAreArray(expected));
}

TEST(FolderSearch, OnDiskKeepsFoldersTogetherInTheOrderOfTheirFiles)
{
    TemporaryFolder folder;
    for (const char* name : {"z", "m", "a", "m-folder/z", "m-folder/a"}) {
        WriteFile(folder / name, "x");
    }
    const auto numberOf = [](const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_ino;
    };
    const std::vector<UTF16String> paths =
        Paths(FolderSearch::FindFiles(folder.UTF16(), {}, SearchOrder::kOnDisk));
    ASSERT_EQ(paths.size(), 5u);
    for (const std::size_t i : {1u, 2u, 4u}) {
        const std::string before = kiocore::filesupport::ToNative(paths[i - 1]);
        const std::string after = kiocore::filesupport::ToNative(paths[i]);
        EXPECT_EQ(fs::path(before).parent_path(), fs::path(after).parent_path());
        EXPECT_LT(numberOf(before), numberOf(after));
    }
}

TEST(FolderSearch, FollowsALinkAtTheRootAndNoneBelow)
{
    TemporaryFolder outside;
    WriteFile(outside / "sub/canary.cfa", "canary");
    TemporaryFolder folder;
    WriteFile(folder / "real/found.cfa", "x");
    fs::create_symlink(outside / "sub/canary.cfa", folder / "real/linked.cfa");
    fs::create_directory_symlink(outside / "sub", folder / "real/linked folder");
    fs::create_directory_symlink(folder.Path(), folder / "real/loop");
    fs::create_symlink(folder / "real/self", folder / "real/self");
    fs::create_directory_symlink(folder / "real", folder / "root");
    ASSERT_EQ(::mkfifo((folder / "real/pipe.cfa").c_str(), 0600), 0);
    for (const char* root : {"root", "root/"}) {
        EXPECT_THAT(Below(folder, Paths(FolderSearch::FindFiles(folder.UTF16(root), {u".cfa"}))),
                    ElementsAre("root/found.cfa"));
        EXPECT_THAT(FolderSearch::FindFolders(folder.UTF16(root)), IsEmpty());
    }
}

TEST(FolderSearch, KeepsOddNames)
{
    TemporaryFolder folder;
    const std::vector<std::string> names = {std::string(251, 'n') + ".cfa", "\x01\n.cfa",
                                            "\xF0\x9F\x8E\xAC.cfa", "\xFF\xC0.cfa"};
    for (const std::string& name : names) {
        WriteFile(folder.Path() / name, "x");
    }
    const FileList files = FolderSearch::FindFiles(folder.UTF16(), {u".cfa"});
    EXPECT_THAT(Below(folder, Paths(files)), testing::UnorderedElementsAreArray(names));
    for (const UTF16String& path : Paths(files)) {
        EXPECT_EQ(File::Delete(path), 0) << kiocore::utility::ToUTF8(path);
    }
}

/// The superuser may list everything, so a test that needs to be refused runs as somebody else.
class ScOrdinaryUser {
public:
    ScOrdinaryUser() : mUser(::geteuid())
    {
        static constexpr uid_t kNobody = 65534;
        EXPECT_TRUE(mUser != 0 || ::seteuid(kNobody) == 0);
    }
    ~ScOrdinaryUser() { EXPECT_EQ(::seteuid(mUser), 0); }
    ScOrdinaryUser(const ScOrdinaryUser&) = delete;
    ScOrdinaryUser& operator=(const ScOrdinaryUser&) = delete;

private:
    const uid_t mUser;
};

TEST(FolderSearch, PassesOverFoldersThatMayNotBeListed)
{
    TemporaryFolder folder;
    WriteFile(folder / "closed/hidden", "x");
    WriteFile(folder / "open/found", "x");
    fs::permissions(folder.Path(), fs::perms::all);
    fs::permissions(folder / "closed", fs::perms::none);
    const ScOrdinaryUser user;
    EXPECT_THAT(Below(folder, Paths(FolderSearch::FindFiles(folder.UTF16(), {}))), ElementsAre("open/found"));
    EXPECT_THROW(FolderSearch::FindFolders(folder.UTF16()), kiocore::file_exception);
}

/// Nested deeper than a path may be long, so that only steps from folder to folder reach its end.
class DeepTree {
public:
    static constexpr int kDepth = 200;
    explicit DeepTree(const TemporaryFolder& inFolder)
    {
        int folder = ::open(inFolder.Path().c_str(), O_RDONLY | O_DIRECTORY);
        for (int i = 0; i < kDepth; ++i) {
            AddFile(folder, "a");
            AddFile(folder, "z");
            EXPECT_EQ(::mkdirat(folder, kName, 0700), 0);
            const int next = ::openat(folder, kName, O_RDONLY | O_DIRECTORY);
            ::close(folder);
            folder = next;
        }
        ::close(folder);
    }

private:
    static constexpr const char* kName = "folder with a long name";
    static void AddFile(int inFolder, const char* inName)
    {
        ::close(::openat(inFolder, inName, O_WRONLY | O_CREAT, 0600));
    }
};

TEST(FolderSearch, GoesDeeperThanAPathCanBeLong)
{
    TemporaryFolder folder;
    const DeepTree tree(folder);
    const FileList files = FolderSearch::FindFiles(folder.UTF16(), {});
    ASSERT_EQ(files.Size(), 2u * DeepTree::kDepth);
    const std::vector<UTF16String> paths = Paths(files);
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));
    EXPECT_EQ(FolderSearch::FindFolders(folder.UTF16()).size(), std::size_t(DeepTree::kDepth));
    OpenFolder open;
    for (std::size_t i = 0; i < files.Size(); ++i) {
        ASSERT_EQ(File::Delete(files, i, open), 0) << i;
    }
    EXPECT_TRUE(FolderSearch::FindFiles(folder.UTF16(), {}).IsEmpty());
}

TEST(FolderSearch, TellsSubfoldersBeforeTheirParents)
{
    TemporaryFolder folder;
    for (const char* path : {"a/b/c", "a/d", "e-f", "e/g"}) {
        fs::create_directories(folder / path);
    }
    WriteFile(folder / "a/file", "x");
    EXPECT_THAT(Below(folder, FolderSearch::FindFolders(folder.UTF16())),
                ElementsAre("a/b/c/", "a/b/", "a/d/", "a/", "e-f/", "e/g/", "e/"));
}

TEST(FolderSearch, TakesAtMost64BytesAFile)
{
    static constexpr int kFiles = 2000;
    TemporaryFolder folder;
    const std::string ending = std::string(36, '-') + ".cfa";
    for (int i = 0; i < kFiles; ++i) {
        char number[8];
        std::snprintf(number, sizeof(number), "%05d", i);
        std::ofstream(folder / (number + ending));
    }
    const auto inUse = [] {
        const auto info = ::mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t before = inUse();
    const FileList files = FolderSearch::FindFiles(folder.UTF16(), {u".cfa"});
    const std::size_t used = inUse() - before;
    ASSERT_EQ(files.Size(), std::size_t(kFiles));
    EXPECT_EQ(files.GetPath(1711), folder.UTF16("01711" + ending));
    // A sanitizer's own allocator does not count here.
    if (used > 0) {
        EXPECT_LE(used, std::size_t(kFiles) * 64 + 48 * 1024) << "the last block of names may be empty";
    }
}

} // namespace
} // namespace ZOL
