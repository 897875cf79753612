// Comparing the records with what lies on disk.
#include "Commands.h"

#include "../support/CacheFileKinds.h"
#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Interrupt.h"
#include "../support/Records.h"

#include <ZOL/File.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/DocumentLock.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <set>
#include <unistd.h>

namespace trhost {

namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

bool IsTemporary(const UTF16String& inPath)
{
    static const UTF16String sMark = ToUTF16(kiocore::filesupport::kTemporaryFileMark);
    return ZOL::PathUtils::GetFullFilePart(inPath).find(sMark) != UTF16String::npos;
}

bool HasExtension(const UTF16String& inPath, const std::vector<UTF16String>& inExtensions)
{
    UTF16String extension = ZOL::PathUtils::GetExtension(inPath);
    for (char16_t& unit : extension) {
        unit = unit >= u'A' && unit <= u'Z' ? char16_t(unit - u'A' + u'a') : unit;
    }
    return std::find(inExtensions.begin(), inExtensions.end(), extension) != inExtensions.end();
}

class Verification {
public:
    Verification(Context& ioContext, const VerifyOptions& inOptions)
        : mContext(ioContext), mOptions(inOptions)
    {}

    int Run()
    {
        VerifyRecords();
        for (const UTF16String& folder : mFolders) {
            VerifyFolder(folder);
        }
        mContext.output.Note(
            Text("$$$/Halcyon/TrHost/Verified=@0 records, @1 cache files: @2 findings, @3 repaired",
                 {DecimalText(mRecords), DecimalText(mKnownFiles.size()), DecimalText(mFindings),
                  DecimalText(mRepaired)}),
            JsonLine()
                .Add("summary", true)
                .Add("records", mRecords)
                .Add("files", mKnownFiles.size())
                .Add("findings", mFindings)
                .Add("repaired", mRepaired));
        return mFindings == mRepaired ? kExit_Done : kExit_Negative;
    }

private:
    void Report(const char* inWhat, const UTF16String& inPath, const UTF16String& inText)
    {
        ++mFindings;
        mContext.output.Result(inPath + u": " + inText,
                               JsonLine().Add("finding", inWhat).Add("path", inPath).Add("text", inText));
    }

    void VerifyRecords()
    {
        const UTF16String database = PreferredFolder(&BE::IPreferences::GetMediaCacheDatabaseFolder);
        mFolders = {PreferredFolder(&BE::IPreferences::GetMediaCacheFilesFolder), PeakFilesFolder()};
        // One document at a time: the record that counts shadows those with lower tags.
        std::map<Guid, std::vector<std::pair<std::size_t, UTF16String>>> documents;
        const ZOL::FileList files = ZOL::FolderSearch::FindFiles(database, {});
        for (std::size_t i = 0; i < files.Size(); ++i) {
            const UTF16String path = files.GetPath(i);
            if (IsTemporary(path)) {
                ReportTemporary(path);
            } else if (HasExtension(path, RecordExtensions())) {
                if (const auto name = ParseRecordName(path)) {
                    documents[name->documentID].emplace_back(TagRank(name->tag), path);
                } else {
                    Report(
                        "foreignRecord", path,
                        Text("$$$/Halcyon/TrHost/ForeignRecord=no record is looked for under such a name"));
                }
            }
        }
        for (auto& [documentID, versions] : documents) {
            ThrowIfInterrupted();
            std::sort(versions.begin(), versions.end());
            VerifyDocument(documentID, versions);
        }
    }

    void VerifyDocument(const Guid& inDocumentID,
                        const std::vector<std::pair<std::size_t, UTF16String>>& inVersions)
    {
        UTF16String counts;
        for (const auto& [rank, path] : inVersions) {
            ++mRecords;
            std::string error;
            const auto record = ReadRecord(path, error);
            if (!record) {
                Report("unreadableRecord", path, ToUTF16(error));
                Repair(inDocumentID, path);
                continue;
            }
            for (const RecordedItem& item : record->items) {
                mKnownFiles.insert(item.path);
                if (counts.empty() && item.state != ItemState::kPresent) {
                    Report(item.state == ItemState::kMissing ? "missingCacheFile" : "changedCacheFile",
                           item.path,
                           Text("$$$/Halcyon/TrHost/ItemNotPresent=is @0; recorded for @1, stream @2, @3",
                                {TextOf(item.state), record->originalPath, item.streamID, item.key}));
                }
            }
            if (!counts.empty()) {
                Report("shadowedRecord", path,
                       Text("$$$/Halcyon/TrHost/Shadowed=is not looked at, as @0 is there", {counts}));
            } else {
                counts = path;
            }
        }
    }

    /// Sets the record aside, unless a writer has replaced it since it was read.
    void Repair(const Guid& inDocumentID, const UTF16String& inPath)
    {
        if (!mOptions.repair) {
            return;
        }
        UTF16String aside = inPath + u".bad";
        if (mOptions.dryRun) {
            SayRepaired(inPath, aside);
            return;
        }
        const kiocore::filesupport::ScDocumentLock lock(DocumentLockFile(), inDocumentID);
        std::string error;
        if (ReadRecord(inPath, error)) {
            return;
        }
        const std::string from = kiocore::filesupport::ToNative(inPath);
        for (unsigned number = 2;; ++number) {
            // Without replacing: an earlier one that was set aside is somebody's evidence.
            if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, kiocore::filesupport::ToNative(aside).c_str(),
                          RENAME_NOREPLACE) == 0) {
                ++mRepaired;
                SayRepaired(inPath, aside);
                return;
            }
            if (errno != EEXIST) {
                mContext.output.Error(Text("$$$/Halcyon/TrHost/NotSetAside=@0 could not be set aside: @1",
                                           {inPath, kiocore::SystemErrorText(errno)}));
                return;
            }
            aside = inPath + u".bad" + DecimalText(number);
        }
    }

    void SayRepaired(const UTF16String& inPath, const UTF16String& inAside)
    {
        mContext.output.Note(
            mOptions.dryRun ? Text("$$$/Halcyon/TrHost/WouldSetAside=would be set aside as @0", {inAside})
                            : Text("$$$/Halcyon/TrHost/SetAside=set aside as @0", {inAside}),
            JsonLine()
                .Add("action", mOptions.dryRun ? "wouldSetAside" : "setAside")
                .Add("path", inPath)
                .Add("as", inAside));
    }

    void VerifyFolder(const UTF16String& inFolder)
    {
        const ZOL::FileList files = ZOL::FolderSearch::FindFiles(inFolder, {});
        for (std::size_t i = 0; i < files.Size(); ++i) {
            ThrowIfInterrupted();
            const UTF16String path = files.GetPath(i);
            if (!mVisited.insert(path).second) {
                continue; // one cache folder may lie in another
            }
            if (IsTemporary(path)) {
                ReportTemporary(path);
            } else if ((HasExtension(path, CacheExtensions()) || HasExtension(path, PeakExtensions())) &&
                       !mKnownFiles.contains(path)) {
                Report("orphanCacheFile", path, Text("$$$/Halcyon/TrHost/Orphan=no record names it"));
            }
        }
    }

    void ReportTemporary(const UTF16String& inPath)
    {
        Report(
            "temporaryFile", inPath,
            Text(
                "$$$/Halcyon/TrHost/Temporary=left over from a save that was cut short, or one at work now"));
    }

    Context& mContext;
    const VerifyOptions& mOptions;
    std::vector<UTF16String> mFolders;
    std::set<UTF16String> mKnownFiles;
    std::set<UTF16String> mVisited;
    std::size_t mRecords = 0;
    std::size_t mFindings = 0;
    std::size_t mRepaired = 0;
};

} // namespace

int CacheVerify(Context& ioContext, const VerifyOptions& inOptions)
{
    return Verification(ioContext, inOptions).Run();
}

} // namespace trhost
