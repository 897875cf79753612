#pragma once

#include "Classes.h"
#include "Errors.h"
#include "Handles.h"
#include "Limits.h"
#include "Modules.h"

#include <kioscripting/Engine.h>

#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace kioscripting_jsc {

/// The functions that the bridge's own scripts offer; all of them protected.
struct BridgeFunctions {
    JSObjectRef handleOf, nameOf, defineClass, wrap, publish, defineGlobal; // Classes.js
    JSObjectRef makeError, facts;                                           // Errors.js
    JSObjectRef kindOf, keys, bytesOf, dateText, watch;                     // Values.js
    JSObjectRef makeRequire, makeModule, run, runData, defineRequire;       // Modules.js
    JSObjectRef inspect, line;                                              // Inspect.js
    JSObjectRef complete;                                                   // Prompt.js
    JSObjectRef watchJobs;                                                  // Jobs.js
};

/// A context of scripts, and the natives' context that goes with it.
///
/// Threading: the engine's.
struct ScContext {
    ScContext();
    ~ScContext();
    ScContext(const ScContext&) = delete;
    ScContext& operator=(const ScContext&) = delete;

    JSContextGroupRef group;
    JSGlobalContextRef context;
    int hdl;
};

/// What the parts of one engine share.
///
/// Threading: the engine's, except where a member says otherwise.
struct Runtime {
    explicit Runtime(kioscripting::EngineSettings inSettings);
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    /// Calls a script's function.
    /// @throws ScriptThrown.
    JSValueRef Call(JSObjectRef inFunction, std::span<const JSValueRef> inArguments);
    JSValueRef Call(JSObjectRef inFunction, std::initializer_list<JSValueRef> inArguments)
    {
        return Call(inFunction, std::span(inArguments.begin(), inArguments.size()));
    }
    /// @throws ScriptThrown for what has no text, and for a text that fails.
    std::string Text(JSValueRef inValue);
    JSValueRef Get(JSObjectRef inObject, const char* inName);
    JSValueRef GetAt(JSObjectRef inArray, unsigned inIndex);
    std::size_t Length(JSObjectRef inArray);

    kioscripting::EngineSettings settings;
    HandleKeeper handles; // above the context, which tells what is unused as it goes
    ClassTable classes;
    ScContext owned;
    const JSContextGroupRef group;
    const JSGlobalContextRef context;
    const int contextHdl;
    BridgeFunctions functions{};
    Limits limits;
    ModuleCache modules;
    std::vector<Protected> rejections; ///< that nobody handled, in this run
};

} // namespace kioscripting_jsc
