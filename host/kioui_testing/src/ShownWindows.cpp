#include <kioui_testing/NodeTree.h>

#include "ui/NodeImpl.h"

#include <QApplication>

#include <algorithm>
#include <tuple>

namespace kioui::testing {
namespace {

/// What a window system keeps in front: what blocks other windows, then what belongs to another window, and
/// what is active.
auto PlaceFromTheFront(const ui::UI_OSWindow* inWindow)
{
    const QWidget* const widget = inWindow->GetImpl().widget;
    int windowsBehind = 0;
    for (const QWidget* behind = widget->parentWidget(); behind != nullptr; behind = behind->parentWidget()) {
        windowsBehind += behind->isWindow() ? 1 : 0;
    }
    // Numbers of windows grow: what was made later was, as a rule, shown later.
    return std::tuple(widget != QApplication::activeModalWidget(), !widget->isModal(), -windowsBehind,
                      !widget->isActiveWindow(), ~widget->internalWinId());
}

} // namespace

std::vector<ui::UI_OSWindow*> ShownWindows()
{
    std::vector<ui::UI_OSWindow*> shown;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = dynamic_cast<ui::UI_OSWindow*>(ui::NodeOf(widget));
        if (window != nullptr && window->IsVisible()) {
            shown.push_back(window);
        }
    }
    std::sort(shown.begin(), shown.end(), [](const ui::UI_OSWindow* inA, const ui::UI_OSWindow* inB) {
        return PlaceFromTheFront(inA) < PlaceFromTheFront(inB);
    });
    return shown;
}

} // namespace kioui::testing
