#include <kioui/controls/TextButton.h>

#include "ui/NodeImpl.h"

#include <QPushButton>

namespace kioui::controls {

using ui::FromButtonText;
using ui::ToButtonText;
using ui::WidgetOf;

UI_TextButton::UI_TextButton(const UTF16String& inText)
    : UI_Control(ui::NewImpl<QPushButton>("UI_TextButton", ToButtonText(inText)))
{
    QObject::connect(WidgetOf<QPushButton>(*this), &QPushButton::clicked, GetImpl().watcher.get(),
                     [this] { NotifyChanged(); });
}

UI_TextButton::~UI_TextButton() = default;

UTF16String UI_TextButton::GetText() const
{
    const auto* button = WidgetOf<QPushButton>(*this);
    return button != nullptr ? FromButtonText(button->text()) : UTF16String();
}

void UI_TextButton::SetText(const UTF16String& inText)
{
    if (auto* button = WidgetOf<QPushButton>(*this)) {
        button->setText(ToButtonText(inText));
    }
}

void UI_TextButton::Click()
{
    if (auto* button = WidgetOf<QPushButton>(*this)) {
        button->click();
    }
}

} // namespace kioui::controls
