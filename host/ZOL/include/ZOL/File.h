#pragma once

#include <kiocore/Export.h>
#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>

namespace ZOL {

using kiocore::UTF16View;

class FileList;
class OpenFolder;

/// Operations on one file.
///
/// Threading: any thread.
class KIO_EXPORT File {
public:
    /// @return 0, or negative (outTime untouched) when the file cannot be asked. Follows symbolic links.
    static int GetLastModificationTime(UTF16View inPath, kiocore::filesupport::FileTime& outTime);
    /// Deletes a regular file.
    /// @return 0 deleted; -1 there is none; -2 it is something else than a regular file (a folder, a symbolic
    ///     link, a device) and was left alone.
    /// @throws file_exception when there is one and the system refuses to delete it.
    static int Delete(UTF16View inPath);
    /// The same for a file that a search found, at a fraction of the cost: the folder stays open from one
    /// file to the next, and the type is known. No folder on the way that has become a link since the search
    /// is followed. A link that took the file's place since then is removed itself; what it points at stays.
    /// @param ioFolder  one for all files of a run; in order of the list is cheapest.
    static int Delete(const FileList& inFiles, std::size_t inIndex, OpenFolder& ioFolder);
    /// Copies contents and permissions; replaces an existing regular file in one step once all is copied.
    /// Survives a crash of the process, not of the machine.
    /// @return 0; negative when it failed or the target is something else than a regular file: no target was
    ///     made or changed. Never throws for file errors.
    static int Copy(UTF16View inFrom, UTF16View inTo);
};

/// Operations on one folder.
///
/// Threading: any thread.
class KIO_EXPORT Directory {
public:
    /// Makes the folder and, when inRecursive, those above it. An existing folder is no error.
    /// @return 0, or negative.
    static int CreateOnDisk(UTF16View inFolder, bool inRecursive);
    /// False for what is no folder or cannot be listed.
    static bool IsDirectoryEmpty(UTF16View inFolder);
    /// Deletes an empty folder. @return 0, or negative (not empty, not there, not allowed).
    static int Delete(UTF16View inFolder);
};

} // namespace ZOL
