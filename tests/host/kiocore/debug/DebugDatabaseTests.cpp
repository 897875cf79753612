#include "support/TraceRecorder.h"

#include <kiocore/debug/DebugDatabase.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>

using kiocore::ImmutableString;
using kiocore::debug::CachedDebugBool;
using kiocore::debug::DebugDatabase;

TEST(DebugDatabase, UnderstandsTextAsWhatItLooksLike)
{
    // A value that is of another type answers with the default, so each row shows its one type.
    const struct {
        const char* name;
        const char* text;
        bool asBool;
        std::int64_t asInteger;
        const char* asText;
    } kCases[] = {
        {"a bool", "true", true, -1, "none"},
        {"a whole number", "-17", false, -17, "none"},
        {"the largest", "9223372036854775807", false, INT64_MAX, "none"},
        {"one beyond it is a number that is not whole", "9223372036854775808", false, -1, "none"},
        {"a number", "1.5e3", false, -1, "none"},
        {"a number beyond all numbers", "1e999", false, -1, "1e999"},
        {"no number", "nan", false, -1, "nan"},
        {"with something behind it", "17 s", false, -1, "17 s"},
        {"an empty text", "", false, -1, ""},
        {"a word", "True", false, -1, "True"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        DebugDatabase::SetFromText("Test.Value", test.text);
        EXPECT_EQ(DebugDatabase::GetBool("Test.Value", false), test.asBool);
        EXPECT_EQ(DebugDatabase::GetInteger("Test.Value", -1), test.asInteger);
        EXPECT_EQ(DebugDatabase::GetText("Test.Value", "none"), test.asText);
    }
    DebugDatabase::Remove("Test.Value");
    EXPECT_EQ(DebugDatabase::GetText("Test.Value", "none"), "none");
}

TEST(DebugDatabase, CountsEveryChange)
{
    std::uint32_t last = DebugDatabase::GetChangeCount();
    EXPECT_NE(last, 0u);
    const auto moved = [&] { return std::exchange(last, DebugDatabase::GetChangeCount()) != last; };
    DebugDatabase::Set("Test.Value", true);
    EXPECT_TRUE(moved());
    DebugDatabase::Set("Test.Value", true);
    EXPECT_TRUE(moved()) << "the same value again";
    DebugDatabase::Remove("Test.Value");
    EXPECT_TRUE(moved());
    DebugDatabase::Remove("Test.Value");
    EXPECT_FALSE(moved()) << "there was nothing to remove";
}

TEST(CachedDebugBool, LooksAgainOnlyAfterAChange)
{
    static const CachedDebugBool kOff("Test.Switch", false);
    static const CachedDebugBool kOn("Test.Switch", true);
    EXPECT_FALSE(kOff.Get());
    EXPECT_TRUE(kOn.Get());
    support::TraceRecorder trace("Host");
    EXPECT_FALSE(kOff.Get());
    EXPECT_EQ(trace.CountContaining("GetBool"), 0);

    DebugDatabase::Set("Test.Switch", true);
    EXPECT_TRUE(kOff.Get());
    EXPECT_TRUE(kOff.Get());
    EXPECT_EQ(trace.CountContaining("GetBool"), 1);
    DebugDatabase::Set("Test.Other", ImmutableString("x"));
    EXPECT_TRUE(kOff.Get());
    EXPECT_EQ(trace.CountContaining("GetBool"), 2) << "any change counts";
    DebugDatabase::Set("Test.Switch", std::int64_t{1});
    EXPECT_FALSE(kOff.Get()) << "of another type";
    EXPECT_TRUE(kOn.Get());
    DebugDatabase::Remove("Test.Switch");
    DebugDatabase::Remove("Test.Other");
}

TEST(CachedDebugBool, SeesItsOwnThreadsChangesAtOnceWhileOthersLook)
{
    const CachedDebugBool cached("Test.Switch", false);
    std::atomic<bool> done{false};
    std::thread other([&] {
        while (!done) {
            cached.Get();
        }
    });
    int wrong = 0;
    for (int i = 0; i < 20000; ++i) {
        DebugDatabase::Set("Test.Switch", i % 2 == 0);
        wrong += cached.Get() != (i % 2 == 0);
    }
    done = true;
    other.join();
    EXPECT_EQ(wrong, 0);
    DebugDatabase::Remove("Test.Switch");
}
