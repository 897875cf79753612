#pragma once

#include <string_view>

namespace ZOL {

/// Folders opened for listing and for working in. All return a descriptor, or -1 with errno.

/// @param inPath  native, zero-terminated; a link is followed.
int OpenRootFolder(const char* inPath);
/// One step down. ENOTDIR or ELOOP for a link.
int OpenSubfolder(int inFolder, const char* inName);
/// Any number of steps down, none of them through a link, however long the whole path is.
/// @param inPath  below inFolder: "" for itself, or names each followed by a separator.
int OpenFolderBelow(int inFolder, std::string_view inPath);

} // namespace ZOL
