#include <kioui_testing/UserEvents.h>

#include "Keys.h"
#include "ui/NodeImpl.h"

#include <kioui/ui/Application.h>

#include <kiocore/config/Errors.h>
#include <kiocore/utility/UTF16String.h>

#include <QApplication>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <cmath>
#include <string>
#include <utility>

namespace kioui::testing {
namespace {

using kiocore::kError_BadArgument;
using kiocore::kio_exception;

/// While something is done: what waits for nothing to do waits on, except in event loops that begin
/// meanwhile.
class ScAction {
public:
    ScAction() : mBefore(std::exchange(sLoopLevel, QThread::currentThread()->loopLevel())) {}
    ~ScAction()
    {
        ui::ScApplication::RunPending();
        sLoopLevel = mBefore;
    }
    ScAction(const ScAction&) = delete;
    ScAction& operator=(const ScAction&) = delete;

    static bool IsUnderWayInThisLoop() { return sLoopLevel == QThread::currentThread()->loopLevel(); }

private:
    static inline int sLoopLevel = -1;
    const int mBefore;
};

/// The window as the window system knows it.
QWindow& NativeWindow(ui::UI_OSWindow& inWindow)
{
    const QWidget* const widget = inWindow.GetImpl().widget;
    if (widget == nullptr || !widget->isVisible() || widget->windowHandle() == nullptr) {
        throw kio_exception("the window \"" + kiocore::utility::ToUTF8(inWindow.GetText()) +
                                "\" (node ID \"" + inWindow.GetNodeID() +
                                "\") is not shown, so nothing can be done in it",
                            kError_BadArgument);
    }
    return *widget->windowHandle();
}

QPoint PointIn(PointT<float> inPlace)
{
    const QPoint point(int(std::floor(inPlace.x)), int(std::floor(inPlace.y)));
    return point.isNull() ? QPoint(0, 1) : point; // QTest takes the corner itself for the middle
}

/// Keys go to the active window, as on a desktop; other windows are activated by who types there.
QWindow& WindowForKeys(ui::UI_OSWindow& inWindow)
{
    QWindow& window = NativeWindow(inWindow);
    if (QGuiApplication::focusWindow() != &window && QApplication::activePopupWidget() == nullptr) {
        inWindow.GetImpl().widget->activateWindow();
        ui::ScApplication::RunPending();
    }
    return NativeWindow(inWindow);
}

void Press(QWindow& inWindow, const Key& inKey)
{
    QTest::sendKeyEvent(QTest::Click, &inWindow, inKey.code, inKey.text, inKey.modifiers);
    ui::ScApplication::RunPending();
}

// What a window system tells may come a round later than what caused it: a window that was shown becomes
// active, and then its node gets the focus.
constexpr int kRoundsToSettle = 3;

/// Calls a function after so many rounds of one event loop that waits, or of one that begins meanwhile.
void RunAfterRounds(int inRounds, std::function<void()> inFunction)
{
    QTimer::singleShot(0, qApp, [inRounds, function = std::move(inFunction)]() mutable {
        if (ScAction::IsUnderWayInThisLoop()) {
            RunAfterRounds(kRoundsToSettle, std::move(function));
        } else if (inRounds > 1) {
            RunAfterRounds(inRounds - 1, std::move(function));
        } else {
            function();
        }
    });
}

} // namespace

void RunWhenIdle(std::function<void()> inFunction, int inDelayMs)
{
    QTimer::singleShot(inDelayMs, qApp, [function = std::move(inFunction)]() mutable {
        RunAfterRounds(kRoundsToSettle, std::move(function));
    });
}

PointT<float> MiddleOf(const ui::UI_Node& inNode)
{
    const RectT<float> bounds = inNode.GetBounds();
    return inNode.ToWindow({bounds.Width() / 2, bounds.Height() / 2});
}

void MoveMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace)
{
    const ScAction action;
    QTest::mouseMove(&NativeWindow(inWindow), PointIn(inPlace));
}

void PressMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace)
{
    const ScAction action;
    MoveMouse(inWindow, inPlace);
    QTest::mousePress(&NativeWindow(inWindow), Qt::LeftButton, {}, PointIn(inPlace));
}

void ReleaseMouse(ui::UI_OSWindow& inWindow, PointT<float> inPlace)
{
    const ScAction action;
    MoveMouse(inWindow, inPlace);
    QTest::mouseRelease(&NativeWindow(inWindow), Qt::LeftButton, {}, PointIn(inPlace));
}

void Click(ui::UI_OSWindow& inWindow, PointT<float> inPlace)
{
    const ScAction action;
    MoveMouse(inWindow, inPlace);
    QTest::mouseClick(&NativeWindow(inWindow), Qt::LeftButton, {}, PointIn(inPlace));
}

void DoubleClick(ui::UI_OSWindow& inWindow, PointT<float> inPlace)
{
    const ScAction action;
    MoveMouse(inWindow, inPlace);
    QTest::mouseDClick(&NativeWindow(inWindow), Qt::LeftButton, {}, PointIn(inPlace));
}

void TurnWheel(ui::UI_OSWindow& inWindow, PointT<float> inPlace, int inNotches)
{
    const ScAction action;
    MoveMouse(inWindow, inPlace);
    QWindow& window = NativeWindow(inWindow);
    const QWindow* const modal = QGuiApplication::modalWindow();
    if (modal != nullptr && modal != &window && !modal->isAncestorOf(&window)) {
        return; // the window system's way in asks this before it hands an event to a window
    }
    const QPointF place = PointIn(inPlace);
    constexpr int kNotch = 120; // eighths of a degree
    QWheelEvent event(place, window.mapToGlobal(place), {}, {0, inNotches * kNotch}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    QCoreApplication::sendEvent(&window, &event);
}

void PressKey(ui::UI_OSWindow& inWindow, std::string_view inKey)
{
    const std::optional<Key> key = KeyFromName(inKey);
    if (!key) {
        throw kio_exception("there is no key \"" + std::string(inKey) +
                                "\"; a key is named as in \"Tab\", \"Shift+Tab\", \"Return\", \"Down\", "
                                "\"Ctrl+A\" or \"x\"",
                            kError_BadArgument);
    }
    const ScAction action;
    Press(WindowForKeys(inWindow), *key);
}

void TypeText(ui::UI_OSWindow& inWindow, kiocore::utility::UTF16View inText)
{
    const ScAction action;
    const ui::UI_NodePtr keep = &inWindow;
    for (const Key& key : KeysThatType(ui::ToQt(inText))) {
        Press(WindowForKeys(inWindow), key);
        if (!inWindow.IsVisible()) {
            return;
        }
    }
}

void CloseWindow(ui::UI_OSWindow& inWindow)
{
    const ScAction action;
    NativeWindow(inWindow).close();
}

bool IsKeyName(std::string_view inKey)
{
    return KeyFromName(inKey).has_value();
}

} // namespace kioui::testing
