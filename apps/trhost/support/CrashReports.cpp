#include "CrashReports.h"

#include "Failure.h"

#include <TR/EffectPluginManagerCrashDetection.h>
#include <effects/run/BlackBox.h>
#include <kiocore/config/Errors.h>

#include <exception>
#include <optional>

namespace trhost {

namespace {

using effects::CrashHistory;
using effects::CrashHistoryEntry;
using kiocore::utility::ToUTF16;

/// @return empty when there is none, or none that can be read, which is told.
std::optional<TR::CrashedEffectPlugin> ConsumeCrashFile(Output& ioOutput)
{
    try {
        return TR::ConsumeCrashedEffectPluginFile().Get();
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() == TR::kError_NoCrashedPluginFile) {
            return std::nullopt;
        }
        ioOutput.Error(Text("$$$/Halcyon/TrHost/CrashFileFailed=the report of a crash could not be read: @0",
                            {Told(error)}));
    } catch (const std::exception& error) {
        ioOutput.Error(
            Text("$$$/Halcyon/TrHost/CrashFileDamaged=the report of a crash was damaged, and is gone: @0",
                 {Told(error)}));
    }
    return std::nullopt;
}

void TakeOver(const StateFolders& inFolders, CrashHistory& ioHistory, Output& ioOutput)
{
    if (const auto plugin = ConsumeCrashFile(ioOutput)) {
        ioHistory.AddCrash({plugin->matchName.AsString(), plugin->displayName.AsString(),
                            plugin->version.AsString(), plugin->sessionID});
    }
    effects::ReadSuspects(inFolders.crashFolder, [&](const std::vector<effects::Suspect>& inSuspects) {
        for (const effects::Suspect& suspect : inSuspects) {
            ioHistory.AddSuspect(suspect.matchName);
        }
    });
}

UTF16String Name(const CrashHistoryEntry& inEntry)
{
    const std::string version = inEntry.version.empty() ? "" : " " + inEntry.version;
    return ToUTF16(inEntry.displayName.empty()
                       ? inEntry.matchName
                       : inEntry.matchName + " (" + inEntry.displayName + version + ")");
}

void Warn(const CrashHistoryEntry& inEntry, Output& ioOutput)
{
    const UTF16String matchName = ToUTF16(inEntry.matchName);
    ioOutput.Error(inEntry.crashes > 0 ? Text("$$$/Halcyon/TrHost/PluginCrashed=@0 crashed trhost; trhost "
                                              "effects disable @1 switches it off, "
                                              "trhost effects crash-report tells more",
                                              {Name(inEntry), matchName})
                                       : Text("$$$/Halcyon/TrHost/PluginSuspected=@0 was running when trhost "
                                              "was ended; trhost effects disable "
                                              "@1 switches it off, trhost effects crash-report tells more",
                                              {Name(inEntry), matchName}));
}

} // namespace

CrashHistory OpenCrashHistory(const StateFolders& inFolders, Output& ioOutput)
{
    return CrashHistory(inFolders.crashFolder + u"history.json",
                        [&](const kiocore::UTF16String& inLine) { ioOutput.Error(inLine); });
}

void TakeOverCrashReports(const StateFolders& inFolders, Output& ioOutput)
{
    try {
        CrashHistory history = OpenCrashHistory(inFolders, ioOutput);
        TakeOver(inFolders, history, ioOutput);
        if (ioOutput.IsQuiet()) {
            return;
        }
        for (const CrashHistoryEntry& entry : history.Entries()) {
            if (!entry.wasShown) {
                Warn(entry, ioOutput);
            }
        }
    } catch (const std::exception& error) {
        ioOutput.Error(
            Text("$$$/Halcyon/TrHost/CrashesNotKept=what crashed could not be looked up: @0", {Told(error)}));
    }
}

} // namespace trhost
