#pragma once

// Drawing through a painter of Qt's. Included by sources of kioui only.

#include <kioui/drawbot/Drawbot.h>

class QPainter;

namespace kioui::drawbot {

/// Draws where a painter draws, in the painter's own units. The painter has its state back at the end,
/// whatever was saved and not restored meanwhile.
///
/// Threading: UI thread only.
class PainterDrawbot final : public Drawbot {
public:
    /// @param inPainter  active, and outlives this.
    explicit PainterDrawbot(QPainter& inPainter);
    ~PainterDrawbot() override;
    PainterDrawbot(const PainterDrawbot&) = delete;
    PainterDrawbot& operator=(const PainterDrawbot&) = delete;

    void SaveState() override;
    /// Without a state saved here there is nothing to go back to, and nothing happens.
    void RestoreState() override;
    void Clip(const RectT<float>& inRect) override;
    void FillRect(const RectT<float>& inRect, const skins::Color& inColor) override;
    void DrawString(UTF16View inText, const FontRef& inFont, const skins::Color& inColor,
                    PointT<float> inOrigin) override;
    float MeasureString(UTF16View inText, const FontRef& inFont) const override;
    UTF16String TruncateString(UTF16View inText, const FontRef& inFont, float inWidth,
                               TextTruncation inTruncation) const override;

private:
    QPainter& mPainter;
    int mSavedStates = 0;
};

} // namespace kioui::drawbot
