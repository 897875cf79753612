#include "support/TemporaryFolder.h"

#include "effects/scan/ScanCache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

namespace trhost::effects {
namespace {

namespace fs = std::filesystem;

class ScanCacheTest : public testing::Test {
protected:
    ScanCacheTest()
    {
        support::WriteFile(mPlugin, "plug-in");
        support::WriteFile(mBehind, "library");
    }
    std::string Folder() { return (mFolder / "cache").native(); }
    fs::path CacheFile() { return mFolder / "cache" / ScanCache::kFileName; }

    /// A cache that knows the file with one described and one failed plug-in.
    void Keep()
    {
        ScannedFile scanned;
        scanned.stamp = StampOf(mPlugin.native()).value();
        scanned.behind = {{mBehind.native(), StampOf(mBehind.native()).value()},
                          {(mFolder / "absent").native(), FileStamp()}};
        EffectDescription description;
        description.matchName = "test.glow";
        description.file = mPlugin.native();
        description.formats = {kiomediatypes::kPixelFormat_BGRA_4444_32f};
        scanned.plugins = {
            {"glow", description, {}},
            {"bad", {}, WorkerFailure{WorkerFailure::Kind::kHung, WorkerTask::kDescribe, "", "x", 250}}};
        ScanCache cache(Folder());
        cache.Set("test", mPlugin.native(), scanned);
        ASSERT_EQ(cache.Save(), 0);
    }

    support::TemporaryFolder mFolder;
    const fs::path mPlugin = mFolder / "glow\xFF.so"; // a name that is no UTF-8
    const fs::path mBehind = mFolder / "behind.so";
};

TEST_F(ScanCacheTest, WhatWasKeptIsFoundAgainWhole)
{
    Keep();
    const ScanCache cache(Folder());
    const ScannedFile* const found = cache.FindFresh("test", mPlugin.native());
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->plugins.size(), 2u);
    EXPECT_EQ(found->plugins[0].name, "glow");
    EXPECT_EQ(found->plugins[0].description.value().file, mPlugin.native());
    EXPECT_THAT(found->plugins[0].description->formats,
                testing::ElementsAre(kiomediatypes::kPixelFormat_BGRA_4444_32f));
    EXPECT_EQ(found->plugins[1].failure.value(),
              (WorkerFailure{WorkerFailure::Kind::kHung, WorkerTask::kDescribe, "", "x", 250}));
    EXPECT_EQ(cache.FindFresh("other technology", mPlugin.native()), nullptr);
}

TEST_F(ScanCacheTest, AnyChangeMakesItStale)
{
    const auto moveTime = [](const fs::path& inFile) {
        fs::last_write_time(inFile, fs::last_write_time(inFile) + std::chrono::nanoseconds(1));
    };
    const auto keepTime = [](const fs::path& inFile, const char* inBytes) {
        const auto time = fs::last_write_time(inFile);
        support::WriteFile(inFile, inBytes);
        fs::last_write_time(inFile, time);
    };
    const struct {
        const char* name;
        std::function<void()> change;
    } kCases[] = {
        {"one nanosecond", [&] { moveTime(mPlugin); }},
        {"another size at the same time", [&] { keepTime(mPlugin, "plug-in!"); }},
        {"a file behind it", [&] { moveTime(mBehind); }},
        {"a file behind it that is gone", [&] { fs::remove(mBehind); }},
        {"a file behind it that has come", [&] { support::WriteFile(mFolder / "absent", ""); }},
        {"the file itself is gone", [&] { fs::remove(mPlugin); }},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        support::WriteFile(mPlugin, "plug-in");
        support::WriteFile(mBehind, "library");
        fs::remove(mFolder / "absent");
        Keep();
        const ScanCache cache(Folder());
        ASSERT_NE(cache.FindFresh("test", mPlugin.native()), nullptr);
        test.change();
        EXPECT_EQ(cache.FindFresh("test", mPlugin.native()), nullptr);
    }
}

TEST_F(ScanCacheTest, FilesThatAreGoneAreForgotten)
{
    Keep();
    const std::uintmax_t sizeBefore = fs::file_size(CacheFile());
    fs::remove(mPlugin);
    EXPECT_EQ(ScanCache(Folder()).Save(), 0);
    EXPECT_LT(fs::file_size(CacheFile()), sizeBefore);
    support::WriteFile(mPlugin, "plug-in");
    EXPECT_EQ(ScanCache(Folder()).FindFresh("test", mPlugin.native()), nullptr);
}

TEST_F(ScanCacheTest, ADamagedCacheIsSetAsideAndOneOfAnotherVersionReplaced)
{
    const struct {
        const char* name;
        const char* text;
        bool isSetAside;
    } kCases[] = {
        {"no JSON", "{\"version\":1,\"files\":[", true},
        {"nothing", "", true},
        {"another document", "[1,2]", true},
        {"a plug-in that is neither described nor failed",
         "{\"version\":1,\"files\":[{\"technology\":\"t\",\"file\":\"f\",\"size\":1,\"modified\":1,"
         "\"behind\":[],"
         "\"plugins\":[{\"name\":\"x\"}]}]}",
         true},
        {"a newer version", "{\"version\":2,\"files\":\"elsewhere\"}", false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        fs::remove_all(Folder());
        support::WriteFile(CacheFile(), test.text);
        EXPECT_EQ(ScanCache(Folder()).FindFresh("t", "f"), nullptr);
        const fs::path aside = mFolder / "cache" / ScanCache::kDamagedFileName;
        ASSERT_EQ(fs::exists(aside), test.isSetAside);
        if (test.isSetAside) {
            EXPECT_EQ(support::ReadFile(aside), test.text);
        }
        Keep();
        EXPECT_NE(ScanCache(Folder()).FindFresh("test", mPlugin.native()), nullptr);
    }
}

TEST_F(ScanCacheTest, ACacheThatCannotBeSavedSaysSo)
{
    support::WriteFile(mFolder / "cache", "a file in the way");
    ScanCache cache(Folder());
    cache.Set("test", mPlugin.native(), {StampOf(mPlugin.native()).value(), {}, {}, {}});
    EXPECT_EQ(cache.Save(), -1);
    EXPECT_EQ(support::ReadFile(mFolder / "cache"), "a file in the way");
}

} // namespace
} // namespace trhost::effects
