#pragma once

#include "Errors.h"

#include <map>
#include <string>

namespace kioscripting_jsc {

/// What `require` has loaded.
///
/// Threading: the engine's thread.
class ModuleCache {
public:
    explicit ModuleCache(Runtime& inRuntime) : mRuntime(inRuntime) {}
    JSObjectRef Natives();
    /// The `require` of the scripts that are evaluated now.
    void Offer(const std::string& inFile);
    /// Without what stands in front of a module's first line.
    int ColumnInFile(const std::string& inFile, int inLine, int inColumn) const;
    void Clear() { mModules.clear(); }

private:
    JSValueRef Load(const std::string& inFromFile, const std::string& inName);
    JSObjectRef Compile(const std::string& inPath, const std::string& inText);
    void Run(JSObjectRef inModule, const std::string& inPath, const std::string& inText);

    Runtime& mRuntime;
    std::map<std::string, Protected> mModules; // also those that are still being run
};

} // namespace kioscripting_jsc
