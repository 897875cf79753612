#pragma once

#include <kiocore/Export.h>
#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/UTF16String.h>

namespace ZOL {

using kiocore::UTF16String;

/// Operations on one file.
///
/// Threading: any thread.
class KIO_EXPORT File {
public:
    /// @return 0, or negative (outTime untouched) when the file cannot be asked. Follows symbolic links.
    static int GetLastModificationTime(const UTF16String& inPath, kiocore::filesupport::FileTime& outTime);
    /// Deletes a regular file.
    /// @return 0 deleted; -1 there is none; -2 it is something else than a regular file (a folder, a symbolic
    ///     link, a device) and was left alone.
    /// @throws file_exception when there is one and the system refuses to delete it.
    static int Delete(const UTF16String& inPath);
    /// Copies contents and permissions; replaces an existing regular file in one step once all is copied.
    /// @return 0; negative when it failed: no target was made or changed. Never throws for file errors.
    static int Copy(const UTF16String& inFrom, const UTF16String& inTo);
};

/// Operations on one folder.
///
/// Threading: any thread.
class KIO_EXPORT Directory {
public:
    /// Makes the folder and, when inRecursive, those above it. An existing folder is no error.
    /// @return 0, or negative.
    static int CreateOnDisk(const UTF16String& inFolder, bool inRecursive);
    /// False for what is no folder or cannot be listed.
    static bool IsDirectoryEmpty(const UTF16String& inFolder);
    /// Deletes an empty folder. @return 0, or negative (not empty, not there, not allowed).
    static int Delete(const UTF16String& inFolder);
};

} // namespace ZOL
