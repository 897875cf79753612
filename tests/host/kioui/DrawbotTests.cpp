#include "drawbot/PainterDrawbot.h"
#include <kioui/ui/NodeManager.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

#include <QImage>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <cmath>
#include <limits>
#include <random>

using namespace kioui;
using drawbot::PainterDrawbot;
using kiocore::UTF16String;

namespace {

constexpr skins::Color kRed{1, 0, 0};
constexpr skins::Color kBlue{0, 0, 1};

class DrawbotTest : public testing::Test {
protected:
    const SupplierInterface& Supplier() const { return *UI_NodeManager::GetDefaultDrawSupplier(); }
    FontRef NewFont(float inSize) const { return Supplier().NewFont(u"", inSize); }

    const support::ScTestApplication mApplication;
};

/// A picture to draw in and to look at.
struct Picture {
    Picture() : image(200, 60, QImage::Format_RGB32) { image.fill(Qt::white); }

    /// The rectangle around all that was drawn; empty when nothing was.
    QRect Drawn() const
    {
        QRect drawn;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) != Qt::white) {
                    drawn |= QRect(x, y, 1, 1);
                }
            }
        }
        return drawn;
    }

    QImage image;
};

} // namespace

TEST_F(DrawbotTest, FillsNoMoreThanAllClipsLeave)
{
    const struct {
        const char* name;
        std::vector<RectT<float>> clips;
        QRect expected;
    } kCases[] = {
        {"no clip", {}, QRect(10, 10, 100, 40)},
        {"one", {{20, 0, 200, 60}}, QRect(20, 10, 90, 40)},
        {"two are both kept to", {{20, 0, 200, 60}, {0, 0, 60, 30}}, QRect(20, 10, 40, 20)},
        {"a larger one widens nothing", {{20, 20, 40, 40}, {0, 0, 200, 60}}, QRect(20, 20, 20, 20)},
        {"beside each other", {{20, 20, 40, 40}, {50, 20, 70, 40}}, QRect()},
        {"an empty one", {{20, 20, 20, 40}}, QRect()},
        {"one with its edges swapped", {{40, 20, 20, 40}}, QRect()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        Picture picture;
        QPainter painter(&picture.image);
        PainterDrawbot drawbot(painter);
        for (const auto& clip : test.clips) {
            drawbot.Clip(clip);
        }
        drawbot.FillRect({10, 10, 110, 50}, kRed);
        EXPECT_EQ(picture.Drawn(), test.expected);
        if (!test.expected.isEmpty()) {
            EXPECT_EQ(picture.image.pixelColor(test.expected.center()), QColor(255, 0, 0));
        }
    }
}

TEST_F(DrawbotTest, RestoringGoesBackToTheClipThatWasSaved)
{
    Picture picture;
    QPainter painter(&picture.image);
    {
        PainterDrawbot drawbot(painter);
        drawbot.RestoreState(); // nothing was saved: the painter's own state is not ours to take
        drawbot.Clip({0, 0, 50, 60});
        {
            const drawbot::ScDrawState outer(drawbot);
            drawbot.Clip({0, 0, 20, 60});
            drawbot.SaveState();
            drawbot.Clip({0, 0, 1, 1});
            drawbot.RestoreState();
            drawbot.FillRect({0, 0, 200, 10}, kRed);
        }
        drawbot.FillRect({0, 10, 200, 20}, kRed);
        drawbot.SaveState(); // and never restored
        drawbot.Clip({0, 0, 1, 1});
    }
    painter.fillRect(0, 20, 200, 10, Qt::red);
    painter.end();
    const auto lengthAt = [&](int inY) {
        int length = 0;
        while (length < 200 && picture.image.pixelColor(length, inY) == QColor(255, 0, 0)) {
            ++length;
        }
        return length;
    };
    EXPECT_EQ(lengthAt(5), 20);
    EXPECT_EQ(lengthAt(15), 50);
    EXPECT_EQ(lengthAt(25), 200) << "the painter has its state back";
}

TEST_F(DrawbotTest, DrawsTextFromTheLeftEndOfTheBaseLineInItsColour)
{
    Picture picture;
    QPainter painter(&picture.image);
    PainterDrawbot drawbot(painter);
    const FontRef font = NewFont(20);
    const UTF16String text = u"HHHH";
    drawbot.DrawString(text, font, kBlue, {30, 40});
    drawbot.DrawString(text, nullptr, kBlue, {30, 20});
    drawbot.DrawString(u"", font, kBlue, {30, 20});

    const QRect drawn = picture.Drawn();
    EXPECT_EQ(drawn.bottom(), 39) << "a letter without descender stands on the base line";
    EXPECT_GE(drawn.left(), 30);
    EXPECT_LE(drawn.right() + 1, 30 + std::ceil(font->MeasureWidth(text)));
    EXPECT_GE(drawn.top(), 40 - std::ceil(font->Ascent()));
    bool hasColour = false;
    for (int x = drawn.left(); x <= drawn.right(); ++x) {
        hasColour = hasColour || picture.image.pixelColor(x, 39) == QColor(0, 0, 255);
    }
    EXPECT_TRUE(hasColour);
}

TEST_F(DrawbotTest, FontsComeInWholeSizes)
{
    const UTF16String text(200, u'H');
    const auto width = [&](float inSize) { return NewFont(inSize)->MeasureWidth(text); };
    EXPECT_EQ(width(12.4f), width(12));
    EXPECT_EQ(width(12.5f), width(13));
    EXPECT_LT(width(12), width(13));
    EXPECT_EQ(width(0.1f), width(1)) << "as small as can be, but not gone";
    EXPECT_NEAR(width(24), 2 * width(12), width(12) / 8) << "hinting may round each letter";
    EXPECT_GT(width(1e9f), width(1000));
    for (const float size :
         {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_FALSE(NewFont(size)) << size;
    }
    EXPECT_TRUE(Supplier().NewFont(u"No Such Family", 12)) << "another is taken";
    EXPECT_TRUE(Supplier().NewFont(ui::GetFontName(0), ui::GetFontSize(0)));
}

TEST_F(DrawbotTest, ShortensWhereItIsTold)
{
    const FontRef font = NewFont(13);
    const auto measuring = Supplier().NewMeasuringDrawbot();
    const auto width = [&](const UTF16String& inText) { return measuring->MeasureString(inText, font); };
    const UTF16String alphabet = u"abcdefghijklmnop";
    const UTF16String accents = u"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301";
    const UTF16String faces = u"\U0001F600\U0001F600\U0001F600\U0001F600";
    const UTF16String family = u"ab\U0001F468\u200D\U0001F469\u200D\U0001F467cd";
    const struct {
        const char* name;
        UTF16String text;
        float width;
        TextTruncation truncation;
        UTF16String expected;
    } kCases[] = {
        {"exactly as wide as its place", alphabet, width(alphabet), TextTruncation::kEnd, alphabet},
        {"the end", alphabet, width(u"abcd…"), TextTruncation::kEnd, u"abcd…"},
        {"the start", alphabet, width(u"…mnop"), TextTruncation::kStart, u"…mnop"},
        {"the middle", alphabet, width(u"ab…op"), TextTruncation::kMiddle, u"ab…op"},
        {"left as it is", alphabet, 1, TextTruncation::kNone, alphabet},
        {"only the sign fits", alphabet, width(u"…"), TextTruncation::kEnd, u"…"},
        {"not even the sign fits", alphabet, width(u"…") - 1, TextTruncation::kMiddle, u""},
        {"no place", alphabet, 0, TextTruncation::kEnd, u""},
        {"less than no place", alphabet, -5, TextTruncation::kEnd, u""},
        {"no number", alphabet, std::numeric_limits<float>::quiet_NaN(), TextTruncation::kEnd, u""},
        {"nothing fits everywhere", u"", 0, TextTruncation::kEnd, u""},
        {"letters keep their accents", accents, width(u"e\u0301e\u0301…"), TextTruncation::kEnd,
         u"e\u0301e\u0301…"},
        {"pairs stay together", faces, width(u"\U0001F600…\U0001F600"), TextTruncation::kMiddle,
         u"\U0001F600…\U0001F600"},
        {"a family stays together", family, width(u"ab…") + 2, TextTruncation::kEnd, u"ab…"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(measuring->TruncateString(test.text, font, test.width, test.truncation), test.expected);
    }
    EXPECT_EQ(measuring->TruncateString(alphabet, nullptr, 1, TextTruncation::kEnd), alphabet);
    EXPECT_EQ(measuring->MeasureString(alphabet, nullptr), 0);
}

TEST_F(DrawbotTest, WhatIsShortenedFitsAndIsMadeOfWholeCharacters)
{
    const FontRef font = NewFont(13);
    const auto measuring = Supplier().NewMeasuringDrawbot();
    const UTF16String kPieces[] = {u"a",       u"W",          u"i",      u" ",      u"/",
                                   u"o\u0308", u"\U0001F600", u"日本",   u"שלום",   u"العربية",
                                   u"क्षि",     u"\xD800",     u"\xDC00", u"\u200D", u"\n"};
    std::mt19937 random(7);
    for (int round = 0; round < 400; ++round) {
        UTF16String text;
        for (auto pieces = random() % 40; pieces > 0; --pieces) {
            text += kPieces[random() % std::size(kPieces)];
        }
        const auto truncation = TextTruncation(1 + random() % 3);
        const float width = float(random() % 200);
        const UTF16String shortened = measuring->TruncateString(text, font, width, truncation);
        EXPECT_LE(measuring->MeasureString(shortened, font), width);
        const std::size_t sign = shortened.find(u'…');
        if (shortened == text || sign == UTF16String::npos) {
            continue;
        }
        EXPECT_EQ(text.substr(0, sign), shortened.substr(0, sign));
        const UTF16String end = shortened.substr(sign + 1);
        EXPECT_EQ(text.substr(text.size() - end.size()), end);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, QString::fromStdU16String(text));
        for (const std::size_t cut : {sign, text.size() - end.size()}) {
            finder.setPosition(qsizetype(cut));
            EXPECT_TRUE(finder.isAtBoundary()) << cut;
        }
    }
}

TEST_F(DrawbotTest, VeryLongTextsAreShortenedLikeOthers)
{
    const FontRef font = NewFont(13);
    const auto measuring = Supplier().NewMeasuringDrawbot();
    const UTF16String text(1'000'000, u'm');
    const float width = measuring->MeasureString(u"mm…mm", font);
    EXPECT_EQ(measuring->TruncateString(text, font, width, TextTruncation::kMiddle), u"mm…mm");
    EXPECT_EQ(measuring->TruncateString(text, font, width, TextTruncation::kEnd), u"mmmm…");
    const UTF16String invisible(5000, u'\u200B');
    EXPECT_EQ(measuring->TruncateString(invisible, font, 1, TextTruncation::kEnd), invisible);
}
