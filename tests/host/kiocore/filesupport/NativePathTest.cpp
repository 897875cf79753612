#include "support/TemporaryFolder.h"

#include <kiocore/filesupport/NativePath.h>

#include <gtest/gtest.h>

#include <random>

namespace kiocore::filesupport {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(NativePath, EveryByteOfANameComesBack)
{
    const struct {
        const char* name;
        std::string_view native;
        std::u16string_view path;
    } kCases[] = {
        {"empty", "", u""},
        {"ASCII shorter than a block", "/a/b.wav", u"/a/b.wav"},
        {"ASCII longer than a block", "/0123456789/0123456789/0123456789",
         u"/0123456789/0123456789/0123456789"},
        {"the last unit of a block is not ASCII", "/23456789abcde\xC3\xA4", u"/23456789abcde\u00E4"},
        {"control characters", "\x01\t\n\x1F\x7F", u"\x01\t\n\x1F\x7F"},
        {"two bytes", "\xC3\xA4", u"\u00E4"},
        {"three bytes", "\xE9\x9F\xB3.pek", u"\u97F3.pek"},
        {"an emoji", "\xF0\x9F\x8E\xAC.mov", u"\U0001F3AC.mov"},
        {"a byte that starts nothing", "a\xFFz", u"a\xDCFFz"},
        {"a continuation alone", "\x80", u"\xDC80"},
        {"cut short at the end", "\xE9\x9F", u"\xDCE9\xDC9F"},
        {"cut short before ASCII", "\xF0\x9F\x8Ex", u"\xDCF0\xDC9F\xDC8Ex"},
        {"an overlong slash is no slash", "\xC0\xAF", u"\xDCC0\xDCAF"},
        {"a surrogate in UTF-8", "\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},
        {"beyond the last character", "\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(FromNative(test.native), test.path);
        EXPECT_EQ(ToNative(test.path), test.native);
        EXPECT_EQ(NativePath(test.path).CString(), std::string(test.native));
        UTF16String appended = u"/root/";
        AppendFromNative(test.native, appended);
        EXPECT_EQ(appended, u"/root/" + UTF16String(test.path));
    }
}

TEST(NativePath, RandomBytesComeBack)
{
    std::mt19937 random(20140401);
    // Mostly bytes that sequences are made of, so that half-right ones come up.
    static constexpr unsigned char kBytes[] = {'a',  '/',  0x80, 0x9F, 0xA0, 0xBF, 0xC2,
                                               0xE0, 0xED, 0xEF, 0xF0, 0xF4, 0xFF};
    for (int round = 0; round < 20000; ++round) {
        std::string native(random() % 24, 'a');
        for (char& byte : native) {
            byte = static_cast<char>(kBytes[random() % sizeof(kBytes)]);
        }
        ASSERT_EQ(ToNative(FromNative(native)), native) << testing::PrintToString(native);
    }
}

TEST(NativePath, SurrogatesThatNoNameCameFromBecomeTheReplacementCharacter)
{
    EXPECT_EQ(ToNative(u"\xD800"sv), "\xEF\xBF\xBD");
    EXPECT_EQ(ToNative(u"\xDC7F\xDD00"sv), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(ToNative(u"\xD83D\xDC80"sv), "\xF0\x9F\x92\x80") << "a pair is a character, not a byte";
}

TEST(NativePath, WorksAtEveryLengthAndOnlyLongPathsLeaveTheStack)
{
    for (const char16_t unit : {u'a', u'\u00E4', u'\u97F3'}) {
        for (std::size_t size = 0; size < 1100; ++size) {
            const UTF16String path(size, unit);
            const NativePath native(path);
            ASSERT_EQ(native.View(), ToNative(path)) << size;
            ASSERT_EQ(std::string(native.CString()), native.View()) << size;
        }
    }
    EXPECT_EQ(NativePath(UTF16String(32768, u'x')).View().size(), 32768u);
}

TEST(NativePath, AZeroUnitNamesNoFile)
{
    for (const std::size_t before : {0u, 5u, 511u, 600u}) {
        UTF16String path(before, u'a');
        path += u'\0';
        path += u"/etc/passwd";
        EXPECT_STREQ(NativePath(path).CString(), "") << before;
    }
}

TEST(NativePath, ConvertingIntoALargeEnoughTextKeepsItsMemory)
{
    std::string native(64, ' ');
    const char* const memory = native.data();
    ToNative(u"/a/b", native);
    EXPECT_EQ(native, "/a/b");
    EXPECT_EQ(native.data(), memory);
    UTF16String path(64, u' ');
    const char16_t* const units = path.data();
    FromNative("/a/\xC3\xA4", path);
    EXPECT_EQ(path, u"/a/\u00E4");
    EXPECT_EQ(path.data(), units);
}

} // namespace
} // namespace kiocore::filesupport
