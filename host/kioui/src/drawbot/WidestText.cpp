#include <kioui/drawbot/Drawbot.h>

#include "QtFont.h"
#include "TextWidths.h"

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cmath>

namespace kioui::drawbot {

struct WidestText::Impl {
    FontRef font;
    TextWidths* widths = nullptr; // the font's; null for fonts of others
    std::int64_t widest = 0;      // in 64ths of a unit
    float widestOfOthers = 0;
};

WidestText::WidestText(FontRef inFont) : mImpl(std::make_unique<Impl>())
{
    KIO_HOST_CALL("kioui::drawbot::WidestText::WidestText");
    if (const auto* font = dynamic_cast<const QtFont*>(inFont.get())) {
        mImpl->widths = &font->GetWidths();
    }
    mImpl->font = std::move(inFont);
}

WidestText::~WidestText() = default;

void WidestText::Add(UTF16View inText)
{
    if (mImpl->widths != nullptr) {
        mImpl->widest = std::max(mImpl->widest, mImpl->widths->Measure(inText));
    } else if (mImpl->font) {
        mImpl->widestOfOthers = std::max(mImpl->widestOfOthers, mImpl->font->MeasureWidth(inText));
    }
}

float WidestText::RoundedUpWidth() const
{
    KIO_HOST_CALL("kioui::drawbot::WidestText::RoundedUpWidth");
    return std::max(float((mImpl->widest + 63) / 64), std::ceil(mImpl->widestOfOthers));
}

} // namespace kioui::drawbot
