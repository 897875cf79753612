#include <kioui_testing/NodeTree.h>

#include "ui/ApplicationState.h"
#include "ui/NodeImpl.h"

#include <QApplication>

#include <algorithm>

namespace kioui::testing {
namespace {

/// What a window system keeps in front: what blocks other windows, then what is active.
int PlaceFromTheFront(const ui::UI_OSWindow* inWindow)
{
    const QWidget* const widget = inWindow->GetImpl().widget;
    return widget == QApplication::activeModalWidget() ? 0 : widget->isActiveWindow() ? 1 : 2;
}

} // namespace

std::vector<ui::UI_OSWindow*> ShownWindows()
{
    std::vector<ui::UI_OSWindow*> shown;
    for (ui::UI_OSWindow* window : ui::TheApplicationState().windows) {
        if (window->IsVisible()) {
            shown.push_back(window);
        }
    }
    std::reverse(shown.begin(), shown.end()); // the later it was made, the more it is in front
    std::stable_sort(shown.begin(), shown.end(), [](const ui::UI_OSWindow* inA, const ui::UI_OSWindow* inB) {
        return PlaceFromTheFront(inA) < PlaceFromTheFront(inB);
    });
    return shown;
}

} // namespace kioui::testing
