#pragma once

#include "UiScript.h"

#include <functional>
#include <memory>

namespace trhost::ui {

/// How a run ended.
struct UiScriptResult {
    int status = 0;   ///< 0 all went as the script says; 1 something was not; 3 a file could not be written
    int line = 0;     ///< where it ended, unless all went well
    std::string text; ///< for people, UTF-8
};

/// Does what a script says in the windows in front, one statement each time that a dialog waits; a statement
/// that opens another dialog goes on in that one.
///
/// Threading: UI thread only. Wants an application object.
class UiScriptRun {
public:
    using Print = std::function<void(const std::string& inText)>;

    /// @param inScript  a sound one.
    /// @param inPrint   gets what "dump" without a file shows.
    UiScriptRun(UiScript inScript, Print inPrint);
    ~UiScriptRun();
    UiScriptRun(const UiScriptRun&) = delete;
    UiScriptRun& operator=(const UiScriptRun&) = delete;

    /// Begins as soon as a dialog runs modally: call it right before that. When the script is through, or has
    /// failed, dialogs that still run are closed as if their users had.
    void Start();
    /// Call it when the dialogs are over. What was not done by then counts as failed.
    UiScriptResult Finish();

private:
    struct State;
    std::shared_ptr<State> mState;
};

} // namespace trhost::ui
