#pragma once

// Posted work in Qt's event loops. Included by sources of kioui only.

#include <kiocore/threads/MainThread.h>

#include <QObject>

#include <memory>

namespace kioui::ui {

/// Runs posted work between other events, each time it gets the event that WakeEventLoop posts.
///
/// Threading: lives on the main thread.
class EventLoopWaker final : public QObject {
public:
    explicit EventLoopWaker(std::shared_ptr<kiocore::threads::MainThread> inMainThread);
    bool event(QEvent* inEvent) override;

private:
    const std::shared_ptr<kiocore::threads::MainThread> mMainThread;
};

} // namespace kioui::ui
