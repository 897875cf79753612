#pragma once

#include <string>

/// Shared objects that plug-ins lie in. They are loaded apart from each other (a plug-in's functions are no
/// other's) and completely, so that what is missing shows at once.
///
/// They are never unloaded: some start threads, register functions to be run at the end, or leave
/// thread-local objects behind, all of which would then point to code that is gone. So a file is loaded at
/// most once, and what a handle stands for never changes.
///
/// Threading: any thread.
namespace trhost::effects::platform {

struct LoadedLibrary {
    void* handle = nullptr; ///< null when it cannot be loaded; the same for one file, whatever its path
    std::string failure;    ///< the loader's own text then
};
/// Runs the file's initialisers: a call into the plug-in.
LoadedLibrary LoadPluginLibrary(const std::string& inPath);

/// @return null when there is no function of that name.
void* FindFunction(void* inHandle, const char* inName);

/// Whether a file that may not be loadable holds this name, as one with a function of that name does.
/// @return false also for a file that cannot be read.
bool HoldsName(const std::string& inPath, const std::string& inName);

/// Why the file of that path is listed and cannot be run, from the loader's text: "needs libgavl.so.2, which
/// is not installed".
std::string RefusalFromFailure(const std::string& inPath, const std::string& inFailure);

} // namespace trhost::effects::platform
