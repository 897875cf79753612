#pragma once

// The picture beside a message. Included by sources of kioui only.

#include <kioui/dialogs/MessageBox.h>

namespace kioui::dialogs {

/// What the desktop shows beside messages of this kind, in the size it shows it.
///
/// Threading: UI thread only.
class MessageIcon final : public ui::UI_Node {
public:
    explicit MessageIcon(UI_MessageBox::Icon inIcon);
    ~MessageIcon() override;
    const char* GetClassName() const override { return "MessageIcon"; }
};

} // namespace kioui::dialogs
