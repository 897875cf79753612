#include <kioui/ui/Window.h>

#include "ApplicationState.h"
#include "NodeImpl.h"

#include <kiocore/debug/Trace.h>

#include <cmath>

namespace kioui::ui {
namespace {

QWidget* WindowWidgetOf(UI_Node* inNode)
{
    QWidget* const widget = inNode != nullptr ? inNode->GetImpl().widget.data() : nullptr;
    return widget != nullptr ? widget->window() : nullptr;
}

} // namespace

UI_OSWindow::UI_OSWindow(const UTF16String& inTitle, UI_Node* inParent)
    : UI_OSWindow(NewImpl<QWidget>("UI_OSWindow", WindowWidgetOf(inParent), Qt::Window), inTitle)
{}

UI_OSWindow::UI_OSWindow(std::unique_ptr<Impl> inImpl, const UTF16String& inTitle)
    : UI_Node(std::move(inImpl))
{
    TheApplicationState().windows.push_back(this);
    SetTitle(inTitle);
}

UI_OSWindow::~UI_OSWindow()
{
    ApplicationState& state = TheApplicationState();
    for (UI_OSWindow** known : {&state.mainWindow, &state.modalWindow}) {
        if (*known == this) {
            *known = nullptr;
        }
    }
    std::erase(state.windows, this);
}

UTF16String UI_OSWindow::GetText() const
{
    const QWidget* widget = GetImpl().widget;
    return widget != nullptr ? FromQt(widget->windowTitle()) : UTF16String();
}

void UI_OSWindow::SetTitle(const UTF16String& inTitle)
{
    if (QWidget* widget = GetImpl().widget) {
        widget->setWindowTitle(ToQt(inTitle));
    }
}

void UI_OSWindow::SetMinimumSize(SizeT<float> inSize)
{
    if (QWidget* widget = GetImpl().widget) {
        widget->setMinimumSize(int(std::ceil(inSize.width)), int(std::ceil(inSize.height)));
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
        widget->resize(int(std::lround(inSize.width)), int(std::lround(inSize.height)));
    }
}

float UI_OSWindow::GetUIScale() const
{
    const QWidget* widget = GetImpl().widget;
    return widget != nullptr ? float(widget->devicePixelRatioF()) : 1;
}

UI_Node* UI_OSWindow::GetFocusedNode() const
{
    return nullptr; // walks the nodes for the one whose widget has the focus
}

void UI_OSWindow::UI_Show(bool inShow)
{
    KIO_HOST_CALL("kioui::ui::UI_OSWindow::UI_Show", inShow);
    if (QWidget* widget = GetImpl().widget) {
        widget->setVisible(inShow);
    }
}

void UI_OSWindow::UI_ScaleChanged(float, float, const RectT<int>&) {}

void UI_OSWindow::UI_CloseRequested()
{
    UI_Show(false);
}

} // namespace kioui::ui
