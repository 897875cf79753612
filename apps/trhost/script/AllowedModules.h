#pragma once

#include "AllowedFolders.h"

#include <kioscripting/Engine.h>

namespace trhost::script {

/// Finds what `require` means: a path that starts with "./", "../" or "/", with or without ".js" or ".json",
/// or a folder with an "index.js", below the folders that may be read.
/// @param inFromFile  the script that asks, relative paths start in its folder.
/// @throws kio_exception (kError_BadArgument) for any other name, a path outside, or one that is not there.
kioscripting::ModuleSource FindModule(const AllowedFolders& inFolders, const std::string& inName,
                                      const std::string& inFromFile);

} // namespace trhost::script
