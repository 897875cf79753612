#include "RecordStore.h"

#include "EntryCache.h"

#include <TR/MediaAcceleratorDatabase.h>

#include <BE/Backend.h>
#include <ZOL/File.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/threads/RecursiveMutex.h>

#include <cerrno>

namespace TR {

using kiocore::classref::ClassFactory;
using kiocore::filesupport::FileTime;
using kiocore::filesupport::kNoFileTime;
using kiocore::threads::kLockLimit;
using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;

namespace {

RecursiveMutex sMediaAcceleratorCacheCriticalSection;
EntryCache sMediaAcceleratorCache; // guarded by the lock above

UTF16String DocumentLockFile()
{
    UTF16String path;
    if (BE::GetBackend()->GetPreferences()->GetDocumentLockFile(path) < 0) {
        throw kiocore::kio_exception(
            kiocore::config::Localizer::GetText("$$$/TRFoundation/Error/NoLockFile=The preferences name no "
                                                "file for the documents' locks; nothing "
                                                "can be recorded in the media cache database without one"),
            kiocore::kError_File);
    }
    return path;
}

bool FindInMemory(const RecordKey& inKey, FileTime inTime, EntrySnapshot& outEntry)
{
    if (!sMediaAcceleratorCache.MayHold(inKey.tag)) {
        return false;
    }
    ScLock lock(sMediaAcceleratorCacheCriticalSection, kLockLimit);
    return sMediaAcceleratorCache.Find(inKey, inTime, outEntry);
}

void KeepInMemory(const RecordKey& inKey, FileTime inTime, EntrySnapshot inEntry, bool inIsSaved)
{
    const std::size_t budget = BE::GetBackend()->GetPreferences()->GetRecordMemoryBudget();
    ScLock lock(sMediaAcceleratorCacheCriticalSection, kLockLimit);
    sMediaAcceleratorCache.Store(inKey, inTime, std::move(inEntry), inIsSaved, budget);
}

} // namespace

ScWritingDocument::ScWritingDocument(const Guid& inDocumentID) : mLock(DocumentLockFile(), inDocumentID) {}

namespace RecordStore {

FileTime TimeOf(const UTF16String& inPath)
{
    FileTime time = kNoFileTime;
    return ZOL::File::GetLastModificationTime(inPath, time) < 0 ? kNoFileTime : time;
}

InterfaceRef<BE::IXMLFileReader> CreateReader()
{
    return ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
}

InterfaceRef<MediaAcceleratorDatabaseEntry> ReadFile(BE::IXMLFileReader& inReader, const UTF16String& inPath)
{
    if (inReader.Open(inPath) < 0) {
        return {};
    }
    InterfaceRef<BE::ISerializeable> object;
    inReader.GetDataReader().ReadObject(MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                        object);
    return object;
}

bool Read(const Guid& inDocumentID, EntrySnapshot& outEntry)
{
    DatabasePaths& paths = DatabasePaths::ForThisThread();
    if (!paths.HasFolder()) {
        return false;
    }
    paths.BeginDocument(inDocumentID);
    const std::size_t tagCount = paths.GetTags().size();
    for (std::size_t i = 0; i < tagCount; ++i) {
        const UTF16String& path = paths.GetPath(i);
        const RecordKey key{inDocumentID, paths.GetFolderNumber(), paths.GetTags()[i]};
        const FileTime time = TimeOf(path);
        if (FindInMemory(key, time, outEntry)) {
            return true;
        }
        if (time == kNoFileTime) {
            continue;
        }
        const UTF16String ownPath = path;
        const auto reader = CreateReader();
        if (const auto entry = ReadFile(*reader, ownPath)) {
            outEntry = EntrySnapshot::Of(*entry);
            KeepInMemory(key, time, outEntry, true);
            return true;
        }
    }
    return false;
}

int Write(const Guid& inDocumentID, const MediaAcceleratorDatabaseEntry& inEntry)
{
    DatabasePaths& paths = DatabasePaths::ForThisThread();
    if (!paths.HasFolder()) {
        return -1;
    }
    const RecordKey key{inDocumentID, paths.GetFolderNumber(), paths.GetTags().front()};
    paths.BeginDocument(inDocumentID);
    const UTF16String path = paths.GetPath(0);
    const UTF16String folder = paths.GetFolder();

    const InterfaceRef<BE::IXMLFileWriter> writer =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
    const InterfaceRef<BE::ISerializeable> object(const_cast<MediaAcceleratorDatabaseEntry*>(&inEntry),
                                                  inEntry.SharedSelf());
    writer->GetDataWriter().WriteObject(MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                        object);
    int result = writer->Save(path);
    if (result < 0 && writer->GetSaveResult().errorNumber == ENOENT &&
        ZOL::Directory::CreateOnDisk(folder, true) >= 0) {
        result = writer->Save(path); // the first record makes the folder
    }
    KeepInMemory(key, TimeOf(path), EntrySnapshot::Of(inEntry), result >= 0);
    return result;
}

void ForgetAll()
{
    ScLock lock(sMediaAcceleratorCacheCriticalSection, kLockLimit);
    sMediaAcceleratorCache.Clear();
}

} // namespace RecordStore
} // namespace TR
