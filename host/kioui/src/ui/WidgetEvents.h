#pragma once

// Calls into the host from Qt's events, and what must not be deleted meanwhile. Included by sources of kioui
// only.

#include <kiocore/threads/AsyncExecutor.h>

#include <QWidget>

namespace kioui::ui {

/// Around calls into the host from a widget's own event: what is deleted meanwhile goes afterwards, if the
/// event comes from it.
class ScWidgetEvent {
public:
    /// @param inWidget  whose event it is; null where several take part, which spares all of them.
    explicit ScWidgetEvent(const QWidget* inWidget = nullptr);
    ~ScWidgetEvent();
    ScWidgetEvent(const ScWidgetEvent&) = delete;
    ScWidgetEvent& operator=(const ScWidgetEvent&) = delete;
};

/// Around an event loop that runs inside of events: what its own events delete does not have to wait for the
/// outer ones.
class ScInnerEventLoop {
public:
    ScInnerEventLoop();
    ~ScInnerEventLoop();
    ScInnerEventLoop(const ScInnerEventLoop&) = delete;
    ScInnerEventLoop& operator=(const ScInnerEventLoop&) = delete;
};

/// Deletes a widget, at once or, if a running event comes from it or from below it, once that is over.
void DeleteWidget(QWidget* inWidget);

/// Calls the host: an exception is reported, since it must not go through Qt.
/// @param inWhat  names the function, for the report.
template <typename Function>
void CallHost(const char* inWhat, const Function& inFunction)
{
    try {
        inFunction();
    } catch (...) {
        kiocore::threads::ReportException(inWhat);
    }
}

} // namespace kioui::ui
