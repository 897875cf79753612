#include <kioui/controls/Control.h>

#include "ui/NodeImpl.h"

namespace kioui::controls {

UI_Control::UI_Control(std::unique_ptr<Impl> inImpl) : UI_Node(std::move(inImpl)) {}
UI_Control::~UI_Control() = default;

void UI_Control::SetChangedFunction(ChangedFunction inFunction)
{
    mChanged = std::move(inFunction);
}

void UI_Control::NotifyChanged()
{
    Notify(mChanged);
}

void UI_Control::Notify(const ChangedFunction& inFunction)
{
    if (!inFunction) {
        return;
    }
    const ui::ScWidgetEvent event(GetImpl().widget);
    const ui::UI_NodePtr keep = this;
    const ChangedFunction function = inFunction; // it may set another
    UI_ControlChangedMessage message(this);
    ui::CallHost("The changed function of a control", [&] { function(&message); });
}

} // namespace kioui::controls
