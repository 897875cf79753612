#pragma once

#include <TR/EffectSettings.h>
#include <ZOL/BatchOperation.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/UTF16String.h>

#include <functional>
#include <memory>
#include <string>

/// The module that shows windows, loaded by commands that show some: only it knows the window toolkit.
namespace trhost::ui {

using kiocore::UTF16String;

/// Raised when anything below changes, so that a module of another build is refused.
inline constexpr int kUserInterfaceModuleVersion = 1;
inline constexpr const char* kUserInterfaceModuleFileName = "trhost_ui.so";
inline constexpr const char* kUserInterfaceModuleFunctionName = "TrhostUserInterfaceModule";

/// Who attends to the dialogs that are shown.
enum class Attendance {
    kPerson,
    kDump,       ///< the first dialog is written as text, and closed
    kScreenshot, ///< the first dialog's picture is written to a file, and it is closed
    kScript,     ///< a script uses them
};

struct UserInterfaceSettings {
    UTF16String applicationName;
    std::string windowSizesFile; ///< kept between runs; native path
    bool isLight = false;
    float scale = 0; ///< device pixels per unit; 0 is the desktop's
    Attendance attendance = Attendance::kPerson;
    std::string file;       ///< picture to write, or script to run; native path
    int interruptFile = -1; ///< becomes readable when all dialogs are to be closed; -1 is none
};

/// The plug-in manager's question and its answer.
struct ManageEffects {
    TR::AllEffectSettings settings;
    std::string state;         ///< of the columns, as it was answered the last time; then as it is now
    UTF16String find;          ///< what to search for at first; empty shows all
    bool findAmongAll = false; ///< also among effects that come with the host
    /// Whether the records differ from what they were; asked after each change.
    std::function<bool()> haveChanged;

    bool isOK = false;
    TR::EffectSettingsSet modified;
};

/// Dialogs, one after the other. Everything is modal and returns when it was answered.
///
/// Threading: main thread, which must be registered and outlive it.
class IUserInterface {
public:
    virtual ~IUserInterface() = default;

    virtual void Run(ManageEffects& ioQuestion) = 0;
    /// @return whether the user wants to restart now.
    virtual bool AskForRestart(bool inChangedInAnotherApp) = 0;
    /// Runs an operation under a progress dialog.
    /// @return false when the user cancelled; the operation has stopped then.
    virtual bool RunOperation(const UTF16String& inTitle, const UTF16String& inMessage,
                              const kiocore::InterfaceRef<ZOL::IBatchOperation>& inOperation) = 0;
    virtual void ShowBlackmagicRAWRedirect() = 0;

    /// What attending came to, once all dialogs are closed: the text of a dump.
    /// @throws kio_exception what went wrong in a script, and in which line (kError_BadArgument before
    /// anything was
    ///     done; kError_Generic for an expectation that was not met).
    virtual std::string FinishAttending() = 0;
};

class IUserInterfaceModule {
public:
    virtual ~IUserInterfaceModule() = default;
    /// @throws kio_exception when no window system can be reached, or the script is wrong.
    virtual std::unique_ptr<IUserInterface> Open(const UserInterfaceSettings& inSettings) = 0;
};

} // namespace trhost::ui
