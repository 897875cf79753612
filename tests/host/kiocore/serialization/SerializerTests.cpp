#include <kiocore/serialization/Serializer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace kiocore::serialization {
namespace {

template <typename T>
std::string ErrorOf(std::string_view inText)
{
    try {
        Serializer<T>::FromUTF8String(inText);
        return "none";
    } catch (const std::bad_cast& error) {
        return error.what();
    }
}

template <typename T>
T Again(const T& inValue)
{
    return Serializer<T>::FromUTF8String(Serializer<T>::ToUTF8String(inValue));
}

TEST(Serializer, ValuesComeBackExactly)
{
    EXPECT_EQ(Again(true), true);
    for (std::int64_t number : {std::numeric_limits<std::int64_t>::min(), std::int64_t(-1), std::int64_t(0),
                                std::int64_t(9007199254740993), std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(Again(number), number);
    }
    EXPECT_EQ(Again(std::numeric_limits<std::uint64_t>::max()), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Again(std::int8_t(-128)), -128);
    EXPECT_EQ(Again(0.1), 0.1);
    EXPECT_EQ(Again(0.1f), 0.1f);
    EXPECT_EQ(Again(std::string("a\0\n\"\\\x7F", 6)), std::string("a\0\n\"\\\x7F", 6));
    EXPECT_EQ(Again(ImmutableString("longer than what lies in the object")),
              ImmutableString("longer than what lies in the object"));
    using Texts = std::map<std::string, std::vector<UTF16String>>;
    const Texts texts{
        {"", {}}, {"paths", {u"", u"/a/\u00E9\u4E2D", u"\xDCFF", u"\xD83D\xDE00\xD83D.\xDC80\xDCFF\xED"}}};
    EXPECT_EQ(Again(texts), texts);
}

TEST(Serializer, WhatIsOfAnotherTypeIsRefusedWithItsPlace)
{
    using Numbers = std::map<std::string, std::vector<std::int8_t>>;
    const struct {
        const char* name;
        std::string error;
        std::string expected;
    } kCases[] = {
        {"place within", ErrorOf<Numbers>(R"({"a":[1],"b":[1,"x"]})"),
         "JSON value $.b[1]: found the text \"x\", expected a whole number from -128 to 127"},
        {"not the root's type", ErrorOf<Numbers>("[]"), "JSON value $: found an array, expected an object"},
        {"out of range", ErrorOf<Numbers>(R"({"a":[128]})"),
         "JSON value $.a[0]: found the number 128, expected a whole number from -128 to 127"},
        {"null is no value", ErrorOf<bool>("null"), "JSON value $: found null, expected true or false"},
        {"a number is no bool", ErrorOf<bool>("1"),
         "JSON value $: found the number 1, expected true or false"},
        {"a text is no number", ErrorOf<double>("\"1\""),
         "JSON value $: found the text \"1\", expected a number"},
        {"a number is no text", ErrorOf<std::string>("1.5"),
         "JSON value $: found the number 1.5, expected a text"},
        {"beyond a float", ErrorOf<float>("3.5e38"),
         "JSON value $: found the number 3.5e+38, expected a number within the range of a float"},
        {"an object is no array", ErrorOf<std::vector<bool>>("{}"),
         "JSON value $: found an object, expected an array"},
        {"below zero", ErrorOf<unsigned>("-1"),
         "JSON value $: found the number -1, expected a whole number from 0 to 4294967295"},
        {"a fraction", ErrorOf<unsigned>("1.5"),
         "JSON value $: found the number 1.5, expected a whole number from 0 to 4294967295"},
        // One beyond the range, rounded into it on the way.
        {"whole but no longer exact", ErrorOf<std::int64_t>("-9223372036854775809"),
         "JSON value $: found the number -9223372036854775808, expected a whole number from "
         "-9223372036854775808 to 9223372036854775807"},
        {"too large for the signed", ErrorOf<std::int64_t>("9223372036854775808"),
         "JSON value $: found the number 9223372036854775808, expected a whole number from "
         "-9223372036854775808 to 9223372036854775807"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(test.error, test.expected);
    }
    EXPECT_EQ(Serializer<unsigned>::FromUTF8String("3.0"), 3u);
    EXPECT_EQ(Serializer<double>::FromUTF8String("3"), 3.0);
    EXPECT_THROW(Serializer<bool>::FromUTF8String("{"), std::runtime_error);
}

TEST(Serializer, MembersMayBeOptional)
{
    const JSONObject object{{"width", 2.5}};
    double width = 1;
    double height = 1;
    EXPECT_TRUE(ReadMember(object, "width", width));
    EXPECT_FALSE(ReadMember(object, "height", height));
    EXPECT_EQ(width, 2.5);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(GetMember<double>(object, "width"), 2.5);
    EXPECT_THROW(GetMember<double>(object, "height"), bad_cast_exception);
    bool flag = true;
    EXPECT_THROW(ReadMember(object, "width", flag), bad_cast_exception);
    EXPECT_TRUE(flag);
}

} // namespace
} // namespace kiocore::serialization
