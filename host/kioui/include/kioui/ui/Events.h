#pragma once

#include <kiocore/Export.h>
#include <kioui/Geometry.h>

namespace kioui::ui {

class UI_Node;

/// Why the keyboard focus came or went.
enum class FocusChangeReason {
    kKeyboard = 0, ///< Tab or Shift+Tab, to the node or away from it
    kMouse = 1,
    kWindow = 2, ///< another window, or this one, became active
    kProgram = 3,
};

enum class MouseEventType { kPress, kRelease, kMove, kDoublePress };
enum class MouseButton { kNone, kLeft, kRight, kMiddle };

struct UI_MouseEvent {
    MouseEventType type = MouseEventType::kMove;
    MouseButton button = MouseButton::kNone;
    PointT<float> place; ///< in the node that handles it
    bool handled = false;
};

/// A person, or what stands for one, changed a control's value or clicked it.
class KIO_EXPORT UI_ControlChangedMessage {
public:
    explicit UI_ControlChangedMessage(UI_Node* inControl) : mControl(inControl) {}
    /// Never null.
    UI_Node* GetControl() const { return mControl; }

private:
    UI_Node* mControl;
};

} // namespace kioui::ui
