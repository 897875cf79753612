#pragma once

#include <kiocore/utility/UTF16String.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace trhost::effects {

/// What is remembered of one plug-in.
struct CrashHistoryEntry {
    std::string matchName;
    std::string displayName;     ///< empty while it was only suspected
    std::string version;         ///< of the last crash; empty likewise
    std::int64_t crashes = 0;    ///< the process crashed while it was running
    std::int64_t suspicions = 0; ///< it was running when its process ended, nobody knows why
    std::string lastDate;        ///< of either, "2026-11-21T17:10:00Z"
    std::string lastSessionID;   ///< of the last crash
    bool wasShown = false;       ///< since the last of either
};

/// One crash, as the crashed process described its plug-in.
struct CrashRecord {
    std::string matchName;
    std::string displayName;
    std::string version;
    std::string sessionID;
};

/// Remembers which plug-ins took the process down, in one JSON file that several processes may use at once:
/// each change reads the file, changes that and saves it atomically, all under a lock between processes.
///
/// A file that cannot be understood is renamed to "<file>.damaged-<date>" beside it, told of once, and the
/// history begins anew. One that a newer version of the program has written is left alone: every call throws
/// kio_exception (kError_DamagedData) that says so. Reading and saving throw file_exception where the system
/// fails; what the file held stays.
///
/// Threading: any thread.
class CrashHistory {
public:
    /// Takes one line for the user.
    using Tell = std::function<void(const kiocore::UTF16String& inLine)>;

    /// @param inFile  made, with its folder, at the first change; its lock file "<file>.lock" beside it.
    /// @param inTell  called while no lock is held. Trace channel "Effects" at level 1 hears it as well.
    explicit CrashHistory(kiocore::UTF16String inFile, Tell inTell = {});

    /// Counts one more, dated now; it is to be shown again.
    void AddCrash(const CrashRecord& inCrash);
    void AddSuspect(const std::string& inMatchName);

    /// The newest first.
    std::vector<CrashHistoryEntry> Entries();
    /// Those that the user has seen need not be shown again: all whose counts are still as in inShown, so
    /// that what another process adds meanwhile is not taken for seen.
    void MarkShown(const std::vector<CrashHistoryEntry>& inShown);
    /// Forgets a plug-in. @return false when there was nothing to forget.
    bool Clear(const std::string& inMatchName);

private:
    using List = std::vector<CrashHistoryEntry>;
    /// @param inChange  called under the lock between processes; whether there is anything to save.
    bool Change(const std::function<bool(List&)>& inChange);
    bool ChangeLocked(const std::function<bool(List&)>& inChange, kiocore::UTF16String& outTold);
    List Load(kiocore::UTF16String& outProblem) const;
    void Save(const List& inEntries) const;
    kiocore::UTF16String SetAside(const std::string& inReason) const;
    void TellOf(const kiocore::UTF16String& inProblem) const;

    const kiocore::UTF16String mFile;
    const kiocore::UTF16String mLockFile;
    const Tell mTell;
};

} // namespace trhost::effects
