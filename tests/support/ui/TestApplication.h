#pragma once

#include <kioui/ui/Application.h>

#include <support/ScMainThread.h>

namespace support {

/// A user interface in memory, or on the display that QT_QPA_PLATFORM names, with the tests' own font, so
/// that texts are as wide on every machine. Make one per test, before the first node.
class ScTestApplication {
public:
    explicit ScTestApplication(kioui::ui::ApplicationSettings inSettings = {});

    kiocore::threads::MainThread* operator->() const { return mMainThread.operator->(); }

private:
    const ScMainThread mMainThread;
    const kioui::ui::ScApplication mApplication;
};

} // namespace support
