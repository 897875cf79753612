#include "Truncation.h"

#include "ui/NodeImpl.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <vector>

namespace kioui::drawbot {
namespace {

constexpr char16_t kEllipsis = u'…';
// Of a text this long the beginning is looked at first: measuring all of a megabyte for a row of a list that
// shows 30 characters would be felt.
constexpr std::size_t kLongText = 1024;

bool Fits(UTF16View inText, const Font& inFont, float inWidth)
{
    if (inText.size() > kLongText) {
        const UTF16View beginning = inText.substr(0, kLongText / 2);
        if (inFont.MeasureWidth(beginning) > 2 * std::max(inWidth, 0.0f)) {
            return false;
        }
    }
    return inFont.MeasureWidth(inText) <= inWidth;
}

/// Where the text may be cut, its ends among them: between what readers take for one character.
std::vector<std::size_t> Boundaries(UTF16View inText)
{
    const QString text = ui::ToQt(inText);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    std::vector<std::size_t> boundaries = {0};
    while (finder.toNextBoundary() > 0) {
        boundaries.push_back(std::size_t(finder.position()));
    }
    return boundaries;
}

/// The text with inKept of its characters, and "…" for the others.
UTF16String Shortened(UTF16View inText, const std::vector<std::size_t>& inBoundaries, std::size_t inKept,
                      TextTruncation inTruncation)
{
    const std::size_t count = inBoundaries.size() - 1;
    std::size_t atStart = 0;
    switch (inTruncation) {
    case TextTruncation::kNone:
    case TextTruncation::kEnd:
        atStart = inKept;
        break;
    case TextTruncation::kStart:
        break;
    case TextTruncation::kMiddle:
        atStart = inKept / 2; // the end tells files of one folder apart: it gets the odd one
        break;
    }
    const std::size_t atEnd = inKept - atStart;
    UTF16String shortened(inText.substr(0, inBoundaries[atStart]));
    shortened += kEllipsis;
    shortened += inText.substr(inBoundaries[count - atEnd]);
    return shortened;
}

} // namespace

UTF16String Truncate(UTF16View inText, const FontRef& inFont, float inWidth, TextTruncation inTruncation)
{
    if (!inFont || inTruncation == TextTruncation::kNone || Fits(inText, *inFont, inWidth)) {
        return UTF16String(inText);
    }
    const std::vector<std::size_t> boundaries = Boundaries(inText);
    const auto fitting = [&](std::size_t inKept) {
        UTF16String shortened = Shortened(inText, boundaries, inKept, inTruncation);
        return inFont->MeasureWidth(shortened) <= inWidth ? shortened : UTF16String();
    };
    UTF16String best = fitting(0);
    if (best.empty()) {
        return best;
    }
    // Doubling first, so that what is measured is never much longer than what fits.
    const std::size_t count = boundaries.size() - 1;
    std::size_t fits = 0;
    std::size_t tooMany = count;
    for (std::size_t kept = 1; kept < count; kept *= 2) {
        UTF16String shortened = fitting(kept);
        if (shortened.empty()) {
            tooMany = kept;
            break;
        }
        fits = kept;
        best = std::move(shortened);
    }
    while (tooMany - fits > 1) {
        const std::size_t kept = fits + (tooMany - fits) / 2;
        if (UTF16String shortened = fitting(kept); shortened.empty()) {
            tooMany = kept;
        } else {
            fits = kept;
            best = std::move(shortened);
        }
    }
    return best;
}

} // namespace kioui::drawbot
