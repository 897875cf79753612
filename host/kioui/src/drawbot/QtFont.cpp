#include "QtFont.h"

#include "TextWidths.h"

#include "ui/NodeImpl.h"

#include <QApplication>

namespace kioui::drawbot {
namespace {

QFont WithoutKerning(QFont inFont)
{
    // Names in a list stand below each other: the same letters are to be as wide everywhere.
    inFont.setKerning(false);
    return inFont;
}

} // namespace

QtFont::QtFont(const QFont& inFont) : mFont(WithoutKerning(inFont)), mMetrics(mFont) {}
QtFont::~QtFont() = default;

float QtFont::MeasureWidth(UTF16View inText) const
{
    return float(mMetrics.horizontalAdvance(ui::ToQt(inText)));
}

TextWidths& QtFont::GetWidths() const
{
    if (!mWidths) {
        mWidths = std::make_unique<TextWidths>(mFont);
    }
    return *mWidths;
}

const QFont& FontOf(const drawbot::Font& inFont)
{
    if (const auto* font = dynamic_cast<const QtFont*>(&inFont)) {
        return font->GetFont();
    }
    static QFont own;
    own = QApplication::font();
    return own;
}

} // namespace kioui::drawbot
