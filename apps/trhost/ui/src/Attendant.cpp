#include "Attendant.h"

#include "InterruptWatch.h"

#include "../script/UiScriptRun.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kioui_testing/NodeTree.h>
#include <kioui_testing/UserEvents.h>

#include <cerrno>
#include <exception>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

namespace trhost::ui {

namespace {

using kiocore::kio_exception;
namespace user = kioui::testing;

std::string ReadText(const std::string& inFile)
{
    std::ifstream file(inFile, std::ios::binary);
    std::ostringstream text;
    if (!(file && (text << file.rdbuf()))) {
        throw kiocore::file_exception("open", inFile, errno);
    }
    return text.str();
}

/// As compilers say it, so that editors find the place.
std::string AtLine(const std::string& inFile, int inLine, const std::string& inText)
{
    return inFile + ':' + std::to_string(inLine) + ": " + inText;
}

/// @throws kio_exception (kError_BadArgument) with all that is wrong in it.
UiScript ReadScript(const std::string& inFile)
{
    UiScript script = ParseUiScript(ReadText(inFile));
    std::string problems;
    for (const UiScriptError& error : script.errors) {
        problems += (problems.empty() ? "" : "; ") + AtLine(inFile, error.line, error.text);
    }
    if (!problems.empty()) {
        throw kio_exception(problems, kiocore::kError_BadArgument);
    }
    return script;
}

} // namespace

struct Attendant::State {
    explicit State(const UserInterfaceSettings& inSettings) : settings(inSettings)
    {
        if (settings.attendance == Attendance::kScript) {
            script.emplace(ReadScript(settings.file), [this](const std::string& inText) {
                dump += dump.empty() ? inText : '\n' + inText;
            });
        }
    }

    /// Describes the dialog in front, or takes its picture.
    void Look()
    {
        try {
            kioui::UI_OSWindow& window = *user::ShownWindows().at(0);
            if (settings.attendance == Attendance::kDump) {
                dump = user::DescribeNodes(window);
            } else {
                user::SaveScreenshot(window, settings.file);
            }
        } catch (...) {
            problem = std::current_exception();
        }
        CancelAllDialogs();
    }

    const UserInterfaceSettings settings;
    std::string dump;
    std::optional<UiScriptRun> script;
    bool hasBegun = false;
    std::exception_ptr problem;
};

Attendant::Attendant(const UserInterfaceSettings& inSettings) : mState(std::make_shared<State>(inSettings)) {}

Attendant::~Attendant() = default;

void Attendant::ExpectDialog()
{
    if (mState->settings.attendance == Attendance::kPerson) {
        return;
    }
    const bool isFirst = !std::exchange(mState->hasBegun, true);
    if (!mState->script) {
        // One that follows is not what was asked for, and nobody is there to answer it.
        user::RunWhenIdle(isFirst ? std::function<void()>([state = mState] { state->Look(); })
                                  : &CancelAllDialogs);
    } else if (isFirst) {
        mState->script->Start();
    }
}

std::string Attendant::Finish()
{
    if (mState->problem) {
        std::rethrow_exception(mState->problem);
    }
    if (mState->script) {
        const UiScriptResult result = mState->script->Finish();
        if (result.status != 0) {
            throw kio_exception(AtLine(mState->settings.file, result.line, result.text),
                                result.status == 1 ? kiocore::kError_Generic : kiocore::kError_File);
        }
    }
    return mState->dump;
}

} // namespace trhost::ui
