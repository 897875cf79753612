#include <kioui/layout/SmartLayout.h>
namespace kioui::layout {
SmartLayout::~SmartLayout() = default;
}
