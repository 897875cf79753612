#include "WidgetEvents.h"

#include <QPointer>

#include <algorithm>
#include <utility>
#include <vector>

namespace kioui::ui {
namespace {

struct RunningEvent {
    bool isKnown = false;
    QPointer<const QWidget> widget;

    bool ComesFrom(const QWidget* inWidget) const
    {
        // Not isAncestorOf, which stops at windows: a window's dialogs die with it.
        const QWidget* at = widget;
        while (at != nullptr && at != inWidget) {
            at = at->parentWidget();
        }
        return !isKnown || at != nullptr;
    }
};

/// The events that one event loop is in the middle of.
struct LoopLevel {
    std::vector<RunningEvent> events;
    std::vector<QPointer<QWidget>> toDelete;
};

std::vector<LoopLevel>& Levels()
{
    static std::vector<LoopLevel> levels(1);
    return levels;
}

} // namespace

ScWidgetEvent::ScWidgetEvent(const QWidget* inWidget)
{
    Levels().back().events.push_back({inWidget != nullptr, inWidget});
}

ScWidgetEvent::~ScWidgetEvent()
{
    LoopLevel& level = Levels().back();
    level.events.pop_back();
    if (level.events.empty()) {
        // Not at once: Qt is still in the widget's event. Its loop deletes them when it comes by.
        for (const QPointer<QWidget>& widget : std::exchange(level.toDelete, {})) {
            if (widget) {
                widget->deleteLater();
            }
        }
    }
}

ScInnerEventLoop::ScInnerEventLoop()
{
    Levels().emplace_back();
}

ScInnerEventLoop::~ScInnerEventLoop()
{
    Levels().pop_back();
}

void DeleteWidget(QWidget* inWidget)
{
    // The outermost event that comes from it ends last.
    for (LoopLevel& level : Levels()) {
        const bool isNeeded =
            std::any_of(level.events.begin(), level.events.end(),
                        [inWidget](const RunningEvent& inEvent) { return inEvent.ComesFrom(inWidget); });
        if (isNeeded) {
            level.toDelete.emplace_back(inWidget);
            inWidget->hide();
            inWidget->setParent(nullptr); // or it would die with a parent that goes earlier
            return;
        }
    }
    delete inWidget;
}

} // namespace kioui::ui
