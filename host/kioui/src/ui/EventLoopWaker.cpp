#include "EventLoopWaker.h"

#include "ApplicationState.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace kioui::ui {
namespace {

const QEvent::Type kWakeUp = QEvent::Type(QEvent::User + 1);

} // namespace

EventLoopWaker::EventLoopWaker(std::shared_ptr<kiocore::threads::MainThread> inMainThread)
    : mMainThread(std::move(inMainThread))
{}

bool EventLoopWaker::event(QEvent* inEvent)
{
    if (inEvent->type() != kWakeUp) {
        return QObject::event(inEvent);
    }
    mMainThread->RunPosted();
    return true;
}

void WakeEventLoop()
{
    if (QObject* waker = TheApplicationState().waker) {
        QCoreApplication::postEvent(waker, new QEvent(kWakeUp));
    }
}

} // namespace kioui::ui
