#pragma once

#include <string>

namespace trhost {

/// Where a module, or a program that belongs to trhost, lies. Native path.
std::string ModulePath(const char* inFileName);

/// The address of a module's one function. Modules lie in one folder, found relative to the program.
/// @throws kio_exception (kError_File) when the module is not there or cannot be loaded, naming what is
///     missing.
void* LoadModuleByName(const char* inFileName, const char* inFunctionName);

/// @throws Failure (kExit_Failed): the module was built for another version of the program.
[[noreturn]] void ThrowWrongModule(const char* inFileName);

/// The one object of a module, which lives as long as the process.
/// @param inVersion  of the header that the program was built with.
/// @throws as the two above.
template <typename Interface>
Interface& LoadModule(const char* inFileName, const char* inFunctionName, int inVersion)
{
    const auto function = reinterpret_cast<Interface* (*)(int)>(LoadModuleByName(inFileName, inFunctionName));
    Interface* const module = function(inVersion);
    if (!module) {
        ThrowWrongModule(inFileName);
    }
    return *module;
}

} // namespace trhost
