#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace kiocore::utility {

/// Small questions about files and paths. Paths are in the platform's form.
///
/// Threading: any thread.
class KIO_EXPORT FileUtils {
public:
    /// The path with a separator at its end; unchanged when it has one; empty stays empty.
    static UTF16String AddTrailingSlash(UTF16View inPath);
    /// The path of what has the name in the folder: both with one separator between them; just the name when
    /// the folder is empty.
    static UTF16String BuildPathSpec(UTF16View inFolder, UTF16View inName);
    /// Follows symbolic links. False also when a folder on the way may not be searched.
    static bool FileOrDirExists(UTF16View inPath);
    /// True when the path exists and this user may not write to it (a folder: not make files in it).
    static bool IsReadOnly(UTF16View inPath);
    /// Sets the file's access time to now, and nothing else: the modification time stays to the
    /// nanosecond. Lacking the right to do so (another's file, a read-only file system) is no failure.
    /// @throws file_exception when the file is not there, or the system fails otherwise.
    static void UpdateFileAccessedTime(UTF16View inPath);
};

} // namespace kiocore::utility
