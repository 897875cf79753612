#pragma once

#include <kiocore/Export.h>
#include <kioscripting/Engine.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The module that evaluates scripts, loaded by the command that runs one: only it knows the script engine.
namespace trhost::script {

/// Changes whenever anything below, or in kioscripting/Engine.h, does, so that a module of another build is
/// refused.
inline constexpr int kScriptModuleVersion = 1;
inline constexpr const char* kScriptModuleFileName = "trhost_script.so";
inline constexpr const char* kScriptModuleFunctionName = "trhost_script_module";

/// Reads lines that a person types: with editing, a history that is kept, and completion by the tab key.
///
/// Threading: one thread; one at a time.
class ILineEditor {
public:
    virtual ~ILineEditor() = default;
    /// @return empty at the end of input. An empty line where Ctrl-C was typed.
    virtual std::optional<std::string> ReadLine(const std::string& inPrompt) = 0;
    /// Adds to the history, in memory; the file is written when the editor goes.
    virtual void Remember(const std::string& inText) = 0;
};

struct LineEditorSettings {
    std::string historyFile; ///< native path; empty keeps none
    /// What the end of a text can go on with, each from the start of its last word.
    std::function<std::vector<std::string>(const std::string& inText)> complete;
};

/// Threading: any thread.
class IScriptModule {
public:
    virtual ~IScriptModule() = default;
    /// @throws kio_exception (kError_Startup) when the engine cannot start.
    virtual std::unique_ptr<kioscripting::IScriptEngine>
    MakeEngine(kioscripting::EngineSettings inSettings) = 0;
    virtual std::unique_ptr<ILineEditor> MakeLineEditor(LineEditorSettings inSettings) = 0;
    /// The engine at work, for `--version` and error reports.
    virtual std::string EngineVersion() const = 0;
};

} // namespace trhost::script

/// @return the module's one object, which lives as long as the process; null when the module was built for
///     another version of this header.
extern "C" KIO_EXPORT trhost::script::IScriptModule* trhost_script_module(int inVersion);
