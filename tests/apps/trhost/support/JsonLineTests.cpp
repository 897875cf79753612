#include <support/JsonLine.h>

#include <gtest/gtest.h>

#include <limits>

namespace trhost {

TEST(JsonLine, KeepsWhateverATextHolds)
{
    const struct {
        const char* name;
        std::u16string text;
        std::string expected;
    } kCases[] = {
        {"empty", u"", R"("")"},
        {"quote and backslash", u"a\"b\\c", R"("a\"b\\c")"},
        {"line ends and tabs", u"\r\n\t", R"("\r\n\t")"},
        {"other controls", std::u16string(u"\0\x1f\x7f", 3), R"("\u0000\u001f\u007f")"},
        {"a character beyond 16 bits", u"\U0001F3AC", "\"\xF0\x9F\x8E\xAC\""},
        {"two and three bytes", u"é€", "\"é€\""},
        {"a byte that is no UTF-8", u"a\xDCFF", R"("a\udcff")"},
        {"a high surrogate at the end", u"\xD83C", R"("\ud83c")"},
        {"surrogates in the wrong order", u"\xDC00\xD83C", R"("\udc00\ud83c")"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(JsonQuote(test.text), test.expected);
    }
}

TEST(JsonLine, IsOneObjectInTheOrderOfTheCalls)
{
    JsonLine line;
    line.Add("b", 1).Add("a", std::uint64_t(18446744073709551615u)).Add("yes", true).Add("half", 0.5);
    line.Add("none", std::numeric_limits<double>::infinity())
        .Add("list", std::vector<JsonLine>{JsonLine(), JsonLine().Add("x", "y")});
    EXPECT_EQ(line.GetText(),
              R"({"b":1,"a":18446744073709551615,"yes":true,"half":0.5,"none":null,"list":[{},{"x":"y"}]})");
    EXPECT_EQ(JsonLine().GetText(), "{}");
}

} // namespace trhost
