#include <kioui/controls/Checkbox.h>

#include "ui/NodeImpl.h"

#include <QCheckBox>
#include <QSignalBlocker>

namespace kioui::controls {

using ui::FromButtonText;
using ui::ToButtonText;
using ui::WidgetOf;

UI_Checkbox::UI_Checkbox(const UTF16String& inText)
    : UI_Control(ui::NewImpl<QCheckBox>("UI_Checkbox", ToButtonText(inText)))
{
    // Toggled, not clicked: a screen reader toggles without a click.
    QObject::connect(WidgetOf<QCheckBox>(*this), &QCheckBox::toggled, GetImpl().watcher.get(),
                     [this] { NotifyChanged(); });
}

UI_Checkbox::~UI_Checkbox() = default;

UTF16String UI_Checkbox::GetText() const
{
    const auto* box = WidgetOf<QCheckBox>(*this);
    return box != nullptr ? FromButtonText(box->text()) : UTF16String();
}

bool UI_Checkbox::IsChecked() const
{
    const auto* box = WidgetOf<QCheckBox>(*this);
    return box != nullptr && box->isChecked();
}

void UI_Checkbox::SetChecked(bool inChecked)
{
    if (auto* box = WidgetOf<QCheckBox>(*this)) {
        const QSignalBlocker blocker(box); // only what a person does is a change
        box->setChecked(inChecked);
    }
}

void UI_Checkbox::Click()
{
    if (auto* box = WidgetOf<QCheckBox>(*this)) {
        box->click();
    }
}

void UI_Checkbox::ShowPressed(bool inPressed)
{
    if (auto* box = WidgetOf<QCheckBox>(*this)) {
        box->setDown(inPressed);
    }
}

void UI_Checkbox::SetTransparentToMouse(bool inTransparent)
{
    if (auto* box = WidgetOf<QCheckBox>(*this)) {
        box->setAttribute(Qt::WA_TransparentForMouseEvents, inTransparent);
    }
}

} // namespace kioui::controls
