#include <kioui/controls/HotText.h>

#include "HotTextWidget.h"
#include "drawbot/QtFont.h"
#include "ui/NodeImpl.h"

#include <QFontInfo>

#include <algorithm>
#include <cmath>

namespace kioui::controls {

using ui::FromButtonText;
using ui::ToButtonText;
using ui::WidgetOf;

UI_HotTextButton::UI_HotTextButton(const UTF16String& inText)
    : UI_Control(ui::NewImpl<HotTextWidget>("UI_HotTextButton", ToButtonText(inText)))
{
    QObject::connect(WidgetOf<HotTextWidget>(*this), &QAbstractButton::clicked, GetImpl().watcher.get(),
                     [this] { NotifyChanged(); });
}

UI_HotTextButton::~UI_HotTextButton() = default;

UTF16String UI_HotTextButton::GetText() const
{
    const auto* link = WidgetOf<HotTextWidget>(*this);
    return link != nullptr ? FromButtonText(link->text()) : UTF16String();
}

void UI_HotTextButton::SetText(const UTF16String& inText)
{
    if (auto* link = WidgetOf<HotTextWidget>(*this)) {
        link->setText(ToButtonText(inText));
    }
}

void UI_HotTextButton::SetFontSize(float inSize)
{
    if (auto* link = WidgetOf<HotTextWidget>(*this)) {
        QFont font = link->font();
        font.setPixelSize(std::max(1, int(std::lround(inSize))));
        link->setFont(font);
    }
}

float UI_HotTextButton::GetFontSize() const
{
    const auto* link = WidgetOf<HotTextWidget>(*this);
    return link != nullptr ? float(QFontInfo(link->font()).pixelSize()) : 0;
}

void UI_HotTextButton::Click()
{
    if (auto* link = WidgetOf<HotTextWidget>(*this)) {
        link->click();
    }
}

UI_HotTextURL::UI_HotTextURL(const UTF16String& inURL, const drawbot::FontRef& inFont)
    : UI_HotTextButton(inURL)
{
    if (inFont) {
        GetImpl().widget->setFont(drawbot::FontOf(*inFont));
    }
}

UI_HotTextURL::~UI_HotTextURL() = default;

} // namespace kioui::controls
