#pragma once

#include <kiocore/Export.h>
#include <kiocore/filesupport/FileTime.h>
#include <kiocore/filesupport/TemporaryFile.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>
#include <string_view>

namespace kiocore::filesupport {

/// What a finished save survives.
enum class Durability {
    kFull, ///< a power cut, also for the name: the folder is synced too
    kFile, ///< a power cut: the name shows the old or the new contents, each whole
    kNone, ///< a crash of the process, not of the machine
};

/// What the saving left behind, for callers that keep the contents in memory.
struct SaveResult {
    int result = -1;     ///< 0 saved; negative: nothing changed, no temporary file is left
    int errorNumber = 0; ///< the system's reason when negative
    /// Where it stopped when negative: "check", "open", "write", "set mode", "set time", "sync", "close",
    /// "link", "rename", "open folder" or "sync folder".
    const char* failedStep = "";
    FileTime modificationTime = kNoFileTime; ///< of the saved file
};

/// Replaces (or makes) the file in one step: whoever opens the path sees the old bytes or the new ones.
/// The new file's modification time is later than that of the file it replaces, also when the clock went
/// back or stands still: an equal time would let another process trust its old copy.
/// Permissions of the replaced file are kept. The folder must exist. A path that names something else than a
/// regular file is left alone ("check").
///
/// With kFull the replaced file keeps a second, temporary name until the folder is synced, so that it comes
/// back when that fails. Only a file system without hard links cannot do that: there a failed "sync folder"
/// leaves the new contents in place.
///
/// Threading: any thread; two saves of one path at once leave one of the two contents.
KIO_EXPORT SaveResult SaveFileAtomically(utility::UTF16View inPath, std::string_view inBytes,
                                         Durability inDurability);

} // namespace kiocore::filesupport
