#include "PainterDrawbot.h"

#include "QtFont.h"
#include "Truncation.h"

#include "ui/NodeImpl.h"
#include "ui/ThemePalette.h"

#include <kiocore/debug/Trace.h>

#include <QPainter>

namespace kioui::drawbot {
namespace {

QRectF ToRect(const RectT<float>& inRect)
{
    return inRect.IsEmpty() ? QRectF() : QRectF(inRect.left, inRect.top, inRect.Width(), inRect.Height());
}

} // namespace

PainterDrawbot::PainterDrawbot(QPainter& inPainter) : mPainter(inPainter)
{
    mPainter.save();
}

PainterDrawbot::~PainterDrawbot()
{
    while (mSavedStates > 0) {
        RestoreState();
    }
    mPainter.restore();
}

void PainterDrawbot::SaveState()
{
    mPainter.save();
    ++mSavedStates;
}

void PainterDrawbot::RestoreState()
{
    if (mSavedStates > 0) {
        mPainter.restore();
        --mSavedStates;
    }
}

void PainterDrawbot::Clip(const RectT<float>& inRect)
{
    KIO_HOST_CALL("kioui::drawbot::Drawbot::Clip", inRect.left, inRect.top, inRect.right, inRect.bottom);
    mPainter.setClipRect(ToRect(inRect), Qt::IntersectClip);
}

void PainterDrawbot::FillRect(const RectT<float>& inRect, const skins::Color& inColor)
{
    if (!inRect.IsEmpty()) {
        mPainter.fillRect(ToRect(inRect), ui::ToQt(inColor));
    }
}

void PainterDrawbot::DrawString(UTF16View inText, const FontRef& inFont, const skins::Color& inColor,
                                PointT<float> inOrigin)
{
    KIO_HOST_CALL("kioui::drawbot::Drawbot::DrawString", inText, inOrigin.x, inOrigin.y);
    if (!inFont || inText.empty()) {
        return;
    }
    mPainter.setFont(FontOf(*inFont));
    mPainter.setPen(ui::ToQt(inColor));
    mPainter.drawText(QPointF(inOrigin.x, inOrigin.y), ui::ToQt(inText));
}

float PainterDrawbot::MeasureString(UTF16View inText, const FontRef& inFont) const
{
    return inFont ? inFont->MeasureWidth(inText) : 0;
}

UTF16String PainterDrawbot::TruncateString(UTF16View inText, const FontRef& inFont, float inWidth,
                                           TextTruncation inTruncation) const
{
    KIO_HOST_CALL("kioui::drawbot::Drawbot::TruncateString", inText, inWidth, int(inTruncation));
    return Truncate(inText, inFont, inWidth, inTruncation);
}

} // namespace kioui::drawbot
