#pragma once

#include <kiocore/utility/UTF16String.h>

#include <functional>
#include <string>
#include <vector>

namespace trhost {

/// What became of one media file.
struct IngestOutcome {
    enum class Kind {
        kMade,
        kUpToDate,
        kSkipped, ///< nothing in it that could be conformed; the reason is recorded, too
        kFailed,
        kCancelled,
    };
    Kind kind = Kind::kCancelled;
    kiocore::UTF16String reason;             ///< of skipping or failing, one line
    std::vector<kiocore::UTF16String> files; ///< that were made now
    std::vector<std::string> warnings;       ///< of the media module, one line each
    double seconds = 0;
};

/// Makes and records the cache files of one media file, unless all of them are there and up to date.
/// Stops, with nothing half-made and nothing half-recorded, once the program is interrupted.
/// @param inProgress  called on this thread with 0 to 1 while files are being made.
///
/// Threading: any thread; different files at once. Throws nothing.
IngestOutcome IngestFile(const kiocore::UTF16String& inPath, bool inForce,
                         const std::function<void(double)>& inProgress) noexcept;

} // namespace trhost
