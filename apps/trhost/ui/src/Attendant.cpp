#include "Attendant.h"

#include "InterruptWatch.h"

#include <kiocore/config/Errors.h>
#include <kiocore/threads/MainThread.h>
#include <kioui/ui/Application.h>
#include <kioui_testing/NodeTree.h>

#include <exception>
#include <utility>

namespace trhost::ui {

struct Attendant::State {
    UserInterfaceSettings settings;
    std::string dump;
    std::exception_ptr problem;
    bool isDone = false;
};

namespace {

using namespace kioui::testing;

/// What is looked at once: the dialog in front.
kioui::UI_OSWindow& FrontWindow()
{
    kioui::ui::ScApplication::RunPending(); // what was posted to it before, and its first layout
    const auto windows = ShownWindows();
    if (windows.empty()) {
        throw kiocore::kio_exception("there is no dialog to look at", kiocore::kError_Generic);
    }
    return *windows.front();
}

} // namespace

Attendant::Attendant(const UserInterfaceSettings& inSettings) : mState(std::make_shared<State>())
{
    mState->settings = inSettings;
}

Attendant::~Attendant() = default;

void Attendant::ExpectDialog()
{
    if (mState->settings.attendance == Attendance::kPerson) {
        return;
    }
    const auto mainThread = kiocore::threads::GetRegisteredMainThread();
    mainThread->Post([state = mState] {
        try {
            if (!std::exchange(state->isDone, true)) {
                if (state->settings.attendance == Attendance::kDump) {
                    state->dump = DescribeNodes(FrontWindow());
                } else {
                    SaveScreenshot(FrontWindow(), state->settings.file);
                }
            }
        } catch (...) {
            state->problem = std::current_exception();
        }
        CancelAllDialogs();
    });
}

std::string Attendant::Finish()
{
    if (mState->problem) {
        std::rethrow_exception(mState->problem);
    }
    return mState->dump;
}

} // namespace trhost::ui
