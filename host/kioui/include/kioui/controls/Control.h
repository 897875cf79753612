#pragma once

#include <kioui/ui/Node.h>

namespace kioui::controls {

using ui::UI_ControlChangedMessage;
using ui::UI_Node;
using ui::UTF16String;

/// A node that a person changes or clicks.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_Control : public ui::UI_Node {
public:
    using ChangedFunction = std::function<void(UI_ControlChangedMessage*)>;
    ~UI_Control() override;

    /// Called when a person has changed the value or clicked, after it took effect; setters do not call it.
    /// It may let go of the last reference to the control.
    void SetChangedFunction(ChangedFunction inFunction);

protected:
    explicit UI_Control(std::unique_ptr<Impl> inImpl);
    /// Calls the changed function, if any. The control may be gone afterwards.
    void NotifyChanged();
    /// The same with a function that is called at other times.
    void Notify(const ChangedFunction& inFunction);

private:
    ChangedFunction mChanged;
};

} // namespace kioui::controls
