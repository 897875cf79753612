#include "UIBench.h"

#include "support/Interleaved.h"

#include <kioui/drawbot/Drawbot.h>
#include <kioui/ui/Application.h>
#include <kioui/ui/NodeManager.h>

#include <QApplication>
#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace bench {
namespace {

using kiocore::UTF16String;

constexpr std::size_t kRows = 10'000;
constexpr std::size_t kColumns = 5;
constexpr std::size_t kPairs = 5;
constexpr double kGoal = 0.1;

using Column = std::vector<UTF16String>;

/// What lists of effects and of media show: names, categories, numbers, paths below a few folders; one in ten
/// texts with letters that are not English.
std::vector<Column> MakeColumns()
{
    static const std::vector<UTF16String> kWords = {
        u"Gaussian", u"Blur",   u"Effect",    u"Offset", u"Color",  u"Shuffle", u"Film",  u"Grain",
        u"Buffer",   u"Levels", u"Profile",   u"Fill",   u"Light",  u"Reflect", u"Wave",  u"TILE",
        u"AVX",      u"Alpha",  u"Transform", u"Glow",   u"Waffle", u"Lift",    u"Stitch"};
    static const std::vector<UTF16String> kOthers = {
        u"Schärfe",     u"Größe", u"e\u0301te\u0301", u"映像エフェクト", u"ぼかし (強)", u"\U0001F3AC cut",
        u"Ελλάδα",      u"Кадр",  u"한글 효과",       u"cafe\u0301 №5",  u"مؤثرات",      u"प्रभाव",
        u"Naïve ﬁlter", u"Łódź",  u"日本語 A001"};
    std::mt19937 random(1);
    const auto pick = [&random](const std::vector<UTF16String>& inFrom) {
        return inFrom[random() % inFrom.size()];
    };
    const auto decimal = [&random](unsigned inBelow) {
        UTF16String text;
        kiocore::utility::AppendDecimal(text, random() % inBelow);
        return text;
    };
    const auto name = [&] {
        UTF16String text = pick(kWords) + u" " + pick(kWords);
        if (random() % 10 == 0) {
            text += u" " + pick(kOthers);
        }
        return text + u" " + decimal(1000);
    };
    std::vector<Column> columns(kColumns);
    for (std::size_t row = 0; row < kRows; ++row) {
        columns[0].push_back(name());
        columns[1].push_back(pick(kWords));
        columns[2].push_back(decimal(100'000) + u" frames, " + decimal(60) + u" fps");
        columns[3].push_back(u"/media/projects/Feature Film/Rushes/Day " + decimal(40) + u"/" + name() +
                             u".mov");
        columns[4].push_back(u"/usr/lib/effects/" + pick(kWords) + u"/" + name() + u".so");
    }
    return columns;
}

QFont FontToMeasureIn(int inSize)
{
    QFont font = QApplication::font();
    font.setPixelSize(inSize);
    font.setKerning(false);
    return font;
}

void BestFitOf(const char* inWhat, const std::vector<Column>& inColumns, std::size_t inFirst,
               std::size_t inEnd)
{
    constexpr int kSize = 13;
    const QFontMetricsF metrics(FontToMeasureIn(kSize));
    std::vector<int> measured(kColumns);
    std::vector<int> ours(kColumns);
    const auto floor = [&] {
        for (std::size_t column = inFirst; column < inEnd; ++column) {
            double widest = 0;
            for (const UTF16String& text : inColumns[column]) {
                const QString measurable(reinterpret_cast<const QChar*>(text.data()), qsizetype(text.size()));
                widest = std::max(widest, metrics.horizontalAdvance(measurable));
            }
            measured[column] = int(std::ceil(widest));
        }
    };
    const auto best = [&] {
        const auto* supplier = kioui::UI_NodeManager::GetDefaultDrawSupplier();
        for (std::size_t column = inFirst; column < inEnd; ++column) {
            kioui::drawbot::WidestText widest(supplier->NewFont(u"", kSize));
            for (const UTF16String& text : inColumns[column]) {
                widest.Add(text);
            }
            ours[column] = int(widest.RoundedUpWidth());
        }
    };
    const double first = Timed(CLOCK_MONOTONIC, best); // also learns the letters
    const Comparison comparison =
        Compare([&] { return Timed(CLOCK_MONOTONIC, floor); }, [&] { return Timed(CLOCK_MONOTONIC, best); },
                kPairs, (inEnd - inFirst) * kRows);
    PrintRow(inWhat, comparison, kGoal);
    char note[200];
    std::snprintf(note, sizeof note, "the first time, with nothing remembered: ratio %.3f; widths %s",
                  first / (comparison.floor * double((inEnd - inFirst) * kRows)),
                  measured == ours ? "equal" : "NOT EQUAL");
    PrintNote(note);
}

} // namespace

void BenchBestFit()
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const kioui::ui::ScApplication application({});
    const std::vector<Column> columns = MakeColumns();
    PrintHeader("best fit of columns, 10,000 rows: measured text by text | remembered widths");
    BestFitOf("all five columns, a text", columns, 0, kColumns);
    const char* const kNames[] = {"names", "one word", "numbers", "paths of media", "paths of effects"};
    for (std::size_t column = 0; column < kColumns; ++column) {
        BestFitOf(kNames[column], columns, column, column + 1);
    }
}

} // namespace bench
