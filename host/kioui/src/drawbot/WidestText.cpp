#include <kioui/drawbot/Drawbot.h>

#include <algorithm>
#include <cmath>

namespace kioui::drawbot {

struct WidestText::Impl {
    FontRef font;
    float width = 0;
};

WidestText::WidestText(FontRef inFont) : mImpl(std::make_unique<Impl>())
{
    mImpl->font = std::move(inFont);
}

WidestText::~WidestText() = default;

void WidestText::Add(UTF16View inText)
{
    if (mImpl->font) {
        mImpl->width = std::max(mImpl->width, mImpl->font->MeasureWidth(inText));
    }
}

float WidestText::RoundedUpWidth() const
{
    return std::ceil(mImpl->width);
}

} // namespace kioui::drawbot
