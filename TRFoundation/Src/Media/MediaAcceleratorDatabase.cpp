#include <TR/MediaAcceleratorDatabase.h>

#include "BatchRun.h"
#include "CacheFileTouch.h"
#include "DatabasePaths.h"
#include "RecordStore.h"

#include <BE/Backend.h>
#include <ZOL/File.h>
#include <ZOL/PathUtils.h>
#include <kiocore/threads/RecursiveMutex.h>
#include <kiocore/utility/FileUtils.h>

#include <utility>

namespace TR {

using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using kiocore::threads::kLockLimit;
using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;
using kiocore::utility::DecimalText;
using kiocore::utility::FileUtils;
using ZOL::PathUtils;

RecursiveMutex MediaAcceleratorDatabase::sAcceleratorHandlerMapCriticalSection;
std::map<UTF16String, InterfaceRef<IMediaAcceleratorCopy>> MediaAcceleratorDatabase::sAcceleratorHandlerMap;

IMediaAcceleratorDatabase::~IMediaAcceleratorDatabase() = default;
IMediaAcceleratorCopy::~IMediaAcceleratorCopy() = default;

const CFUUIDBytes& IMediaAcceleratorDatabase::InterfaceID()
{
    static constexpr CFUUIDBytes kID{
        {0x0b, 0x6e, 0x9d, 0x3c, 0x2f, 0x8a, 0x4c, 0x11, 0xb7, 0x52, 0x90, 0x1e, 0x7d, 0x43, 0xaa, 0x65}};
    return kID;
}

MediaAcceleratorDatabase::MediaAcceleratorDatabase() : mRun(std::make_unique<BatchRun>()) {}
MediaAcceleratorDatabase::~MediaAcceleratorDatabase() = default;

void MediaAcceleratorDatabase::CreateInstanceRef(InterfaceRef<UnknownBase>& outObject)
{
    outObject = MakeObject<MediaAcceleratorDatabase>();
}

void* MediaAcceleratorDatabase::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    if (inInterfaceID == IMediaAcceleratorDatabase::InterfaceID()) {
        return static_cast<IMediaAcceleratorDatabase*>(this);
    }
    if (inInterfaceID == ZOL::IBatchOperation::InterfaceID()) {
        return static_cast<ZOL::IBatchOperation*>(this);
    }
    return UnknownBase::QueryMap(inInterfaceID);
}

int MediaAcceleratorDatabase::Add(const Guid& inDocumentID, const Guid& inContentState,
                                  const UTF16String& inOriginalPath, const UTF16String& inStreamID,
                                  const UTF16String& inKey, const UTF16String& inCacheFilePath,
                                  bool inCanBeCopied)
{
    // Held until memory has the new entry: whoever comes next, here or in another process, reads what we
    // wrote.
    const ScWritingDocument writing(inDocumentID);
    InterfaceRef<MediaAcceleratorDatabaseEntry> entry = ReadEntry(inDocumentID, inContentState);
    if (!entry || !entry->IsUpToDate()) {
        entry = MediaAcceleratorDatabaseEntry::Create(inContentState);
        entry->SetOriginal(inOriginalPath);
    }
    entry->AddItem(inStreamID, MediaAcceleratorItem{inCacheFilePath, {}, inKey, inCanBeCopied}, true);
    if (!entry->IsModified()) {
        return 0;
    }
    entry->SetOriginal(inOriginalPath);
    return RecordStore::Write(inDocumentID, *entry);
}

int MediaAcceleratorDatabase::Add(const Guid& inDocumentID, const Guid& inContentState,
                                  const UTF16String& inOriginalPath, unsigned long inStreamID,
                                  const UTF16String& inKey, const UTF16String& inCacheFilePath,
                                  bool inCanBeCopied)
{
    IMediaAcceleratorDatabase& database = *this;
    return database.Add(inDocumentID, inContentState, inOriginalPath, DecimalText(inStreamID), inKey,
                        inCacheFilePath, inCanBeCopied);
}

int MediaAcceleratorDatabase::Find(const Guid& inDocumentID, const Guid&, const UTF16String& inStreamID,
                                   const UTF16String& inKey, UTF16String& outPath)
{
    // Straight from the shared contents: an entry of the caller's own would be made only to be dropped.
    EntrySnapshot entry;
    if (!RecordStore::Read(inDocumentID, entry) ||
        entry.contents->FindItemPath(inStreamID, inKey, outPath) < 0) {
        return -1;
    }
    TouchCacheFile(outPath);
    return 0;
}

int MediaAcceleratorDatabase::Find(const Guid& inDocumentID, const Guid& inContentState,
                                   unsigned long inStreamID, const UTF16String& inKey, UTF16String& outPath)
{
    IMediaAcceleratorDatabase& database = *this;
    return database.Find(inDocumentID, inContentState, DecimalText(inStreamID), inKey, outPath);
}

int MediaAcceleratorDatabase::FindUpToDate(const Guid& inDocumentID, const Guid& inContentState,
                                           const UTF16String& inStreamID, const UTF16String& inKey,
                                           UTF16String& outPath)
{
    EntrySnapshot entry;
    if (!RecordStore::Read(inDocumentID, entry) ||
        entry.contents->FindItemPath(inStreamID, inKey, outPath) < 0) {
        return -1;
    }
    TouchCacheFile(outPath);
    return entry.upToDate && entry.contentState == inContentState ? 0 : -1;
}

int MediaAcceleratorDatabase::FindUpToDate(const Guid& inDocumentID, const Guid& inContentState,
                                           unsigned long inStreamID, const UTF16String& inKey,
                                           UTF16String& outPath)
{
    IMediaAcceleratorDatabase& database = *this;
    return database.FindUpToDate(inDocumentID, inContentState, DecimalText(inStreamID), inKey, outPath);
}

void MediaAcceleratorDatabase::Invalidate(const Guid& inDocumentID, const Guid& inContentState,
                                          unsigned long inStreamID)
{
    const ScWritingDocument writing(inDocumentID);
    if (const auto entry = ReadEntry(inDocumentID, inContentState)) {
        entry->Invalidate(inStreamID);
        RecordStore::Write(inDocumentID, *entry);
    }
}

void MediaAcceleratorDatabase::Copy(const Guid& inDocumentID, const Guid& inContentState, const UTF16String&,
                                    const UTF16String& inDestination)
{
    const auto entry = ReadEntry(inDocumentID, inContentState);
    if (!entry) {
        return;
    }
    IMediaAcceleratorDatabase& database = *this;
    const UTF16String folder = FileUtils::AddTrailingSlash(inDestination);
    const UTF16String original = folder + PathUtils::GetFullFilePart(entry->GetOriginal());
    std::vector<UTF16String> streamIDs;
    entry->GetStreamIDs(streamIDs);
    for (const UTF16String& streamID : streamIDs) {
        std::vector<MediaAcceleratorItem> items;
        entry->GetItems(streamID, items);
        for (const MediaAcceleratorItem& item : items) {
            if (!item.canBeCopied) {
                continue;
            }
            const auto handler = FindHandler(item.key);
            if (!handler) {
                continue;
            }
            const UTF16String target = folder + PathUtils::GetFullFilePart(item.path);
            ZOL::Directory::CreateOnDisk(PathUtils::GetFullDirectoryPart(target), true);
            if (ZOL::File::Copy(item.path, target) < 0) {
                continue;
            }
            Guid documentID = inDocumentID;
            Guid contentState = inContentState;
            handler->MediaAcceleratorCopied(target, documentID, contentState);
            database.Add(documentID, contentState, original, streamID, item.key, target, true);
        }
    }
}

InterfaceRef<MediaAcceleratorDatabaseEntry> MediaAcceleratorDatabase::ReadEntry(const Guid& inDocumentID,
                                                                                const Guid& inContentState)
{
    EntrySnapshot snapshot;
    if (!RecordStore::Read(inDocumentID, snapshot)) {
        return {};
    }
    const auto entry = snapshot.MakeEntry();
    entry->SetContentState(inContentState);
    return entry;
}

UTF16String MediaAcceleratorDatabase::GetAcceleratorDatabasePath(const UTF16String& inSuffix,
                                                                 const Guid& inDocumentID)
{
    return DatabasePaths::ForThisThread().GetFolder() + inDocumentID.AsString() + inSuffix +
           kMediaAcceleratorFileExtension;
}

std::vector<int> MediaAcceleratorDatabase::GetVersionTags()
{
    std::vector<int> tags = DatabasePaths::ForThisThread().GetTags();
    tags.pop_back(); // the untagged one
    return tags;
}

InterfaceRef<IMediaAcceleratorCopy> MediaAcceleratorDatabase::FindHandler(const UTF16String& inKey)
{
    ScLock lock(sAcceleratorHandlerMapCriticalSection, kLockLimit);
    const auto found = sAcceleratorHandlerMap.find(inKey);
    return found == sAcceleratorHandlerMap.end() ? InterfaceRef<IMediaAcceleratorCopy>() : found->second;
}

void MediaAcceleratorDatabase::RegisterAcceleratorHandler(const UTF16String& inKey,
                                                          InterfaceRef<IMediaAcceleratorCopy> inHandler)
{
    ScLock lock(sAcceleratorHandlerMapCriticalSection, kLockLimit);
    sAcceleratorHandlerMap.try_emplace(inKey, std::move(inHandler));
}

void MediaAcceleratorDatabase::Startup() {}

void MediaAcceleratorDatabase::Shutdown()
{
    {
        ScLock lock(sAcceleratorHandlerMapCriticalSection, kLockLimit);
        sAcceleratorHandlerMap.clear();
    }
    RecordStore::ForgetAll();
}

int GetMediaAcceleratorDirectoryPath(const UTF16String& inMediaPath, UTF16String& outFolder)
{
    UTF16String folder = PathUtils::GetDrivePart(inMediaPath) + PathUtils::GetDirectoryPart(inMediaPath);
    const auto backend = BE::GetBackend();
    if (FileUtils::FileOrDirExists(inMediaPath) &&
        backend->GetProperties()->GetBool(BE::kPrefsMediaCacheFilesSideBySide, false) &&
        !FileUtils::IsReadOnly(folder)) {
        outFolder = std::move(folder);
        return 0;
    }
    return backend->GetPreferences()->GetMediaCacheFilesFolder(outFolder);
}

} // namespace TR
