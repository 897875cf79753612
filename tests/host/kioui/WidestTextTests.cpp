#include "drawbot/JoiningGlyphs.h"
#include "drawbot/TextWidths.h"
#include <kioui/ui/NodeManager.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetricsF>

#include <cmath>
#include <random>

using namespace kioui;
using drawbot::JoiningGlyphs;
using drawbot::TextWidths;
using drawbot::WidestText;
using kiocore::UTF16String;
using kiocore::UTF16View;

namespace {

class WidestTextTest : public testing::Test {
protected:
    /// The tests' own font, and those that stand for a desktop's where they are installed.
    static std::vector<UTF16String> Families()
    {
        std::vector<UTF16String> families = {ui::GetFontName(0)};
        for (const char16_t* family : {u"DejaVu Sans", u"DejaVu Serif", u"VL Gothic", u"VL PGothic"}) {
            if (QFontDatabase::families().contains(QString::fromUtf16(family))) {
                families.push_back(family);
            }
        }
        return families;
    }
    static QFont FontOf(const UTF16String& inFamily, int inSize)
    {
        QFont font = QApplication::font();
        font.setFamily(QString::fromStdU16String(inFamily));
        font.setPixelSize(inSize);
        font.setKerning(false);
        return font;
    }
    static std::int64_t In64ths(double inWidth) { return std::llround(inWidth * 64); }

    const support::ScTestApplication mApplication;
};

double Measured(const QFontMetricsF& inMetrics, const UTF16String& inText)
{
    return inMetrics.horizontalAdvance(QString::fromStdU16String(inText));
}

/// Texts of pieces that are joined, shaped, turned round or missing in one font or another.
class RandomTexts {
public:
    explicit RandomTexts(unsigned inSeed) : mRandom(inSeed) {}

    UTF16String Next()
    {
        static const std::vector<std::vector<UTF16String>> kKinds = {
            {u"ff", u"fi", u"ffi", u"fl", u"f", u"i", u"j", u"l", u"t", u"E", u"ect", u" ", u"Wave"},
            {u"A", u"V", u"To", u"0", u"17", u"_", u".", u"-", u"->", u"(", u")", u"/", u"mov"},
            {u"ä", u"ö", u"ß", u"é", u"Ş", u"ț", u"ĳ", u"ﬁ", u"ǆ", u"Ż"},
            {u"e\u0301", u"o\u0308", u"i\u0307", u"f\u0302", u"A\u030A", u"\u0301", u"x\u0335", u" "},
            {u"日", u"本", u"語", u"の", u"は\u3099", u"が", u"ア", u"ー", u"、", u"。", u"「", u"　", u"A",
             u"1"},
            {u"한", u"글", u"\u1112\u1161\u11AB", u" ", u"a"},
            {u"Ω", u"α", u"ώ", u"Ж", u"й", u"и\u0306", u"б", u" "},
            {u"שלום", u"ש\u05B8", u"العربية", u"لا", u" ", u"12", u"(", u"a"},
            {u"क्षि", u"हिन्दी", u"தமிழ்", u"ไทยที่", u" ", u"a", u"1"},
            {u"\U0001F600", u"\U0001F468\u200D\U0001F469\u200D\U0001F467", u"\u2764\uFE0F",
             u"\U0001F44D\U0001F3FD", u"\U0001F1E9\U0001F1EA", u"a", u" "},
            {u"\t", u"\n", u"\u00AD", u"\u200B", u"\u200D", u"\u2028", u"\u202E", u"\xD800", u"\xDC00",
             u"\uFFFF", u"1\u20442", u"a", u"\u2003", u"\u00A0", u"\uE000", u"\U000E0101", u"葛"},
        };
        UTF16String text;
        const std::size_t kind = mRandom() % kKinds.size();
        for (auto pieces = mRandom() % 14; pieces > 0; --pieces) {
            // Mostly of one kind, so that runs are long enough to go wrong.
            const auto& from = kKinds[mRandom() % 6 == 0 ? mRandom() % kKinds.size() : kind];
            text += from[mRandom() % from.size()];
        }
        return text;
    }

private:
    std::mt19937 mRandom;
};

} // namespace

TEST_F(WidestTextTest, EachTextIsAsWideAsQtLaysItOut)
{
    for (const UTF16String& family : Families()) {
        for (const int size : {12, 13, 29}) {
            const QFont font = FontOf(family, size);
            const QFontMetricsF metrics(font);
            TextWidths widths(font);
            RandomTexts texts{unsigned(size)};
            for (int i = 0; i < 4000; ++i) {
                const UTF16String text = texts.Next();
                ASSERT_EQ(widths.Measure(text), In64ths(Measured(metrics, text)))
                    << font.family().toStdString() << " " << size << ": \"" << kiocore::utility::ToUTF8(text)
                    << "\", number " << i;
            }
        }
    }
}

TEST_F(WidestTextTest, EveryPairOfLettersIsAsWideAsQtLaysItOut)
{
    UTF16String letters;
    for (char16_t letter = u' '; letter < 0x180; ++letter) {
        letters += letter;
    }
    for (const UTF16String& family : Families()) {
        const QFont font = FontOf(family, 13);
        const QFontMetricsF metrics(font);
        TextWidths widths(font);
        std::mt19937 random(3);
        for (int i = 0; i < 6000; ++i) {
            const UTF16String pair = {u'x', letters[random() % letters.size()],
                                      letters[random() % letters.size()], u'x'};
            ASSERT_EQ(widths.Measure(pair), In64ths(Measured(metrics, pair)))
                << font.family().toStdString() << ": \"" << kiocore::utility::ToUTF8(pair) << "\"";
        }
    }
}

TEST_F(WidestTextTest, IsTheRoundedUpWidthOfTheWidest)
{
    RandomTexts texts(5);
    const std::vector<UTF16String> families = Families();
    for (int round = 0; round < 300; ++round) {
        const auto family = families[std::size_t(round) % families.size()];
        const FontRef font = UI_NodeManager::GetDefaultDrawSupplier()->NewFont(family, float(9 + round % 9));
        const QFontMetricsF metrics(FontOf(family, 9 + round % 9));
        WidestText widest(font);
        EXPECT_EQ(widest.RoundedUpWidth(), 0);
        double expected = 0;
        for (int i = 0; i < 1 + round % 40; ++i) {
            const UTF16String text = texts.Next();
            widest.Add(text);
            expected = std::max(expected, Measured(metrics, text));
            ASSERT_EQ(widest.RoundedUpWidth(), float(std::ceil(expected))) << kiocore::utility::ToUTF8(text);
        }
    }
}

TEST_F(WidestTextTest, LongTextsAndMissingFontsDoNoHarm)
{
    const FontRef font = UI_NodeManager::GetDefaultDrawSupplier()->NewFont(u"", 13);
    const QFontMetricsF metrics(FontOf(ui::GetFontName(0), 13));
    for (const std::size_t length : {3999, 4000, 4001, 4096, 4097, 20'000}) {
        SCOPED_TRACE(length);
        UTF16String text;
        while (text.size() < length) {
            text += u"ffi";
        }
        text.resize(length);
        WidestText widest(font);
        widest.Add(text);
        EXPECT_EQ(widest.RoundedUpWidth(), std::ceil(Measured(metrics, text)));
    }
    WidestText nothing(nullptr);
    nothing.Add(u"text");
    EXPECT_EQ(nothing.RoundedUpWidth(), 0);
}

TEST_F(WidestTextTest, FontsOfTheHostsOwnAreAskedForEachText)
{
    class Fixed final : public drawbot::Font {
    public:
        float MeasureWidth(UTF16View inText) const override { return float(inText.size()) * 7.5f; }
        float Ascent() const override { return 0; }
        float Descent() const override { return 0; }
    };
    WidestText widest(std::make_shared<const Fixed>());
    for (const char16_t* text : {u"a", u"abc", u"ab"}) {
        widest.Add(text);
    }
    EXPECT_EQ(widest.RoundedUpWidth(), 23);
}

namespace {

QByteArray Bytes(std::initializer_list<int> inNumbers)
{
    QByteArray bytes;
    for (const int number : inNumbers) {
        bytes.append(char(number >> 8)).append(char(number & 0xFF));
    }
    return bytes;
}

/// A table with one feature, of one lookup: glyphs 5 and 6 become glyph 9.
QByteArray LigatureTable(int inTagStart, int inTagEnd, int inType)
{
    return Bytes({1, 0,          10,       10, 24,    // version, scripts, features, lookups
                  1, inTagStart, inTagEnd, 8,         // features
                  0, 1,          0,                   // the feature
                  1, 4,          inType,   0,  1,  8, // lookups
                  1, 8,          1,        14,        // ligatures
                  1, 1,          5,                   // that begin with
                  1, 4,          9,        2,  6});   // and go on with
}

} // namespace

TEST(JoiningGlyphs, AreThoseOfRulesInUse)
{
    const JoiningGlyphs ligatures(LigatureTable('l' << 8 | 'i', 'g' << 8 | 'a', 4), {});
    EXPECT_TRUE(ligatures.Contains(5));
    EXPECT_TRUE(ligatures.Contains(6));
    EXPECT_FALSE(ligatures.Contains(7));
    EXPECT_FALSE(JoiningGlyphs(LigatureTable('d' << 8 | 'l', 'i' << 8 | 'g', 4), {}).Contains(5))
        << "nobody asks for these";
    EXPECT_TRUE(JoiningGlyphs(LigatureTable('l' << 8 | 'i', 'g' << 8 | 'a', 99), {}).Contains(7))
        << "unknown rules may be about any glyph";
    EXPECT_FALSE(JoiningGlyphs({}, {}).Contains(5)) << "no tables, no rules";
    EXPECT_TRUE(JoiningGlyphs({}, {}).Contains(70'000)) << "no glyph of a font";
}

TEST(JoiningGlyphs, DamagedTablesNameAllGlyphs)
{
    const QByteArray whole = LigatureTable('l' << 8 | 'i', 'g' << 8 | 'a', 4);
    for (qsizetype size = 1; size < whole.size(); ++size) {
        EXPECT_TRUE(JoiningGlyphs(whole.left(size), {}).Contains(7)) << size;
    }
    const QByteArray damaged(4000, '\xFF');
    EXPECT_TRUE(JoiningGlyphs(damaged, {}).Contains(5));
    EXPECT_TRUE(JoiningGlyphs({}, damaged).Contains(5));
}
