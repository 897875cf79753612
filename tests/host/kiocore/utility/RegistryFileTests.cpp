#include "RegistryFixture.h"

#include "support/FaultyFileCalls.h"
#include "support/TraceRecorder.h"

#include <kiocore/config/Client.h>

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <optional>

namespace kiocore::utility {
namespace {

using testing::ElementsAre;

using RegistryFileTests = RegistryFixture;

TEST_F(RegistryFileTests, IsAFormThatPeopleCanRead)
{
    RegistryKey key = Made("Software\\Halcyon");
    key.SetUInt32Value("Version", 3);
    key.SetStringValue("Path", "C:\\x");
    EXPECT_EQ(support::ReadFile(mFile), R"({
  "CurrentUser": {
    "Software": {},
    "Software\\Halcyon": {
      "Path": "C:\\x",
      "Version": 3
    }
  },
  "RegistryVersion": 1
}
)");
}

TEST_F(RegistryFileTests, WhatIsNoRegistryIsNeverChanged)
{
    const struct {
        const char* name;
        std::string contents;
        const char* told;
    } kCases[] = {
        {"cut off", R"({"CurrentUser": {"A": {"x": 1)", "line 1"},
        {"another document", "[1, 2]", "an object"},
        {"no version", R"({"CurrentUser": {}})", "no RegistryVersion"},
        {"a newer one", R"({"RegistryVersion": 2, "CurrentUser": {}})", "version 2"},
        {"a member that would be lost", R"({"RegistryVersion": 1, "AllUsers": {}})", "AllUsers"},
        {"a value of another type", R"({"RegistryVersion": 1, "CurrentUser": {"A": {"x": true}}})", "A.x"},
        {"a number too large", R"({"RegistryVersion": 1, "CurrentUser": {"A": {"x": 4294967296}}})",
         "4294967296"},
        {"a number below zero", R"({"RegistryVersion": 1, "CurrentUser": {"A": {"x": -1}}})", "-1"},
        {"a key that cannot be opened", R"({"RegistryVersion": 1, "CurrentUser": {"A\\\\B": {}}})",
         "single backslashes"},
        {"a key that is no key", R"({"RegistryVersion": 1, "CurrentUser": {"A": 1}})", "an object"},
        {"blanks only", "\n", "line"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::WriteFile(mFile, test.contents);
        const support::TraceRecorder trace("Registry");
        RegistryKey key;
        EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, "A"), -1);
        EXPECT_EQ(key.Open(kRegistryRoot_CurrentUser, ""), -1);
        {
            const ScRegistryBatch batch;
            EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, "A"), -1);
        }
        EXPECT_EQ(support::ReadFile(mFile), test.contents);
        EXPECT_EQ(trace.CountContaining(mFile.string()), 1) << "told once for each state of the file";
        EXPECT_EQ(trace.CountContaining(test.told), 1) << testing::PrintToString(trace.Lines());
    }
    support::WriteFile(mFile, R"({"RegistryVersion": 1, "CurrentUser": {"A\\B": {"x": 3.0}}})");
    std::uint32_t number = 0;
    EXPECT_EQ(Made("A\\B").GetUInt32Value("x", number), 0) << "repaired";
    EXPECT_EQ(number, 3u);
    EXPECT_TRUE(Exists("A")) << "the keys above are there, written down or not";
}

TEST_F(RegistryFileTests, AKeyThatWasOpenFailsWhileTheFileIsDamaged)
{
    RegistryKey key = Made("A");
    ASSERT_EQ(key.SetUInt32Value("x", 1), 0);
    const std::string good = support::ReadFile(mFile);
    support::WriteFile(mFile, "damaged");
    std::uint32_t number = 0;
    EXPECT_EQ(key.GetUInt32Value("x", number), -1);
    EXPECT_EQ(key.SetUInt32Value("x", 2), -1);
    EXPECT_EQ(support::ReadFile(mFile), "damaged");
    support::WriteFile(mFile, good);
    EXPECT_EQ(key.GetUInt32Value("x", number), 0);
}

TEST_F(RegistryFileTests, AFileOfSizeZeroIsAnEmptyRegistry)
{
    support::WriteFile(mFile, "");
    EXPECT_EQ(Made("A").SetUInt32Value("x", 1), 0);
    EXPECT_THAT(SubKeys(Made("")), ElementsAre("A"));
}

TEST_F(RegistryFileTests, AFileThatIsDeletedWhileAKeyIsOpenIsAnEmptyRegistry)
{
    RegistryKey key = Made("A");
    std::filesystem::remove_all(mFile.parent_path());
    EXPECT_EQ(key.SetUInt32Value("x", 1), -1);
    EXPECT_FALSE(Exists("A"));
    Made("A");
    EXPECT_EQ(key.SetUInt32Value("x", 1), 0);
}

TEST_F(RegistryFileTests, AFailedSaveChangesNothingAndSaysWhy)
{
    RegistryKey key = Made("A");
    ASSERT_EQ(key.SetUInt32Value("x", 1), 0);
    const std::string before = support::ReadFile(mFile);
    for (const char* call : {"Open", "Write", "Rename"}) {
        SCOPED_TRACE(call);
        support::FaultyFileCalls calls;
        calls.FailCalls(call, EROFS);
        const support::TraceRecorder trace("Registry");
        EXPECT_EQ(key.SetUInt32Value("x", 2), -1);
        EXPECT_EQ(trace.CountContaining("Read-only file system"), 1);
        std::uint32_t number = 0;
        EXPECT_EQ(key.GetUInt32Value("x", number), 0);
        EXPECT_EQ(number, 1u);
    }
    EXPECT_EQ(support::ReadFile(mFile), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFile.parent_path()), {}), 2)
        << "the file and its lock file, nothing temporary";
}

TEST_F(RegistryFileTests, PlacesThatCannotHoldAFileFailWithoutHanging)
{
    support::WriteFile(mFolder / "file", "");
    std::filesystem::create_directory(mFolder / "folder");
    ASSERT_EQ(::mkfifo((mFolder / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(mFolder / "round", mFolder / "round");
    for (const char* place : {"file/registry.json", "folder", "pipe", "round"}) {
        SCOPED_TRACE(place);
        SetRegistryFile(mFolder.UTF16(place));
        const support::TraceRecorder trace("Registry");
        RegistryKey key;
        EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, "A"), -1);
        EXPECT_EQ(key.Open(kRegistryRoot_CurrentUser, ""), -1);
        EXPECT_EQ(trace.CountContaining(place), 2) << testing::PrintToString(trace.Lines());
    }
}

TEST_F(RegistryFileTests, ReadingNeedsNoRightToWrite)
{
    Made("A").SetUInt32Value("x", 1);
    SetRegistryFile(support::UTF16(mFile));
    support::FaultyFileCalls calls;
    for (const char* call : {"Write", "Rename", "MakeFolder", "Link", "SetTimes"}) {
        calls.FailCalls(call, EROFS);
    }
    RegistryKey key;
    std::uint32_t number = 0;
    EXPECT_EQ(key.Open(kRegistryRoot_CurrentUser, "A"), 0);
    EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, "A"), 0) << "it is there already";
    EXPECT_EQ(key.GetUInt32Value("x", number), 0);
}

TEST_F(RegistryFileTests, OpenKeysStayWithTheFileTheyWereOpenedIn)
{
    RegistryKey key = Made("A");
    SetRegistryFile(mFolder.UTF16("other.json"));
    EXPECT_FALSE(Exists("A"));
    EXPECT_EQ(key.SetUInt32Value("x", 1), 0);
    EXPECT_FALSE(std::filesystem::exists(mFolder / "other.json"));
    EXPECT_NE(support::ReadFile(mFile).find("\"x\""), std::string::npos);
}

/// Sets an environment variable, or removes it, for a scope.
class ScEnvironment {
public:
    ScEnvironment(const char* inName, const std::optional<std::string>& inValue) : mName(inName)
    {
        if (const char* const value = std::getenv(inName)) {
            mBefore = value;
        }
        Set(inValue);
    }
    ~ScEnvironment() { Set(mBefore); }

private:
    void Set(const std::optional<std::string>& inValue)
    {
        if (inValue) {
            ::setenv(mName, inValue->c_str(), 1);
        } else {
            ::unsetenv(mName);
        }
    }
    const char* mName;
    std::optional<std::string> mBefore;
};

TEST_F(RegistryFileTests, WithoutAFileFromTheHostItLiesInTheUsersConfigurationFolder)
{
    const UTF16String clientBefore = config::GetClientName();
    const struct {
        const char* name;
        std::optional<std::string> configFolder;
        std::optional<std::string> home;
        const char16_t* client;
        const char16_t* expected;
    } kCases[] = {
        {"named", "/xdg", "/home/u", u"Media Host", u"/xdg/Media Host/registry.json"},
        {"a separator too many", "/xdg/", "/home/u", u"H", u"/xdg/H/registry.json"},
        {"not named", std::nullopt, "/home/u", u"H", u"/home/u/.config/H/registry.json"},
        {"a relative one does not count", "xdg", "/home/u", u"H", u"/home/u/.config/H/registry.json"},
        {"a client that would be a path", "/xdg", "/home/u", u"../x", u"/xdg/.._x/registry.json"},
        {"a client that means a folder", "/xdg", "/home/u", u"..", u"/xdg/Media Host/registry.json"},
        {"no client", "/xdg", "/home/u", u"", u"/xdg/Media Host/registry.json"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const ScEnvironment configFolder("XDG_CONFIG_HOME", test.configFolder);
        const ScEnvironment home("HOME", test.home);
        config::SetClientName(test.client);
        SetRegistryFile({});
        EXPECT_EQ(GetRegistryFile(), test.expected);
    }
    config::SetClientName(clientBefore);
}

} // namespace
} // namespace kiocore::utility
