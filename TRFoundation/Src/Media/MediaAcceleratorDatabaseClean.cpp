#include <TR/MediaAcceleratorDatabase.h>

#include <TR/TRFoundation.h>

#include "BatchRun.h"
#include "RecordStore.h"

#include <ZOL/File.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/utility/FileUtils.h>

namespace TR {

using kiocore::classref::RefToSelf;
using kiocore::filesupport::FileTime;
using kiocore::utility::FileUtils;

namespace {

/// How often a record that is rewritten under our hands is looked at again before it is left for the next
/// run.
constexpr int kMostAttempts = 3;

/// Sets the content state that the entry's media has now.
void Resolve(MediaAcceleratorDatabaseEntry& ioEntry)
{
    const UTF16String original = ZOL::PathUtils::ToNormalizedPath(ioEntry.GetOriginal());
    Guid documentID;
    Guid contentState;
    if (TRFoundation::GetDocumentIDAndContentStateFromPath(original, false, documentID, contentState) < 0) {
        contentState = Guid::CreateUnique(); // differs from any, so the entry is out of date for certain
    }
    ioEntry.SetContentState(contentState);
}

enum class Cleaned { kDone, kChangedMeanwhile };

/// Deletes what a record that is out of date or empty stands for, unless somebody rewrote it since we read
/// it.
Cleaned DeleteUnderLock(const UTF16String& inPath, FileTime inReadTime,
                        MediaAcceleratorDatabaseEntry& ioEntry)
{
    Guid documentID;
    if (!DocumentOfRecordFile(inPath, documentID)) {
        documentID = Guid(); // a stray name: no writer has it, but two cleanings may
    }
    const ScWritingDocument writing(documentID);
    if (RecordStore::TimeOf(inPath) != inReadTime) {
        return Cleaned::kChangedMeanwhile;
    }
    ioEntry.Clean();
    if (ioEntry.GetItemCount() == 0) {
        ZOL::File::Delete(inPath);
    }
    return Cleaned::kDone;
}

void CleanRecord(BE::IXMLFileReader& inReader, const UTF16String& inPath)
{
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const auto entry = RecordStore::ReadFile(inReader, inPath);
        if (!entry) {
            return; // does not open; not ours to judge
        }
        Resolve(*entry); // unlocked: the host may take its time
        if (entry->IsUpToDate() && entry->GetItemCount() != 0) {
            return;
        }
        if (DeleteUnderLock(inPath, inReader.GetModificationTime(), *entry) == Cleaned::kDone) {
            return;
        }
    }
}

} // namespace

void MediaAcceleratorDatabase::Clean()
{
    ZOL::IBatchOperation& operation = *this;
    operation.Start();
}

int MediaAcceleratorDatabase::Start()
{
    const auto self = RefToSelf(*this);
    // Asked for here and not on the executor: a run that cannot begin must not look like one that never ends.
    MediaAcceleratorDatabase& operation = *self;
    return mRun->Start([self, &operation] { operation.Process(); });
}

void MediaAcceleratorDatabase::Process()
{
    const BatchRun::ScFinish finish(*mRun);
    const DatabasePaths& paths = DatabasePaths::ForThisThread();
    if (paths.HasFolder() && FileUtils::FileOrDirExists(paths.GetFolder())) {
        const ZOL::FileList files =
            ZOL::FolderSearch::FindFiles(paths.GetFolder(), {kMediaAcceleratorFileExtension});
        const auto reader = RecordStore::CreateReader();
        UTF16String path;
        for (std::size_t k = 0; k < files.Size(); ++k) {
            files.GetPath(k, path);
            CleanRecord(*reader, path);
            if (mRun->ConsumeAbort()) {
                break;
            }
            // Lags one file behind and never reaches 1: progress shows, it does not announce the end.
            const float progress = static_cast<float>(k) / static_cast<float>(files.Size());
            mRun->Progress(progress, progress);
        }
    }
    mRun->PostComplete();
}

int MediaAcceleratorDatabase::Abort()
{
    return mRun->Abort();
}
ZOL::StationID MediaAcceleratorDatabase::GetStationID() const
{
    return mRun->GetStationID();
}

UTF16String MediaAcceleratorDatabase::GetDescription() const
{
    return kiocore::config::Localizer::GetText(
        "$$$/Halcyon/Tracery/Media/CleanMediaAcceleratorDatabaseDescription=Cleaning Media Cache "
        "Database...");
}

} // namespace TR
