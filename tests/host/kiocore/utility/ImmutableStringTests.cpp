#include <kiocore/utility/ImmutableString.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using kiocore::ImmutableString;

const std::string kShort(ImmutableString::kInlineCapacity, 's');
const std::string kLong(ImmutableString::kInlineCapacity + 1, 'l');
constexpr const char kLiteral[] = "a literal that is longer than what lies inline";
constexpr const char kEmpty[] = "";

struct Case {
    const char* name;
    ImmutableString text;
    std::string expected;
};

std::vector<Case> EveryKind()
{
    return {{"inline, full", kShort, kShort},
            {"shared", kLong, kLong},
            {"literal", ImmutableString::FromLiteral(kLiteral), kLiteral},
            {"literal, empty", ImmutableString::FromLiteral(kEmpty), ""},
            {"empty", {}, ""}};
}

TEST(ImmutableString, EveryKindSurvivesBeingCopiedMovedAndAssigned)
{
    for (const Case& from : EveryKind()) {
        for (const Case& to : EveryKind()) {
            SCOPED_TRACE(std::string(from.name) + " over " + to.name);
            ImmutableString target = to.text;
            target = from.text;
            EXPECT_EQ(target.View(), from.expected);
            EXPECT_STREQ(target.CString(), from.expected.c_str());
            ImmutableString moved = std::move(target);
            EXPECT_EQ(moved, from.text);
            EXPECT_TRUE(target.IsEmpty()); // as promised
            target = to.text;
            target = std::move(moved);
            EXPECT_EQ(target.View(), from.expected);
            EXPECT_EQ(std::hash<ImmutableString>()(target), std::hash<ImmutableString>()(from.expected));
        }
    }
}

TEST(ImmutableString, ALiteralIsTheProgramsOwnBytes)
{
    const ImmutableString text = ImmutableString::FromLiteral(kLiteral);
    const ImmutableString copy = text;
    EXPECT_EQ(copy.CString(), kLiteral);
    EXPECT_EQ(copy, ImmutableString(kLiteral));
}

TEST(ImmutableString, TellsCopiesFromEqualTexts)
{
    for (const Case& test : EveryKind()) {
        SCOPED_TRACE(test.name);
        const ImmutableString copy = test.text;
        EXPECT_TRUE(copy.IsCopyOf(test.text));
        EXPECT_FALSE(copy.IsCopyOf(ImmutableString("another")));
    }
    EXPECT_TRUE(ImmutableString(kShort).IsCopyOf(ImmutableString(kShort)));
    EXPECT_FALSE(ImmutableString(kLong).IsCopyOf(ImmutableString(kLong)));
}

TEST(ImmutableString, CopiesOnManyThreadsFreeTheTextOnce)
{
    const ImmutableString text = kLong;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([text] {
            for (int round = 0; round < 1000; ++round) {
                const ImmutableString copy = text;
                ASSERT_EQ(copy.Size(), kLong.size());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(text.View(), kLong);
}

} // namespace
