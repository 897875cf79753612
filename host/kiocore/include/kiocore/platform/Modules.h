#pragma once

#include <kiocore/Export.h>

#include <string>
#include <string_view>

namespace kiocore::platform {

/// Where things lie, worked out from the files that this process runs, so that a build tree, an installed
/// tree and a moved copy all work. UTF-8, absolute, no separator at the end.
///
/// Threading: any thread.
KIO_EXPORT std::string ProgramPath();
/// The folder of the shared library (or program) that holds the given code or data address.
/// @throws kio_exception (kError_BadArgument) when the address lies in no file's mapping.
KIO_EXPORT std::string FolderOfModule(const void* inAddress);
/// Resources of the library that holds inAddress: <prefix>/share/<inName>, where <prefix> is the nearest of
/// the folders above the module's own (up to three) that has it, else the folder right above.
KIO_EXPORT std::string ResourceFolder(const void* inAddress, std::string_view inName);

/// Loads a module and looks a function up in it; the module stays loaded for the life of the process.
/// @throws kio_exception (kError_File) with the loader's own text, which names what is missing.
KIO_EXPORT void* LoadModuleFunction(const std::string& inModulePath, const char* inFunctionName);

} // namespace kiocore::platform
