#include "UiScriptRun.h"

#include "UiExpectation.h"
#include "UiPlace.h"

#include "../../support/LocalText.h"

#include <kioui/ui/Dialog.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>

#include <chrono>
#include <optional>
#include <utility>

namespace trhost::ui {
namespace {

using kioui::PointT;
using kioui::UI_OSWindow;
using Verb = UiStatement::Verb;
namespace user = kioui::testing;

constexpr std::chrono::seconds kAwaitLimit{10};
constexpr int kAwaitStepMs = 5;

UI_OSWindow& FrontWindow()
{
    const auto windows = user::ShownWindows();
    if (windows.empty()) {
        throw UiMismatch(LocalText("$$$/Halcyon/TrHost/UiScript/NoWindow=found no window that is shown"));
    }
    return *windows.front();
}

/// From one place to the other as a hand goes, in steps, so that what begins a drag sees it begin.
void Drag(UI_OSWindow& inWindow, PointT<float> inFrom, PointT<float> inTo)
{
    constexpr int kSteps = 8;
    user::PressMouse(inWindow, inFrom);
    for (int step = 1; step <= kSteps; ++step) {
        const float part = float(step) / kSteps;
        user::MoveMouse(inWindow,
                        {inFrom.x + (inTo.x - inFrom.x) * part, inFrom.y + (inTo.y - inFrom.y) * part});
    }
    user::ReleaseMouse(inWindow, inTo);
}

void SaveText(const std::string& inText, const std::string& inFileUTF8)
{
    const auto saved = kiocore::filesupport::SaveFileAtomically(kiocore::utility::ToUTF16(inFileUTF8), inText,
                                                                kiocore::filesupport::Durability::kNone);
    if (saved.result < 0) {
        throw kiocore::file_exception(saved.failedStep, inFileUTF8, saved.errorNumber);
    }
}

} // namespace

struct UiScriptRun::State : std::enable_shared_from_this<State> {
    void Schedule(int inDelayMs = 0);
    void Step();
    void Do(const UiStatement& inStatement, UI_OSWindow& inWindow);
    bool Await(const UiStatement& inStatement);
    void Fail(int inStatus, int inLine, const std::string& inText);
    void CloseDialogs();

    UiScript script;
    Print print;
    std::size_t next = 0; // of the statements
    UiScriptResult result;
    std::optional<std::chrono::steady_clock::time_point> awaitDeadline;
    boost::intrusive_ptr<UI_OSWindow> askedToClose;
    bool isOver = false; // Finish was called
};

/// Goes on when nothing else is left to do, in whatever dialog waits then.
void UiScriptRun::State::Schedule(int inDelayMs)
{
    user::RunWhenIdle(
        [weak = weak_from_this()] {
            const auto state = weak.lock();
            if (state && !state->isOver) {
                state->Step();
            }
        },
        inDelayMs);
}

void UiScriptRun::State::Step()
{
    if (next == script.statements.size() || result.status != 0) {
        CloseDialogs();
        return;
    }
    const UiStatement& statement = script.statements[next];
    if (statement.verb == Verb::kAwait && !Await(statement)) {
        return;
    }
    ++next;
    Schedule(); // first: what we do now may open a dialog and return once that is over
    try {
        Do(statement, FrontWindow());
    } catch (const UiMismatch& mismatch) {
        Fail(1, statement.line, mismatch.what());
    } catch (const kiocore::file_exception& error) {
        Fail(3, statement.line, error.what());
    } catch (const std::exception& error) {
        Fail(1, statement.line, error.what());
    }
}

/// @return whether it holds now, or time is up and checking it once more may say so.
bool UiScriptRun::State::Await(const UiStatement& inStatement)
{
    const auto now = std::chrono::steady_clock::now();
    if (!awaitDeadline) {
        awaitDeadline = now + kAwaitLimit;
    }
    bool holds = true;
    try {
        CheckExpectation(FrontWindow(), inStatement);
    } catch (const UiMismatch&) {
        holds = false;
    }
    if (holds || now >= *awaitDeadline) {
        awaitDeadline.reset();
        return true;
    }
    Schedule(kAwaitStepMs);
    return false;
}

void UiScriptRun::State::Do(const UiStatement& inStatement, UI_OSWindow& inWindow)
{
    const boost::intrusive_ptr<UI_OSWindow> keep(&inWindow);
    const auto point = [&] { return UiPlace(inWindow, inStatement.target).Point(); };
    switch (inStatement.verb) {
    case Verb::kClick:
        return user::Click(inWindow, point());
    case Verb::kDoubleClick:
        return user::DoubleClick(inWindow, point());
    case Verb::kPress:
        return user::PressMouse(inWindow, point());
    case Verb::kRelease:
        return user::ReleaseMouse(inWindow, point());
    case Verb::kMove:
        return user::MoveMouse(inWindow, point());
    case Verb::kDrag: {
        const PointT<float> from = point();
        return Drag(inWindow, from, UiPlace(inWindow, inStatement.to).Point());
    }
    case Verb::kWheel:
        return user::TurnWheel(inWindow, point(), int(inStatement.number));
    case Verb::kKey:
        return user::PressKey(inWindow, inStatement.text);
    case Verb::kType:
        return user::TypeText(inWindow, kiocore::utility::ToUTF16(inStatement.text));
    case Verb::kExpect:
    case Verb::kAwait:
        return CheckExpectation(inWindow, inStatement);
    case Verb::kDump:
        return inStatement.text.empty() ? print(user::DescribeNodes(inWindow))
                                        : SaveText(user::DescribeNodes(inWindow) + '\n', inStatement.text);
    case Verb::kScreenshot:
        return user::SaveScreenshot(inWindow, inStatement.text);
    case Verb::kEnd:
        return user::CloseWindow(inWindow);
    }
}

void UiScriptRun::State::Fail(int inStatus, int inLine, const std::string& inText)
{
    if (result.status == 0) { // a statement that opened a dialog may fail after one in that dialog did
        result = {inStatus, inLine, inText};
    }
}

/// Asks the dialog in front to close; one that does not is ended, so that nothing waits for ever.
void UiScriptRun::State::CloseDialogs()
{
    const auto windows = user::ShownWindows();
    auto* dialog = windows.empty() ? nullptr : dynamic_cast<kioui::UI_Dialog*>(windows.front());
    if (dialog != nullptr && dialog->IsRunningModal()) {
        Schedule();
        if (askedToClose != dialog) {
            askedToClose = dialog;
            user::CloseWindow(*dialog);
        } else {
            dialog->EndModal(kioui::UI_Dialog::kResult_Cancel);
        }
    }
}

UiScriptRun::UiScriptRun(UiScript inScript, Print inPrint) : mState(std::make_shared<State>())
{
    mState->script = std::move(inScript);
    mState->print = std::move(inPrint);
}

UiScriptRun::~UiScriptRun()
{
    mState->isOver = true;
}

void UiScriptRun::Start()
{
    mState->Schedule();
}

UiScriptResult UiScriptRun::Finish()
{
    State& state = *mState;
    state.isOver = true;
    state.askedToClose.reset();
    if (state.result.status == 0 && state.next < state.script.statements.size()) {
        state.result = {
            1, state.script.statements[state.next].line,
            LocalText("$$$/Halcyon/TrHost/UiScript/OverBefore=found all dialogs over before this line")};
    }
    return state.result;
}

} // namespace trhost::ui
