// Cleaning and deleting everything: the library's two batch operations.
#include "BatchRun.h"
#include "Commands.h"

#include "../support/CacheFileKinds.h"
#include "../support/DocumentIdentity.h"
#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Interrupt.h"
#include "../support/Records.h"

#include <TR/DeleteAllMediaCacheEntriesOperation.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/utility/FileUtils.h>

#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace trhost {

namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

void Say(Context& ioContext, const char* inAction, const char* inWhat, const UTF16String& inPath)
{
    ioContext.output.Result(inPath,
                            JsonLine().Add("action", inAction).Add("what", inWhat).Add("path", inPath));
}

/// What a cleaning would delete now, record by record as it goes through them.
void ShowCleaning(Context& ioContext)
{
    for (const UTF16String& path : FindRecordFiles()) {
        ThrowIfInterrupted();
        std::string error;
        const auto record = ReadRecord(path, error);
        if (!record) {
            continue; // cleaning passes over what it cannot read
        }
        Guid documentID;
        Guid contentState;
        const bool upToDate = ResolveDocument(ZOL::PathUtils::ToNormalizedPath(record->originalPath), false,
                                              documentID, contentState) >= 0 &&
                              contentState == record->contentState;
        std::size_t kept = 0;
        for (const RecordedItem& item : record->items) {
            if (item.state != ItemState::kPresent) {
                continue; // dropped when the record is read
            }
            if (upToDate) {
                ++kept;
            } else {
                Say(ioContext, "wouldDelete", "cacheFile", item.path);
            }
        }
        if (kept == 0) {
            Say(ioContext, "wouldDelete", "record", path);
        }
    }
}

struct WipedFolder {
    UTF16String folder;
    const std::vector<UTF16String>& extensions;
    const char* what;
};

/// The folders that delete-all goes through, in its order.
std::vector<WipedFolder> WipedFolders(const Context& inContext)
{
    const auto normalised = [](const UTF16String& inFolder) {
        return kiocore::utility::FileUtils::AddTrailingSlash(ZOL::PathUtils::ToNormalizedPath(inFolder));
    };
    const UTF16String shared =
        kiocore::utility::FileUtils::AddTrailingSlash(inContext.folders.sharedDocuments);
    const UTF16String sharedCache = normalised(shared + u"Media Cache Files");
    const UTF16String sharedPeaks = normalised(shared + u"Peak Files");
    const UTF16String cache = normalised(PreferredFolder(&BE::IPreferences::GetMediaCacheFilesFolder));
    const UTF16String peaks = normalised(PeakFilesFolder());
    std::vector<WipedFolder> folders{
        {normalised(PreferredFolder(&BE::IPreferences::GetMediaCacheDatabaseFolder)), RecordExtensions(),
         "record"},
        {sharedCache, CacheExtensions(), "cacheFile"}};
    if (cache != sharedCache) {
        folders.push_back({cache, CacheExtensions(), "cacheFile"});
    }
    folders.push_back({normalised(PreferredFolder(&BE::IPreferences::GetFirstMetadataCacheFolder)),
                       MetadataExtensions(), "metadataFile"});
    folders.push_back({normalised(PreferredFolder(&BE::IPreferences::GetSecondMetadataCacheFolder)),
                       MetadataExtensions(), "metadataFile"});
    folders.push_back({peaks, PeakExtensions(), "peakFile"});
    if (sharedPeaks != peaks) {
        folders.push_back({sharedPeaks, PeakExtensions(), "peakFile"});
    }
    return folders;
}

/// One line of standard input. An interruption ends the wait.
std::string ReadAnswer()
{
    std::string answer;
    while (true) {
        pollfd files[2] = {{STDIN_FILENO, POLLIN, 0}, {GetInterruptFile(), POLLIN, 0}};
        if (poll(files, 2, -1) < 0 && errno != EINTR) {
            return {};
        }
        ThrowIfInterrupted();
        if ((files[0].revents & (POLLIN | POLLHUP | POLLERR)) == 0) {
            continue;
        }
        char letter = 0;
        if (read(STDIN_FILENO, &letter, 1) != 1 || letter == '\n') {
            return answer;
        }
        answer += letter;
    }
}

bool AskWhetherToDelete(Context& ioContext)
{
    if (isatty(STDIN_FILENO) != 1) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/NobodyToAsk=cache delete-all asks before it deletes, but "
                           "standard input is no terminal; give --yes if you are sure"));
    }
    const UTF16String question = Text("$$$/Halcyon/TrHost/DeleteAllQuestion=Delete all records, cache, "
                                      "metadata and peak files below @0? [y/N] ",
                                      {ioContext.folders.cacheRoot});
    std::fprintf(stderr, "%s", kiocore::utility::ToUTF8(question).c_str());
    std::fflush(stderr);
    const std::string answer = ReadAnswer();
    return answer == "y" || answer == "Y" || answer == "yes";
}

void Run(Context& ioContext, bool inInWindow, const UTF16String& inTitle,
         const MakeOperation& inMakeOperation)
{
    if (inInWindow) {
        RunBatchOperationInDialog(ioContext, inTitle, inMakeOperation);
    } else {
        RunBatchOperation(ioContext, inMakeOperation);
    }
}

} // namespace

int CacheClean(Context& ioContext, const CleanOptions& inOptions)
{
    if (inOptions.dryRun) {
        ShowCleaning(ioContext);
        return kExit_Done;
    }
    const std::size_t before = FindRecordFiles().size();
    Run(ioContext, inOptions.inWindow, Text("$$$/Halcyon/TrHost/CleanTitle=Cleaning the media cache"), [] {
        return kiocore::InterfaceRef<ZOL::IBatchOperation>(
            kiocore::classref::MakeObject<TR::MediaAcceleratorDatabase>());
    });
    const std::size_t after = FindRecordFiles().size();
    const std::size_t removed = before > after ? before - after : 0;
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/Cleaned=cleaned @0 records: @1 removed, @2 kept",
                               {DecimalText(before), DecimalText(removed), DecimalText(after)}),
                          JsonLine().Add("records", before).Add("removed", removed).Add("kept", after));
    return kExit_Done;
}

int CacheDeleteAll(Context& ioContext, const DeleteAllOptions& inOptions)
{
    if (inOptions.dryRun) {
        for (const WipedFolder& wiped : WipedFolders(ioContext)) {
            const ZOL::FileList files = ZOL::FolderSearch::FindFiles(wiped.folder, wiped.extensions);
            for (std::size_t i = 0; i < files.Size(); ++i) {
                ThrowIfInterrupted();
                Say(ioContext, "wouldDelete", wiped.what, files.GetPath(i));
            }
        }
        return kExit_Done;
    }
    if (!inOptions.yes && !AskWhetherToDelete(ioContext)) {
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/NothingDeleted=nothing was deleted"));
    }
    Run(ioContext, inOptions.inWindow, Text("$$$/Halcyon/TrHost/DeleteAllTitle=Deleting the media cache"),
        &TR::CreateDeleteAllMediaCacheEntriesOperation);
    std::size_t left = 0;
    for (const WipedFolder& wiped : WipedFolders(ioContext)) {
        left += ZOL::FolderSearch::FindFiles(wiped.folder, wiped.extensions).Size();
    }
    if (left > 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NotAllDeleted=@0 files could not be deleted; cache "
                           "delete-all --dry-run lists them",
                           {DecimalText(left)}));
    }
    ioContext.output.Note(Text("$$$/Halcyon/TrHost/AllDeleted=the media cache is empty"),
                          JsonLine().Add("left", 0));
    return kExit_Done;
}

} // namespace trhost
