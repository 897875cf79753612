#include <kiocore/utility/Dictionary.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using kiocore::ImmutableString;
using kiocore::utility::Dictionary;

TEST(Dictionary, ShowsItselfAsJSONInTheOrderOfItsKeys)
{
    const struct {
        const char* name;
        Dictionary dictionary;
        const char* expected;
    } kCases[] = {
        {"nothing", {}, "{}"},
        {"one text", {"key", "text"}, R"({"key":"text"})"},
        {"a literal is a text, not a bool",
         {{"b", "text"}, {"a", true}, {"d", 7}, {"c", 0.5}},
         R"({"a":true,"b":"text","c":0.5,"d":7})"},
        {"the last of a key counts", {{"a", 1}, {"b", 2}, {"a", "new"}}, R"({"a":"new","b":2})"},
        {"what JSON has no form for",
         {{"nan", std::numeric_limits<double>::quiet_NaN()}, {"bytes", "\xFF!"}},
         "{\"bytes\":\"\xEF\xBF\xBD!\",\"nan\":null}"},
        {"empty key and text", {"", ""}, R"({"":""})"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(test.dictionary.AsJSON(), test.expected);
    }
}

TEST(Dictionary, FindsAndReplacesAtEverySize)
{
    Dictionary dictionary;
    for (int size = 0; size < 5; ++size) {
        SCOPED_TRACE(size);
        ASSERT_EQ(dictionary.Size(), std::size_t(size));
        EXPECT_EQ(dictionary.Find("absent"), nullptr);
        for (int i = 0; i < size; ++i) {
            const Dictionary::Value* value = dictionary.Find(std::to_string(9 - i));
            ASSERT_NE(value, nullptr);
            EXPECT_EQ(boost::get<std::int64_t>(*value), i);
        }
        dictionary.Set(std::to_string(9 - size), "to be replaced");
        dictionary.Set(std::to_string(9 - size), size);
    }
}

TEST(Dictionary, IsAValue)
{
    const Dictionary kCases[] = {
        {}, {"key", "a text that is too long to lie inline"}, {{"a", 1}, {"b", "two"}}};
    for (const Dictionary& from : kCases) {
        for (const Dictionary& to : kCases) {
            SCOPED_TRACE(from.AsJSON() + " over " + to.AsJSON());
            Dictionary target = to;
            target = from;
            EXPECT_EQ(target.AsJSON(), from.AsJSON());
            Dictionary moved = std::move(target);
            EXPECT_EQ(target.Size(), 0u); // as promised
            target = to;
            target = std::move(moved);
            EXPECT_EQ(target.AsJSON(), from.AsJSON());
            EXPECT_EQ(moved.Size(), 0u);
            target.Set("z", true);
            EXPECT_EQ(target.Size(), from.Size() + 1);
        }
    }
}

TEST(Dictionary, KnowsCopiesOfItsOneText)
{
    const ImmutableString key = ImmutableString::FromLiteral("a key that is too long to lie inline");
    const ImmutableString text("a text that is too long to lie inline");
    const ImmutableString equal(text.View());
    EXPECT_TRUE(Dictionary(key, text).IsCopyOf(key, text));
    EXPECT_FALSE(Dictionary(key, text).IsCopyOf(key, equal));
    EXPECT_FALSE(Dictionary(key, text).IsCopyOf(text, text));
    EXPECT_FALSE(Dictionary().IsCopyOf({}, {}));
    EXPECT_FALSE(Dictionary({{key, 1}}).IsCopyOf(key, text));
    Dictionary two(key, text);
    two.Set("more", 1);
    EXPECT_FALSE(two.IsCopyOf(key, text));
}

} // namespace
