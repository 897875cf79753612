#include <kioui/ui/Window.h>

#include "ApplicationState.h"
#include "WindowWidget.h"

#include <kiocore/debug/Trace.h>

#include <QApplication>

#include <algorithm>
#include <cmath>

namespace kioui::ui {
namespace {

int ToLength(float inLength)
{
    return int(std::lround(std::clamp(inLength, 0.0f, float(QWIDGETSIZE_MAX))));
}

RectT<int> ToPixels(const QRect& inUnits, float inScale)
{
    const auto pixel = [inScale](int inUnit) { return int(std::lround(float(inUnit) * inScale)); };
    return {pixel(inUnits.x()), pixel(inUnits.y()), pixel(inUnits.x() + inUnits.width()),
            pixel(inUnits.y() + inUnits.height())};
}

void Activate(QWidget& ioWindow)
{
    ioWindow.activateWindow(); // where no window manager does it
    // A window that is shown again soon may count as the active one still, and then nobody tells Qt's
    // widgets.
    if (QGuiApplication::focusWindow() == ioWindow.windowHandle() && !ioWindow.isActiveWindow()) {
        QApplication::setActiveWindow(&ioWindow);
    }
}

} // namespace

WindowHooks::~WindowHooks() = default;

void WindowHooks::RequestClose(const QWidget* inWidget)
{
    if (const auto function = closeRequested) {
        const ScWidgetEvent event(inWidget);
        CallHost("UI_CloseRequested of a window", function);
    }
}

WindowHooks* HooksOf(QWidget* inWindow)
{
    return dynamic_cast<WindowHooks*>(inWindow);
}

UI_OSWindow::UI_OSWindow(const UTF16String& inTitle, UI_Node* inParent)
    : UI_OSWindow((RequireApplication("UI_OSWindow"),
                   std::make_unique<Impl>(new WindowWidget<QWidget>(WindowWidgetOf(inParent), Qt::Window))),
                  inTitle)
{}

UI_OSWindow::UI_OSWindow(std::unique_ptr<Impl> inImpl, const UTF16String& inTitle)
    : UI_Node(std::move(inImpl)), mScale(GetUIScale())
{
    SetTitle(inTitle);
    if (WindowHooks* hooks = HooksOf(GetImpl().widget)) {
        hooks->closeRequested = [this] {
            const UI_NodePtr keep = this;
            UI_CloseRequested();
        };
        hooks->screenMayHaveChanged = [this] {
            const UI_NodePtr keep = this;
            FollowScale();
        };
    }
}

void UI_OSWindow::PrepareToGo()
{
    GetImpl().node = nullptr;
    if (WindowHooks* hooks = HooksOf(GetImpl().widget)) {
        hooks->closeRequested = nullptr;
        hooks->screenMayHaveChanged = nullptr;
    }
}

UI_OSWindow::~UI_OSWindow()
{
    PrepareToGo();
    ApplicationState& state = TheApplicationState();
    for (UI_OSWindow** known : {&state.mainWindow, &state.modalWindow}) {
        if (*known == this) {
            *known = nullptr;
        }
    }
}

UTF16String UI_OSWindow::GetText() const
{
    const QWidget* widget = GetImpl().widget;
    return widget != nullptr ? FromTitle(widget->windowTitle()) : UTF16String();
}

void UI_OSWindow::SetTitle(const UTF16String& inTitle)
{
    if (QWidget* widget = GetImpl().widget) {
        widget->setWindowTitle(ToTitle(inTitle));
    }
}

void UI_OSWindow::SetMinimumSize(SizeT<float> inSize)
{
    if (QWidget* widget = GetImpl().widget) {
        widget->setMinimumSize(ToLength(std::ceil(inSize.width)), ToLength(std::ceil(inSize.height)));
    }
}

SizeT<float> UI_OSWindow::GetMinimumSize() const
{
    const QWidget* widget = GetImpl().widget;
    return widget != nullptr ? SizeT<float>{float(widget->minimumWidth()), float(widget->minimumHeight())}
                             : SizeT<float>();
}

void UI_OSWindow::SetSize(SizeT<float> inSize)
{
    if (QWidget* widget = GetImpl().widget) {
        widget->resize(ToLength(inSize.width), ToLength(inSize.height));
    }
}

float UI_OSWindow::GetUIScale() const
{
    const QWidget* widget = GetImpl().widget;
    return widget != nullptr ? float(widget->devicePixelRatioF()) : 1;
}

UI_Node* UI_OSWindow::GetFocusedNode() const
{
    const QWidget* const widget = GetImpl().widget;
    const QWidget* const focused = QApplication::focusWidget();
    return widget != nullptr && focused != nullptr && focused->window() == widget ? NodeOf(focused) : nullptr;
}

void UI_OSWindow::UI_Show(bool inShow)
{
    KIO_HOST_CALL("kioui::ui::UI_OSWindow::UI_Show", inShow);
    QWidget* const widget = GetImpl().widget;
    if (widget == nullptr || widget->isVisible() == inShow) {
        return;
    }
    if (inShow) {
        if (WindowHooks* hooks = HooksOf(widget)) {
            hooks->FocusFirst();
        }
        widget->show();
        Activate(*widget);
    } else {
        widget->hide();
    }
}

void UI_OSWindow::FollowScale()
{
    const float before = mScale;
    mScale = GetUIScale();
    if (mScale != before) {
        UI_ScaleChanged(before, mScale, ToPixels(GetImpl().widget->geometry(), mScale));
    }
}

void UI_OSWindow::UI_ScaleChanged(float, float, const RectT<int>&) {}

void UI_OSWindow::UI_CloseRequested()
{
    UI_Show(false);
}

} // namespace kioui::ui
