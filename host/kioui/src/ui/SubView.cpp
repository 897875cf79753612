#include <kioui/ui/SubView.h>

#include "NodeImpl.h"

namespace kioui::ui {

UI_SubView::UI_SubView() : UI_Node(NewImpl<QWidget>("UI_SubView")) {}
UI_SubView::~UI_SubView() = default;

} // namespace kioui::ui
