#include "RegistryFixture.h"

#include "support/FaultyFileCalls.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>

#include <limits>

namespace kiocore::utility {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using RegistryKeyTests = RegistryFixture;

TEST_F(RegistryKeyTests, ValuesComeBackToTheLetterAndAsTheTypeTheyWereSetWith)
{
    RegistryKey key = Made("Software\\Test");
    const struct {
        const char* name;
        std::string valueName;
        std::string value;
    } kTexts[] = {
        {"plain", "Effect Types0", "YUV"},
        {"the value without a name", "", "default"},
        {"case counts", "effect types0", "yuv"},
        {"backslashes and slashes are characters", "a\\b/c", "\\\\x\\"},
        {"beyond ASCII", "Größe", "日本 \xF0\x9F\x8E\xAC"},
        {"controls and zero bytes", std::string("a\0b", 3), std::string("\0\n\x01\"", 4)},
        {"empty", "empty", ""},
    };
    for (const auto& test : kTexts) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(key.SetStringValue(test.valueName, test.value), 0);
    }
    for (std::uint32_t number : {0u, 3u, std::numeric_limits<std::uint32_t>::max()}) {
        EXPECT_EQ(key.SetUInt32Value("number " + std::to_string(number), number), 0);
    }
    SetRegistryFile(support::UTF16(mFile)); // forgets what is in memory
    RegistryKey again;
    ASSERT_EQ(again.Open(kRegistryRoot_CurrentUser, "Software\\Test\\"), 0);
    for (const auto& test : kTexts) {
        SCOPED_TRACE(test.name);
        std::string text = "untouched";
        std::uint32_t number = 77;
        EXPECT_EQ(again.GetUInt32Value(test.valueName, number), -1) << "a text is no number";
        EXPECT_EQ(number, 77u);
        EXPECT_EQ(again.GetStringValue(test.valueName, text), 0);
        EXPECT_EQ(text, test.value);
    }
    for (std::uint32_t number : {0u, 3u, std::numeric_limits<std::uint32_t>::max()}) {
        std::string text = "untouched";
        std::uint32_t found = 77;
        EXPECT_EQ(again.GetStringValue("number " + std::to_string(number), text), -1);
        EXPECT_EQ(text, "untouched");
        EXPECT_EQ(again.GetUInt32Value("number " + std::to_string(number), found), 0);
        EXPECT_EQ(found, number);
    }
    EXPECT_EQ(key.SetUInt32Value("Effect Types0", 5), 0) << "the last type counts";
    std::string text;
    EXPECT_EQ(again.GetStringValue("Effect Types0", text), -1);
}

TEST_F(RegistryKeyTests, PathsAreNamesJoinedBySingleBackslashes)
{
    const struct {
        const char* name;
        std::string path;
        bool isPath;
    } kCases[] = {
        {"several levels", "A\\B\\C", true},
        {"one separator at the end changes nothing", "A\\B\\C\\", true},
        {"a slash is a character", "A/B\\C", true},
        {"blanks and dots are names", " \\.\\..", true},
        {"the root", "", true},
        {"an empty name at the end", "A\\\\", false},
        {"in the middle", "A\\\\B", false},
        {"at the beginning", "\\A", false},
        {"nothing but a separator", "\\", false},
        {"no UTF-8", "A\xFF", false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        RegistryKey key;
        EXPECT_EQ(key.Create(kRegistryRoot_CurrentUser, test.path), test.isPath ? 0 : -1);
        EXPECT_EQ(key.IsOpen(), test.isPath);
        EXPECT_EQ(Exists(test.path), test.isPath);
    }
    EXPECT_TRUE(Exists("A\\B")) << "the keys above come with it";
    EXPECT_FALSE(Exists("a\\b\\c")) << "case counts";
    RegistryKey key = Made("A");
    EXPECT_EQ(key.Create(static_cast<RegistryRootKey>(1), "X"), -1) << "there is one root";
    EXPECT_EQ(key.Open(kRegistryRoot_CurrentUser, "missing"), -1);
    EXPECT_EQ(key.SetUInt32Value("x", 1), 0) << "a failure leaves the key open where it was";
    EXPECT_THAT(Values(Made("A")), ElementsAre("x"));
}

TEST_F(RegistryKeyTests, KeysAndValuesAreListedAndDeleted)
{
    RegistryKey root = Made("");
    RegistryKey key = Made("Cache");
    for (const char* path : {"Cache\\b\\deep\\deeper", "Cache\\a", "Cache\\b\\other", "Cache b", "Cache!"}) {
        Made(path);
    }
    ASSERT_EQ(key.SetStringValue("two", "2"), 0);
    ASSERT_EQ(key.SetUInt32Value("one", 1), 0);
    EXPECT_THAT(SubKeys(root), ElementsAre("Cache", "Cache b", "Cache!"));
    EXPECT_THAT(SubKeys(key), ElementsAre("a", "b")) << "only those right below";
    EXPECT_THAT(Values(key), ElementsAre("one", "two"));

    EXPECT_EQ(key.DeleteValue("one"), 0);
    EXPECT_EQ(key.DeleteValue("one"), -1) << "it is gone already";
    EXPECT_THAT(Values(key), ElementsAre("two"));
    RegistryKey deep = Made("Cache\\b\\deep");
    EXPECT_EQ(key.DeleteKey("b\\"), 0);
    EXPECT_EQ(key.DeleteKey("b"), -1);
    EXPECT_EQ(key.DeleteKey(""), -1) << "a key does not delete itself";
    EXPECT_THAT(SubKeys(key), ElementsAre("a"));
    EXPECT_EQ(deep.SetUInt32Value("x", 1), -1) << "its key is gone";
    EXPECT_THAT(Values(deep), ElementsAre("untouched"));
    Made("Cache\\b\\deep");
    EXPECT_THAT(Values(deep), IsEmpty()) << "made again, and empty";
    EXPECT_EQ(root.DeleteKey("Cache"), 0);
    EXPECT_THAT(SubKeys(root), ElementsAre("Cache b", "Cache!")) << "names that only begin like it stay";
}

TEST_F(RegistryKeyTests, AKeyThatIsNotOpenRefusesEverything)
{
    RegistryKey key;
    std::uint32_t number = 7;
    std::string text = "untouched";
    EXPECT_EQ(key.SetUInt32Value("a", 1), -1);
    EXPECT_EQ(key.SetStringValue("a", "b"), -1);
    EXPECT_EQ(key.GetUInt32Value("a", number), -1);
    EXPECT_EQ(key.GetStringValue("a", text), -1);
    EXPECT_EQ(key.DeleteValue("a"), -1);
    EXPECT_EQ(key.DeleteKey("a"), -1);
    EXPECT_THAT(Values(key), ElementsAre("untouched"));
    EXPECT_THAT(SubKeys(key), ElementsAre("untouched"));
    EXPECT_FALSE(std::filesystem::exists(mFile.parent_path())) << "asking makes no folder";
}

TEST_F(RegistryKeyTests, TextsThatAreNoUTF8AreRefused)
{
    RegistryKey key = Made("A");
    const std::string before = support::ReadFile(mFile);
    const support::TraceRecorder trace("Registry");
    EXPECT_EQ(key.SetStringValue("name", "\xC3("), -1);
    EXPECT_EQ(key.SetUInt32Value("\xFF", 1), -1);
    EXPECT_EQ(support::ReadFile(mFile), before);
    EXPECT_EQ(trace.CountContaining("no UTF-8"), 2);
}

TEST_F(RegistryKeyTests, OnlyChangesTouchTheDisk)
{
    RegistryKey key = Made("A");
    ASSERT_EQ(key.SetUInt32Value("a", 1), 0);
    const support::FaultyFileCalls calls;
    for (int i = 0; i < 100; ++i) {
        std::uint32_t number = 0;
        EXPECT_EQ(key.GetUInt32Value("a", number), 0);
        EXPECT_EQ(key.SetUInt32Value("a", 1), 0) << "it is 1 already";
        Made("A");
    }
    EXPECT_THAT(calls.Names(), IsEmpty());
    EXPECT_EQ(key.SetUInt32Value("a", 2), 0);
    EXPECT_THAT(calls.Names(), testing::Contains("Rename").Times(1));
    EXPECT_THAT(calls.Names(), testing::Not(testing::Contains("Sync")));
}

TEST_F(RegistryKeyTests, ABatchShowsItsChangesToItsThreadAndSavesThemOnce)
{
    RegistryKey key = Made("A");
    ASSERT_EQ(key.SetUInt32Value("old", 1), 0);
    const std::string before = support::ReadFile(mFile);
    {
        ScRegistryBatch batch;
        const support::FaultyFileCalls calls;
        {
            const ScRegistryBatch inner;
            for (int i = 0; i < 50; ++i) {
                ASSERT_EQ(Made("A\\" + std::to_string(i)).SetUInt32Value("n", i), 0);
            }
        }
        EXPECT_EQ(key.DeleteValue("old"), 0);
        EXPECT_EQ(key.DeleteValue("old"), -1) << "as if it were saved";
        EXPECT_TRUE(Exists("A\\49"));
        EXPECT_EQ(support::ReadFile(mFile), before);
        EXPECT_THAT(calls.Names(), IsEmpty()) << "the inner one leaves it to the outer";
        EXPECT_EQ(batch.Finish(), 0);
        EXPECT_THAT(calls.Names(), testing::Contains("Rename").Times(1));
        EXPECT_THAT(calls.Names(), testing::Contains("Sync").Times(1));
        EXPECT_EQ(key.SetUInt32Value("after", 1), 0);
        EXPECT_EQ(support::ReadFile(mFile).find("after"), std::string::npos) << "gathered anew";
    }
    SetRegistryFile(support::UTF16(mFile));
    EXPECT_TRUE(Exists("A\\49"));
    EXPECT_THAT(Values(Made("A")), ElementsAre("after"));
    ASSERT_EQ(Made("A").SetUInt32Value("alone", 1), 0);
    EXPECT_NE(support::ReadFile(mFile).find("alone"), std::string::npos) << "the batch is over";
}

TEST_F(RegistryKeyTests, ABatchThatCannotBeSavedLeavesAllAsItWas)
{
    RegistryKey key = Made("A");
    support::FaultyFileCalls calls;
    calls.FailCalls("Rename", ENOSPC);
    ScRegistryBatch batch;
    EXPECT_EQ(key.SetUInt32Value("a", 1), 0);
    const support::TraceRecorder trace("Registry");
    EXPECT_EQ(batch.Finish(), -1);
    EXPECT_EQ(trace.CountContaining("\"rename\""), 1);
    EXPECT_THAT(Values(key), IsEmpty());
}

} // namespace
} // namespace kiocore::utility
