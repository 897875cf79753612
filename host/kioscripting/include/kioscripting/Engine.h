#pragma once

#include <kiocore/config/Errors.h>
#include <kioscripting/Value.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kioscripting {

inline constexpr std::uint32_t kError_Script = 0x80620001;          ///< a script threw
inline constexpr std::uint32_t kError_ScriptTimeLimit = 0x80620002; ///< a script ran longer than it may

/// Where in a script something went wrong, and how it got there.
struct ScriptPlace {
    std::string file;  ///< as it was given to the engine; empty when unknown
    int line = 0;      ///< from 1; 0 unknown
    int column = 0;    ///< from 1; 0 unknown
    std::string stack; ///< the engine's, one call a line
};

/// A script failed. The text is the error's own, without its place; the code is that of the native exception
/// it came from, where it did, else one of the above (kError_Cancelled for a run that was interrupted).
class KIO_EXPORT script_exception : public kiocore::kio_exception {
public:
    script_exception(std::string inTextUTF8, std::uint32_t inCode, ScriptPlace inPlace);
    ~script_exception() override;
    const ScriptPlace& Place() const noexcept { return mPlace; }
    /// "file:line:column: text".
    std::string Full() const;

private:
    ScriptPlace mPlace;
};

enum class ConsoleLevel { kLog, kInfo, kWarning, kError };

/// A script's own module, as `require` wants it.
struct ModuleSource {
    std::string path; ///< identifies it: a module is run once
    std::string text; ///< UTF-8; JSON when the path ends in ".json"
};

struct EngineSettings {
    /// What `console` writes; nowhere when empty.
    std::function<void(ConsoleLevel, const std::string& inText)> console;
    /// Finds what `require(inName)` in inFromFile means. What it throws the script gets. Without it there is
    /// no `require`.
    std::function<ModuleSource(const std::string& inName, const std::string& inFromFile)> loadModule;
    /// Most processor time that one evaluation may take, in seconds; 0 is no limit. Natives are not
    /// interrupted.
    double timeLimitSeconds = 0;
    /// Asked several times a second while a script runs, on its thread; true ends the run.
    std::function<bool()> isCancelled;
    /// What scripts and people are told of a native's exception; what() unless set.
    std::function<std::string(const std::exception&)> tellError;
};

/// Evaluates scripts in a context of its own, in which every registered class can be reached by its
/// namespace. Natives' exceptions become errors that scripts can catch, with "code" and "message"; scripts'
/// errors become script_exceptions.
///
/// Threading: one thread at a time, unless a function says otherwise. Natives that the engine held are let go
/// with it, or before, on whatever thread.
class IScriptEngine {
public:
    virtual ~IScriptEngine() = default;

    virtual int GetContextHdl() const = 0;

    /// Runs a script. Where its value is a promise, what it is settled with: everything that promises have
    /// still to do is done first.
    /// @param inFile  for messages and `require`.
    /// @throws script_exception, also for a promise that was rejected and nobody looked, and for a value that
    /// never is settled.
    virtual Value Evaluate(std::string_view inSource, const std::string& inFile, int inFirstLine = 1) = 0;
    /// The same for a script whose value is nobody's business, and may be one that natives have no use for.
    virtual void Execute(std::string_view inSource, const std::string& inFile) = 0;
    /// The same, but answers with the value as a person at a prompt wants to see it: `{ a: 1 }`, `"text"`.
    virtual std::string EvaluateToText(std::string_view inSource, const std::string& inFile) = 0;
    /// Whether a text at a prompt is an incomplete script, so that more lines are wanted.
    virtual bool IsIncomplete(std::string_view inSource) = 0;
    /// What the name or the path of names at the end of a text can go on with: of "Halcyon.TRF" it is
    /// "Halcyon.TRFoundation". Sorted. Getters are not run.
    virtual std::vector<std::string> Complete(std::string_view inText) = 0;

    /// Defines a global that scripts cannot assign to.
    virtual void SetGlobal(const std::string& inName, const Value& inValue) = 0;
    /// Looks for unused objects now and lets their natives go.
    virtual void CollectGarbage() = 0;
};

} // namespace kioscripting
