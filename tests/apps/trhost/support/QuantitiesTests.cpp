#include <support/Quantities.h>

#include <gtest/gtest.h>

namespace trhost {

TEST(Quantities, ReadsSizes)
{
    const struct {
        const char* text;
        std::optional<std::uint64_t> expected;
    } kCases[] = {
        {"0", 0u},
        {"4096", 4096u},
        {"1k", 1024u},
        {"1.5M", 1572864u},
        {"50G", 53687091200u},
        {"50gb", 53687091200u},
        {"50GiB", 53687091200u},
        {"7b", 7u},
        {"", std::nullopt},
        {"G", std::nullopt},
        {"-1", std::nullopt},
        {"1x", std::nullopt},
        {"1 G", std::nullopt},
        {"1GG", std::nullopt},
        {"16E", std::nullopt},
        {"nan", std::nullopt},
        {"1e3", std::nullopt},
        {"15E", 17293822569102704640u},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(ParseSize(test.text), test.expected) << test.text;
    }
}

TEST(Quantities, ReadsAgesOnlyWithTheirUnit)
{
    using namespace std::chrono_literals;
    const struct {
        const char* text;
        std::optional<std::chrono::nanoseconds> expected;
    } kCases[] = {
        {"90d", 90 * 24h},
        {"12h", 12h},
        {"30m", 30min},
        {"45s", 45s},
        {"2w", 14 * 24h},
        {"1.5d", 36h},
        {"0s", 0s},
        {"90", std::nullopt},
        {"d", std::nullopt},
        {"-1d", std::nullopt},
        {"1mo", std::nullopt},
        {"", std::nullopt},
        {"999999999w", std::nullopt},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(ParseAge(test.text), test.expected) << test.text;
    }
}

TEST(Quantities, WritesThreeDigits)
{
    EXPECT_EQ(FormatSize(999), "999 B");
    EXPECT_EQ(FormatSize(1000), "0.98 KB");
    EXPECT_EQ(FormatSize(10 * 1024), "10.0 KB");
    EXPECT_EQ(FormatSize(~0ull), "16.0 EB");
    EXPECT_EQ(FormatDuration(0.012), "0.01 s");
    EXPECT_EQ(FormatDuration(12.34), "12.3 s");
    EXPECT_EQ(FormatDuration(59.99), "1:00");
    EXPECT_EQ(FormatDuration(7383), "2:03:03");
    EXPECT_EQ(FormatDuration(-1), "0.00 s");
}

} // namespace trhost
