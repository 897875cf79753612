#include <kioui/ui/NodeManager.h>

#include "ApplicationState.h"
#include "NodeImpl.h"

#include <kioui/ui/Window.h>

#include <kiocore/debug/Trace.h>

#include <QApplication>
#include <QFontInfo>

namespace kioui::ui {

const drawbot::SupplierInterface* UI_NodeManager::GetDefaultDrawSupplier()
{
    KIO_HOST_CALL("kioui::ui::UI_NodeManager::GetDefaultDrawSupplier");
    return TheApplicationState().supplier.get();
}

UI_OSWindowPtr UI_NodeManager::GetMainTopLevelWindow()
{
    KIO_HOST_CALL("kioui::ui::UI_NodeManager::GetMainTopLevelWindow");
    return TheApplicationState().mainWindow;
}

void UI_NodeManager::SetMainTopLevelWindow(const UI_OSWindowPtr& inWindow)
{
    TheApplicationState().mainWindow = inWindow.get();
}

UI_NodeManager::SetModalWindow::SetModalWindow(UI_OSWindow& inWindow)
    : mBefore(TheApplicationState().modalWindow)
{
    KIO_HOST_CALL("kioui::ui::UI_NodeManager::SetModalWindow");
    TheApplicationState().modalWindow = &inWindow;
}

UI_NodeManager::SetModalWindow::~SetModalWindow()
{
    TheApplicationState().modalWindow = mBefore.get();
}

QWidget* DefaultParentWidget()
{
    const UI_OSWindow* window = TheApplicationState().modalWindow;
    return window != nullptr ? window->GetImpl().Content() : nullptr;
}

UTF16String GetFontName(int inWhich)
{
    KIO_HOST_CALL("kioui::ui::GetFontName", inWhich);
    if (inWhich != 0 || qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        return {};
    }
    return FromQt(QApplication::font().family());
}

float GetFontSize(int inWhich)
{
    KIO_HOST_CALL("kioui::ui::GetFontSize", inWhich);
    if (inWhich != 0 || qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        return 0;
    }
    return float(QFontInfo(QApplication::font()).pixelSize());
}

} // namespace kioui::ui
