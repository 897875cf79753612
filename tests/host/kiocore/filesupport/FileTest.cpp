#include "support/FaultyFileCalls.h"
#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/filesupport/File.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>

namespace kiocore::filesupport {
namespace {

using support::TemporaryFolder;

/// The error number that a call throws; 0 when it throws none.
template <typename Call>
int ErrnoOf(Call inCall)
{
    try {
        inCall();
    } catch (const file_exception& exception) {
        EXPECT_THAT(exception.what(), testing::HasSubstr("/"));
        return exception.Errno();
    }
    return 0;
}

TEST(File, AnswersAndDeletes)
{
    TemporaryFolder folder;
    support::WriteFile(folder / "full", "12345");
    support::WriteFile(folder / "empty", "");
    std::filesystem::create_directory(folder / "folder");
    std::filesystem::create_symlink(folder / "full", folder / "link");
    std::filesystem::create_symlink(folder / "nowhere", folder / "dangling");
    const struct {
        const char* name;
        bool exists;
        std::optional<std::uint64_t> size;
        int sizeError;
        bool canBeDeleted;
    } kCases[] = {
        {"empty", true, 0, 0, true},
        {"link", true, 5, 0, true},
        {"full", true, 5, 0, true},
        {"dangling", false, {}, ENOENT, true},
        {"missing", false, {}, ENOENT, true},
        {"folder", false, {}, EISDIR, false},
        {"full/below", false, {}, ENOENT, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const File file(folder.UTF16(test.name));
        EXPECT_EQ(file.Exists(), test.exists);
        if (test.size) {
            EXPECT_EQ(file.Size(), *test.size);
        } else {
            EXPECT_EQ(ErrnoOf([&] { file.Size(); }), test.sizeError);
        }
        EXPECT_EQ(ErrnoOf([&] { file.Delete(); }) == 0, test.canBeDeleted);
        EXPECT_EQ(std::filesystem::exists(std::filesystem::symlink_status(folder / test.name)),
                  !test.canBeDeleted);
    }
    const File kept(support::WriteFile(folder / "kept", ""));
    support::FaultyFileCalls calls;
    calls.FailCalls("Unlink", EACCES);
    EXPECT_EQ(ErrnoOf([&] { kept.Delete(); }), EACCES);
}

TEST(File, TellsItsExtensionAsItStands)
{
    const struct {
        const char16_t* path;
        const char16_t* withDot;
    } kCases[] = {
        {u"/a/b.png", u".png"},   {u"/a/b.PNG", u".PNG"},
        {u"/a/b.tar.gz", u".gz"}, {u"/a.b/c", u""},
        {u"/a.b/.hidden", u""},   {u"/a/b.", u"."},
        {u"b.png", u".png"},      {u".png", u""},
        {u"/a/.hidden.x", u".x"}, {u"", u""},
    };
    for (const auto& test : kCases) {
        const File file(test.path);
        const kiocore::UTF16String withDot = test.withDot;
        EXPECT_EQ(file.GetExtension(true), withDot) << kiocore::utility::ToUTF8(test.path);
        EXPECT_EQ(file.GetExtension(false), withDot.empty() ? withDot : withDot.substr(1))
            << kiocore::utility::ToUTF8(test.path);
    }
}

TEST(Dir, PreferencesLieWhereTheHostSaysOrBelowTheConfigurationFolder)
{
    const char* const before = std::getenv("XDG_CONFIG_HOME");
    const std::string kept = before ? before : "";
    ::setenv("XDG_CONFIG_HOME", "/configuration", 1);
    const struct {
        const char* name;
        const char16_t* shortName;
        const char16_t* set;
        const char16_t* expected;
    } kCases[] = {
        {"default", u"Cutter", u"", u"/configuration/Cutter/"},
        {"a name is one folder's", u"Cutter/../x", u"", u"/configuration/Cutter_.._x/"},
        {"a name that means a folder elsewhere", u"..", u"", u"/configuration/MediaHost/"},
        {"set", u"Cutter", u"/elsewhere", u"/elsewhere/"},
        {"set with a separator", u"Cutter", u"/elsewhere/", u"/elsewhere/"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        config::versioninfo::SetAppShortName(test.shortName);
        Dir::SetPrefDir(test.set);
        EXPECT_EQ(Dir::PrefDir().FullPath(), test.expected);
    }
    config::versioninfo::SetAppShortName(u"MediaHost");
    Dir::SetPrefDir(u"");
    before ? ::setenv("XDG_CONFIG_HOME", kept.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
}

} // namespace
} // namespace kiocore::filesupport
