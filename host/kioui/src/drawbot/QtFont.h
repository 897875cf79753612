#pragma once

// A font of Qt's behind the face that the host sees. Included by sources of kioui only.

#include <kioui/drawbot/Drawbot.h>

#include <QFont>
#include <QFontMetricsF>

namespace kioui::drawbot {

class TextWidths;

/// Measures with Qt's own metrics, so that widgets in the same font are as wide.
///
/// Threading: UI thread only.
class QtFont final : public Font {
public:
    /// @param inFont  as it is to be drawn; kerning is switched off.
    explicit QtFont(const QFont& inFont);
    ~QtFont() override;

    float MeasureWidth(UTF16View inText) const override;
    float Ascent() const override { return float(mMetrics.ascent()); }
    float Descent() const override { return float(mMetrics.descent()); }

    const QFont& GetFont() const { return mFont; }
    const QFontMetricsF& GetMetrics() const { return mMetrics; }
    /// What is remembered of the font's letters; valid as long as the font.
    TextWidths& GetWidths() const;

private:
    const QFont mFont;
    const QFontMetricsF mMetrics;
    mutable std::unique_ptr<TextWidths> mWidths;
};

/// The font for a widget or a painter; the user interface's own for fonts that are not ours.
const QFont& FontOf(const drawbot::Font& inFont);

} // namespace kioui::drawbot
