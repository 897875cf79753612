// Removing the cache files that were not used for longest.
#include "Commands.h"

#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Interrupt.h"
#include "../support/Quantities.h"
#include "../support/Records.h"

#include <MF/FileManager.h>
#include <ZOL/File.h>
#include <kiocore/filesupport/DocumentLock.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <map>
#include <set>

namespace trhost {

namespace {

using kiocore::filesupport::FileTime;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

/// A cache file among all of them.
struct Candidate {
    Guid documentID;
    UTF16String streamID;
    UTF16String key;
    UTF16String path;
    std::uint64_t bytes = 0;
    FileTime accessed = 0;
};

FileTime Now()
{
    const auto sinceEpoch = kiocore::threads::GetClock().WallTime().time_since_epoch();
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
    timespec time{};
    time.tv_sec = std::time_t(nanoseconds / 1'000'000'000);
    time.tv_nsec = long(nanoseconds % 1'000'000'000);
    return kiocore::filesupport::ToFileTime(time);
}

class Pruning {
public:
    Pruning(Context& ioContext, const PruneOptions& inOptions) : mContext(ioContext), mOptions(inOptions) {}

    void Run()
    {
        Choose();
        for (const Guid& documentID : mDocuments) {
            ThrowIfInterrupted();
            PruneDocument(documentID);
        }
        mContext.output.Note(
            Text("$$$/Halcyon/TrHost/Pruned=@0 cache files (@1) and @2 records @3; @4 remain",
                 {DecimalText(mFiles), ToUTF16(FormatSize(mBytes)), DecimalText(mRecords),
                  mOptions.dryRun ? Text("$$$/Halcyon/TrHost/WouldGo=would be removed")
                                  : Text("$$$/Halcyon/TrHost/Went=removed"),
                  ToUTF16(FormatSize(mTotalBytes - std::min(mTotalBytes, mBytes)))}),
            JsonLine()
                .Add("summary", true)
                .Add("dryRun", mOptions.dryRun)
                .Add("files", mFiles)
                .Add("bytes", mBytes)
                .Add("records", mRecords));
    }

private:
    /// Notes what is to go, and the documents that it belongs to. Records without any file go, too.
    void Choose()
    {
        std::vector<Candidate> candidates;
        std::set<Guid> documents;
        VisitRecords([&](Record& inRecord) {
            ThrowIfInterrupted();
            const bool empty =
                std::none_of(inRecord.items.begin(), inRecord.items.end(),
                             [](const RecordedItem& inItem) { return inItem.state != ItemState::kMissing; });
            if (empty) {
                documents.insert(inRecord.name.documentID);
            }
            for (const RecordedItem& item : inRecord.items) {
                if (item.state == ItemState::kPresent) {
                    mTotalBytes += item.sizeBytes;
                    candidates.push_back({inRecord.name.documentID, item.streamID, item.key, item.path,
                                          item.sizeBytes, item.accessed});
                }
            }
        });
        std::sort(candidates.begin(), candidates.end(), [](const Candidate& inA, const Candidate& inB) {
            return std::tie(inA.accessed, inA.path) < std::tie(inB.accessed, inB.path);
        });
        const FileTime oldest =
            mOptions.olderThan ? Now() - std::min(Now(), FileTime(mOptions.olderThan->count())) : 0;
        std::uint64_t left = mTotalBytes;
        for (const Candidate& candidate : candidates) {
            const bool tooOld = candidate.accessed < oldest;
            const bool tooMuch = mOptions.maxBytes && left > *mOptions.maxBytes;
            if (!tooOld && !tooMuch) {
                break; // all that follow were used later, and there is room for them
            }
            left -= candidate.bytes;
            mChosen.emplace(candidate.path, candidate);
            documents.insert(candidate.documentID);
        }
        mDocuments.assign(documents.begin(), documents.end());
    }

    void PruneDocument(const Guid& inDocumentID)
    {
        std::optional<kiocore::filesupport::ScDocumentLock> lock;
        if (!mOptions.dryRun) {
            lock.emplace(DocumentLockFile(), inDocumentID);
        }
        // Read again under the lock: what was added, replaced or used meanwhile stays.
        auto record = FindRecord(inDocumentID);
        if (!record) {
            return;
        }
        std::size_t left = 0;
        bool changed = false;
        for (const RecordedItem& item : record->items) {
            const auto chosen = mChosen.find(item.path);
            const bool goes = item.state == ItemState::kPresent && chosen != mChosen.end() &&
                              chosen->second.accessed == item.accessed &&
                              chosen->second.bytes == item.sizeBytes;
            if (goes && DeleteCacheFile(item)) {
                changed = true;
                Say("cacheFile", item.path);
                ++mFiles;
                mBytes += item.sizeBytes;
            } else {
                left += item.state != ItemState::kMissing;
            }
        }
        if (left == 0) {
            DeleteRecord(*record);
        } else if (changed && !mOptions.dryRun) {
            // Read anew, the record no longer has what was deleted; written back, it no longer names it.
            std::string error;
            const auto rest = ReadRecord(record->path, error);
            if (!rest || WriteRecord(rest->entry, record->path) < 0) {
                mContext.output.Error(
                    Text("$$$/Halcyon/TrHost/PruneNotWritten=@0 still names cache files that were "
                         "removed: it could not be saved",
                         {record->path}));
            }
        }
    }

    bool DeleteCacheFile(const RecordedItem& inItem)
    {
        if (mOptions.dryRun) {
            return true;
        }
        if (!MF::FileManager::TryToCloseFileWithoutBlocking(inItem.path)) {
            return false; // in use here
        }
        try {
            return ZOL::File::Delete(inItem.path) == 0;
        } catch (const std::exception& error) {
            mContext.output.Error(Told(error));
            return false;
        }
    }

    /// The caller holds the document's lock and has just read the record, so no writer of ours is at work on
    /// it; one that knows no locks shows in the file's time.
    void DeleteRecord(const Record& inRecord)
    {
        FileTime time = 0;
        if (ZOL::File::GetLastModificationTime(inRecord.path, time) < 0 || time != inRecord.modified) {
            return;
        }
        if (mOptions.dryRun || ZOL::File::Delete(inRecord.path) == 0) {
            Say("record", inRecord.path);
            ++mRecords;
        }
    }

    void Say(const char* inWhat, const UTF16String& inPath)
    {
        mContext.output.Note(inPath, JsonLine()
                                         .Add("action", mOptions.dryRun ? "wouldDelete" : "deleted")
                                         .Add("what", inWhat)
                                         .Add("path", inPath));
    }

    Context& mContext;
    const PruneOptions& mOptions;
    std::map<UTF16String, Candidate> mChosen; // by path
    std::vector<Guid> mDocuments;
    std::uint64_t mTotalBytes = 0;
    std::uint64_t mBytes = 0;
    std::size_t mFiles = 0;
    std::size_t mRecords = 0;
};

} // namespace

int CachePrune(Context& ioContext, const PruneOptions& inOptions)
{
    if (!inOptions.olderThan && !inOptions.maxBytes) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/PruneWhat=cache prune needs --older-than AGE, --max-size "
                           "SIZE, or both"));
    }
    Pruning(ioContext, inOptions).Run();
    return kExit_Done;
}

} // namespace trhost
