#pragma once

// What nodes find of the application object. Included by sources of kioui only.

#include <kioui/drawbot/Drawbot.h>

#include <QObject>

#include <memory>
#include <string>

namespace kioui::drawbot {
/// The supplier that draws with Qt.
std::unique_ptr<SupplierInterface> NewQtSupplier();
} // namespace kioui::drawbot

namespace kioui::ui {

class UI_OSWindow;

/// Of the one application object; all empty without one.
struct ApplicationState {
    std::unique_ptr<drawbot::SupplierInterface> supplier;
    std::string settingsFileUTF8;
    UI_OSWindow* mainWindow = nullptr;
    UI_OSWindow* modalWindow = nullptr; // that new nodes belong to
    QObject* waker = nullptr;           // runs posted work when it gets an event
};
ApplicationState& TheApplicationState();

/// Has posted work run by the event loop that runs next, also one inside of posted work.
void WakeEventLoop();

} // namespace kioui::ui
