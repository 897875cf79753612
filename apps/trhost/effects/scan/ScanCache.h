#pragma once

#include "EffectDescription.h"
#include "WorkerFailure.h"
#include "platform/FileStamp.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace trhost::effects {

/// What was found out about one plug-in: a description, or why there is none.
struct ScannedPlugin {
    std::string name; ///< within its file
    std::optional<EffectDescription> description;
    std::optional<WorkerFailure> failure;
};

/// What was found out about one file.
struct ScannedFile {
    FileStamp stamp;
    /// Files whose change makes this out of date too, native paths; a file that was not there has an empty
    /// stamp.
    std::vector<std::pair<std::string, FileStamp>> behind;
    std::optional<WorkerFailure> failure; ///< nothing is known of its plug-ins
    std::vector<ScannedPlugin> plugins;
};

/// What scans have found, kept in one JSON file, so that later starts load no plug-in. Effect types are not
/// in it: the registry has those.
///
/// A file that is damaged is set aside under another name and counts as empty, one of another version as
/// empty: all that is lost is the time of a scan.
///
/// Threading: one thread at a time. Of two processes that save at once one wins, whole.
class ScanCache {
public:
    /// @param inFolder  native path; made when the cache is saved. Empty: nothing is read or kept.
    explicit ScanCache(std::string inFolder);

    /// @return null when nothing is known of the file, or it or one of those behind it has changed.
    const ScannedFile* FindFresh(const std::string& inTechnology, const std::string& inFile) const;
    void Set(const std::string& inTechnology, const std::string& inFile, ScannedFile inScanned);
    /// Saves what has changed since it was read, without files that are no longer there.
    /// @return 0 saved, or nothing to do; -1 the file cannot be written: trace channel "Effects" tells why.
    int Save();

    static constexpr const char* kFileName = "effect-scan.json";
    static constexpr const char* kDamagedFileName = "effect-scan.damaged.json";

private:
    using Key = std::pair<std::string, std::string>; // technology, file
    void Read();
    std::string PathOf(const char* inName) const { return mFolder + "/" + inName; }

    const std::string mFolder;
    std::map<Key, ScannedFile> mFiles;
    bool mIsChanged = false;
};

} // namespace trhost::effects
