#include <kiocore/config/Errors.h>
#include <kiocore/utility/Coercion.h>
#include <kiocore/utility/Processor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

using kiocore::utility::Coercion;

namespace {

template <typename T>
std::optional<T> Converted(const char16_t* inText)
{
    try {
        return Coercion<T>(inText);
    } catch (const kiocore::kio_exception& exception) {
        EXPECT_EQ(exception.Code(), kiocore::kError_BadConversion);
        EXPECT_THAT(exception.what(), testing::HasSubstr(kiocore::utility::ToUTF8(inText)));
        return std::nullopt;
    }
}

} // namespace

TEST(Coercion, TakesWhatTheBeginningOfATextSays)
{
    const struct {
        const char* name;
        const char16_t* text;
        std::optional<int> whole;
        std::optional<double> real;
    } kCases[] = {
        {"version", u"14.0", 14, 14.0},
        {"half version", u"13.5.2", 13, 13.5},
        {"negative", u"-7 frames", -7, -7.0},
        {"largest", u"2147483647", 2147483647, 2147483647.0},
        {"one above the largest", u"2147483648", std::nullopt, 2147483648.0},
        {"above all doubles", u"1e999", 1, std::nullopt},
        {"followed by other script", u"12\u00fc", 12, 12.0},
        {"digits of other scripts", u"\u0661\u0662", std::nullopt, std::nullopt},
        {"a word that means a number", u"inf", std::nullopt, std::nullopt},
        {"words", u"v14", std::nullopt, std::nullopt},
        {"white space first", u" 14", std::nullopt, std::nullopt},
        {"nothing", u"", std::nullopt, std::nullopt},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(Converted<int>(test.text), test.whole);
        EXPECT_EQ(Converted<double>(test.text), test.real);
    }
}

TEST(Processor, IsReplacedForAScope)
{
    const bool real = kiocore::utility::ProcessorSupportsSSE();
    {
        kiocore::utility::ScReplaceProcessorCapabilities none(false);
        {
            kiocore::utility::ScReplaceProcessorCapabilities some(true);
            EXPECT_TRUE(kiocore::utility::ProcessorSupportsSSE());
        }
        EXPECT_FALSE(kiocore::utility::ProcessorSupportsSSE());
    }
    EXPECT_EQ(kiocore::utility::ProcessorSupportsSSE(), real);
}
