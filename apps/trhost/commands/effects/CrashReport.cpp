// Which effects took trhost down.
#include "../EffectOptions.h"

#include "../../support/CrashReports.h"
#include "../../support/DisabledEffects.h"
#include "../../support/Failure.h"
#include "EffectText.h"

namespace trhost {

namespace {

using effects::CrashHistoryEntry;
using kiocore::utility::ToUTF16;

/// "crashed 3 times, suspected once".
UTF16String CountsOf(const CrashHistoryEntry& inEntry)
{
    const auto times = [](std::int64_t inCount) {
        return inCount == 1 ? Text("$$$/Halcyon/TrHost/Once=once")
                            : Text("$$$/Halcyon/TrHost/Times=@0 times", {ToUTF16(std::to_string(inCount))});
    };
    UTF16String counts;
    if (inEntry.crashes > 0) {
        counts = Text("$$$/Halcyon/TrHost/CrashCount=crashed @0", {times(inEntry.crashes)});
    }
    if (inEntry.suspicions > 0) {
        counts += (counts.empty() ? u"" : u", ") +
                  Text("$$$/Halcyon/TrHost/SuspectCount=was running @0 when trhost was ended",
                       {times(inEntry.suspicions)});
    }
    return counts;
}

void Show(Output& ioOutput, const CrashHistoryEntry& inEntry, bool inIsEnabled)
{
    const JsonLine object = JsonLine()
                                .Add("matchName", inEntry.matchName)
                                .Add("name", inEntry.displayName)
                                .Add("version", inEntry.version)
                                .Add("crashes", inEntry.crashes)
                                .Add("suspicions", inEntry.suspicions)
                                .Add("lastDate", inEntry.lastDate)
                                .Add("lastSessionID", inEntry.lastSessionID)
                                .Add("enabled", inIsEnabled);
    const UTF16String matchName = ToUTF16(inEntry.matchName);
    const UTF16String version = inEntry.version.empty() ? u"" : u" " + ToUTF16(inEntry.version);
    ioOutput.Result(inIsEnabled
                        ? Text("$$$/Halcyon/TrHost/CrashLine=@0@1: @2, last on @3; trhost effects disable @0 "
                               "switches it off",
                               {matchName, version, CountsOf(inEntry), ToUTF16(inEntry.lastDate)})
                        : Text("$$$/Halcyon/TrHost/CrashLineOff=@0@1: @2, last on @3; it is switched off",
                               {matchName, version, CountsOf(inEntry), ToUTF16(inEntry.lastDate)}),
                    object);
}

} // namespace

EffectCrashes ReadEffectCrashes(const StateFolders& inFolders)
{
    EffectCrashes crashes;
    for (const CrashHistoryEntry& entry :
         effects::CrashHistory(inFolders.crashFolder + u"history.json").Entries()) {
        crashes[entry.matchName] = int(entry.crashes);
    }
    return crashes;
}

int EffectsCrashReport(Context& ioContext, const CrashReportOptions& inOptions)
{
    effects::CrashHistory history = OpenCrashHistory(ioContext.folders, ioContext.output);
    const std::vector<CrashHistoryEntry> entries = history.Entries();
    const std::set<std::string> disabled = ReadDisabledEffects();
    for (const CrashHistoryEntry& entry : entries) {
        Show(ioContext.output, entry, disabled.count(entry.matchName) == 0);
    }
    if (entries.empty()) {
        ioContext.output.Note(Text("$$$/Halcyon/TrHost/NoCrashes=no effect has crashed"),
                              JsonLine().Add("crashes", 0));
    }
    if (ioContext.options.safeMode) {
        return kExit_Done; // which writes nothing
    }
    if (inOptions.clear) {
        for (const CrashHistoryEntry& entry : entries) {
            history.Clear(entry.matchName);
        }
    } else {
        history.MarkShown(entries);
    }
    return kExit_Done;
}

} // namespace trhost
