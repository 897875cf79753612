#include "FileStamp.h"

#include <kiocore/filesupport/FileTime.h>

#include <sys/stat.h>

namespace trhost::effects {

std::optional<FileStamp> StampOf(const std::string& inFile)
{
    struct stat state = {};
    if (stat(inFile.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) {
        return std::nullopt;
    }
    return FileStamp{static_cast<std::uint64_t>(state.st_size),
                     kiocore::filesupport::ToFileTime(state.st_mtim)};
}

} // namespace trhost::effects
