#pragma once

#include <kiocore/Export.h>

#include <sys/types.h>

#include <string>
#include <string_view>

namespace kiocore::filesupport {

/// Middle part of the names of temporary files: "<name>.kiotmp-<pid>-<number>", in the folder of the file
/// that they will replace. One that is left over belongs to a process that was killed while it saved.
/// <name> is cut where the whole would be longer than a file name may be.
inline constexpr std::string_view kTemporaryFileMark = ".kiotmp-";

/// A new name beside the given file that this process has not used before.
KIO_EXPORT std::string TemporaryNameBeside(std::string_view inNativePath);

/// A file in the making, beside the one that it will become. Removed when this goes, unless it was renamed.
///
/// Threading: one thread at a time.
class KIO_EXPORT TemporaryFile {
public:
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// All return 0, or -1 with errno.
    /// @param inTarget  native path; its folder must exist.
    int Create(std::string_view inTarget, mode_t inMode);
    /// The descriptor is gone in any case. A failure means that the bytes may not have arrived.
    int Close();
    int RenameTo(const char* inTarget);

    int Descriptor() const { return mFile; }

private:
    int mFile = -1;
    std::string mPath; // empty when there is nothing to remove
};

} // namespace kiocore::filesupport
