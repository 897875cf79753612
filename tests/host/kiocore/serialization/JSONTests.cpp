#include <kiocore/serialization/JSON.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace kiocore::serialization {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

std::string Again(const std::string& inText, bool inPretty = false)
{
    return GetJSONUTF8String(GetJSONFromUTF8String(inText), inPretty);
}

std::string Nested(std::size_t inLevels)
{
    return std::string(inLevels, '[') + std::string(inLevels, ']');
}

TEST(JSON, WellFormedTextsComeBackInTheirPlainestForm)
{
    const struct {
        const char* name;
        std::string text;
        std::string expected;
    } kCases[] = {
        {"names in order, no spaces", " { \"b\" : [ 1 , null ] ,\r\n\t\"a\" : { } } ",
         R"({"a":{},"b":[1,null]})"},
        {"single values", "true", "true"},
        {"empty text", R"("")", R"("")"},
        {"smallest and largest whole numbers",
         "[-9223372036854775808,9223372036854775807,18446744073709551615]",
         "[-9223372036854775808,9223372036854775807,18446744073709551615]"},
        {"one beyond them is a double", "[18446744073709551616,-9223372036854775809]",
         "[18446744073709551616.0,-9223372036854775808.0]"},
        {"a double that is whole stays a double", "[1.0,-0.0,1E2]", "[1.0,-0.0,100.0]"},
        {"too small is zero with its sign", "[1e-400,-1e-400,-0]", "[0.0,-0.0,0]"},
        {"an exponent that digits make up for", "0." + std::string(400, '0') + "15e401", "1.5"},
        {"escapes", R"("\u0041\/\"\\\b\f\n\r\t\u0000\u007f")", R"("A/\"\\\b\f\n\r\t\u0000\u007f")"},
        {"escaped pair", R"("\ud83d\uDE00")", "\"\xF0\x9F\x98\x80\""},
        {"lone surrogates, as in names that are no UTF-8", R"({"\udcff":"a\ud800b\udc80\ud800"})",
         R"({"\udcff":"a\ud800b\udc80\ud800"})"},
        {"a low one before a pair", R"("\udc00\ud83d\ude00")", "\"\\udc00\xF0\x9F\x98\x80\""},
        {"no escape of a surrogate", R"("\\ud800")", R"("\\ud800")"},
        {"as deep as may be", Nested(kMaxJSONDepth), Nested(kMaxJSONDepth)},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(Again(test.text), test.expected);
        EXPECT_EQ(Again(Again(test.text, true)), test.expected);
    }
    EXPECT_EQ(Again(R"({"b":[1,{}],"a":[]})", true), "{\n  \"a\": [],\n  \"b\": [\n    1,\n    {}\n  ]\n}");
}

TEST(JSON, WhatIsNotWellFormedIsRefusedWithItsPlace)
{
    const struct {
        const char* name;
        std::string text;
        std::size_t line;
        std::size_t column;
        const char* problem;
    } kCases[] = {
        {"nothing", "", 1, 1, "found the end of the text, expected a value"},
        {"only spaces", " \n ", 2, 2, "found the end of the text, expected a value"},
        {"cut off", "{", 1, 2, "expected a name in quotes or }"},
        {"cut off in a text", "[\"ab", 1, 5, "found the end of the text"},
        {"cut off in a number", "[-", 1, 3, "found the end of the text"},
        {"text behind the value", "{}\n x", 2, 2, "found \"x\" behind the end"},
        {"a second value", "1 2", 1, 3, "found \"2\" behind the end"},
        {"a zero byte behind", "1\0"s, 1, 2, "found \"\\x00\" behind the end"},
        {"trailing comma in an array", "[1,]", 1, 4, "found \"]\", expected a value"},
        {"trailing comma in an object", R"({"a":1,})", 1, 8, "found \"}\", expected a value or a name"},
        {"missing comma", "[1 2]", 1, 4, "found \"2]\""},
        {"missing colon", R"({"a" 1})", 1, 6, "found \"1}\""},
        {"name without quotes", "{a:1}", 1, 2, "expected a name in quotes or }"},
        {"single quotes", "['a']", 1, 2, "found \"'a']\", expected a value or ]"},
        {"wrong bracket", "[1}", 1, 3, "found \"}\""},
        {"comment", "[1] // one", 1, 5, "behind the end"},
        {"leading zero", "[01]", 1, 3, "found \"1]\""},
        {"plus", "[+1]", 1, 2, "found \"+1]\""},
        {"point without digits", "[1.]", 1, 4, "found \"]\""},
        {"digits missing before the point", "[.5]", 1, 2, "found \".5]\""},
        {"exponent without digits", "[1e]", 1, 4, "found \"]\""},
        {"not-a-number", "[NaN]", 1, 2, "found \"NaN]\""},
        {"infinity", "[-Infinity]", 1, 3, "found \"Infinity]\""},
        {"beyond double", "[1,-1e309]", 1, 10, "\"-1e309\" is beyond what a double holds"},
        {"far beyond double", "1e99999999999", 1, 12, "exponent"},
        {"half a word", "[nul]", 1, 2, "found \"nul]\""},
        {"capitals", "True", 1, 1, "found \"True\""},
        {"line feed in a text", "[\"a\nb\"]", 1, 4,
         "found the control character \"\\x0a\", expected it escaped"},
        {"unknown escape", R"(["\x"])", 1, 4, "found \"x"},
        {"escape of three digits", R"(["\u12g4"])", 1, 7, "g4"},
        {"the same name twice", "{\"a\":1,\n \"\\u0061\":2}", 2, 9, "the name \"a\" stands twice"},
        {"one level too many", Nested(kMaxJSONDepth + 1), 1, kMaxJSONDepth + 1, "more than 512 levels"},
        {"very many levels", std::string(1 << 20, '['), 1, kMaxJSONDepth + 1, "more than 512 levels"},
        {"overlong UTF-8", "[\"\u00E9\xC0\xAF\"]", 1, 4, "found the byte \\xc0, expected UTF-8"},
        {"cut UTF-8", "\"\xE2\x82", 1, 2, "found the byte \\xe2"},
        {"a surrogate as bytes", "\"\xED\xB3\xBF\"", 1, 2, "found the byte \\xed"},
        {"beyond Unicode", "\"\xF4\x90\x80\x80\"", 1, 2, "found the byte \\xf4"},
        {"the byte that fills replacements", "\"\\udcff\xFF\"", 1, 8, "found the byte \\xff"},
        {"an escaped surrogate outside of a text", "[\\udc80]", 1, 2, "found \"\\udc80]\""},
        {"byte order mark", "\xEF\xBB\xBF{}", 1, 1, "found a byte order mark"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            ADD_FAILURE() << "was read as " << Again(test.text);
        } catch (const not_well_formed_exception& error) {
            EXPECT_THAT(error.what(), StartsWith("JSON not well-formed: line " + std::to_string(test.line) +
                                                 ", column " + std::to_string(test.column) + ": "));
            EXPECT_THAT(error.what(), HasSubstr(test.problem));
            EXPECT_EQ(error.Line(), test.line);
            EXPECT_EQ(error.Column(), test.column);
        }
    }
}

TEST(JSON, EveryDoubleComesBackAsItWas)
{
    std::mt19937_64 random(20);
    JSONArray numbers{0.0,
                      -0.0,
                      std::numeric_limits<double>::denorm_min(),
                      std::numeric_limits<double>::min(),
                      std::numeric_limits<double>::max(),
                      9007199254740993.0,
                      0.1,
                      5e-324,
                      1e22,
                      1e23};
    while (numbers.size() < 100'000) {
        const double number = std::bit_cast<double>(random());
        if (std::isfinite(number)) {
            numbers.push_back(number);
        }
    }
    const JSONArray again = AsArray(GetJSONFromUTF8String(GetJSONUTF8String(numbers, false)));
    ASSERT_EQ(again.size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const double expected = boost::any_cast<double>(numbers[i]);
        const auto* found = boost::any_cast<double>(&again[i]);
        ASSERT_TRUE(found) << expected << " came back as " << Describe(again[i]);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*found), std::bit_cast<std::uint64_t>(expected)) << expected;
    }
    // Written by others, with digits enough to fall beside the nearest one.
    EXPECT_EQ(AsDouble(GetJSONFromUTF8String("0.1000000000000000055511151231257827021181583404541015625")),
              0.1);
    EXPECT_EQ(AsDouble(GetJSONFromUTF8String("2.2250738585072011e-308")), 2.2250738585072011e-308);
    EXPECT_EQ(AsDouble(GetJSONFromUTF8String("9007199254740993.0000000000000000000000000000000000000001")),
              9007199254740994.0);
}

TEST(JSON, WhatHasNoFormIsNotWritten)
{
    JSON deep = JSONArray();
    for (std::size_t i = 0; i < kMaxJSONDepth; ++i) {
        deep = JSONArray{deep};
    }
    const struct {
        const char* name;
        JSON value;
        const char* error;
    } kCases[] = {
        {"not-a-number", JSONArray{1, JSONObject{{"x", std::nan("")}}}, "$[1].x: found the number nan"},
        {"infinity", HUGE_VAL, "$: found the number inf, expected a finite number"},
        {"no UTF-8", JSONObject{{"a", "ab\xFF"s}},
         "$.a: found the text \"ab\" followed by a byte that is no"},
        {"a name that is no UTF-8", JSONObject{{"\xC3", 1}}, "no UTF-8"},
        {"half a pair twice", "\xED\xA0\x80\xED\xB0\x80"s, "no UTF-8"},
        {"another type", JSONArray{u"text"s}, "$[0]: found a value of C++ type"},
        {"too deep", deep, "a value within 512 others"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            ADD_FAILURE() << "was written as " << GetJSONUTF8String(test.value, false);
        } catch (const bad_cast_exception& error) {
            EXPECT_THAT(error.what(), HasSubstr(test.error));
        }
    }
    EXPECT_EQ(GetJSONUTF8String(JSONArray{1, 2u, -3ll, 4ull, 0.5f}, false), "[1,2,-3,4,0.5]");
}

} // namespace
} // namespace kiocore::serialization
