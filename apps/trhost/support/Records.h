#pragma once

#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <TR/MediaAcceleratorDatabaseEntry.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace trhost {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;

/// What a record's file name says: "<document ID><tag>.mcdb".
struct RecordName {
    Guid documentID;
    int tag = 0; ///< version tag; 0 for the untagged name
};
/// @param inPath  of a file with the record extension. Empty when the name has another form.
std::optional<RecordName> ParseRecordName(const UTF16String& inPath);

/// How a recorded cache file fares on disk.
enum class ItemState {
    kPresent,
    kMissing,
    kChanged, ///< it is there, but was written since it was recorded
};
const char* NameOf(ItemState inState);
/// The same for people.
UTF16String TextOf(ItemState inState);

/// One recorded cache file.
struct RecordedItem {
    UTF16String streamID;
    UTF16String key;
    UTF16String path;
    bool canBeCopied = false;
    ItemState state = ItemState::kMissing;
    std::uint64_t sizeBytes = 0;                 ///< 0 unless it is there
    kiocore::filesupport::FileTime accessed = 0; ///< 0 unless it is there
};

/// One record file as it lies on disk, with every item that it names.
struct Record {
    UTF16String path;
    RecordName name;
    kiocore::filesupport::FileTime modified = 0; ///< of the file that was read
    UTF16String originalPath;
    Guid contentState;
    std::vector<RecordedItem> items;                       ///< by stream, then key
    InterfaceRef<TR::MediaAcceleratorDatabaseEntry> entry; ///< as the library reads it: present items only
};

/// Reads a record file and looks at its cache files.
/// @param outError  why there is no record, one line; untouched on success.
/// @return empty when the file is gone or cannot be read.
std::optional<Record> ReadRecord(const UTF16String& inPath, std::string& outError);

/// The record that counts for a document: of the newest version that has one which can be read.
/// @return empty when there is none.
std::optional<Record> FindRecord(const Guid& inDocumentID);

/// The paths where a document's record may lie, the one that counts first.
std::vector<UTF16String> RecordPaths(const Guid& inDocumentID);

/// Position of a version tag among those that are looked for: the lower one counts. Tags that are never
/// looked for come last.
std::size_t TagRank(int inTag);

/// All record files, sorted by path.
std::vector<UTF16String> FindRecordFiles();

/// Calls inVisit for each record that counts; the records that cannot be read are passed over.
void VisitRecords(const std::function<void(Record&)>& inVisit);

/// Writes an entry back as the record at a path.
/// @return 0, or negative: the record on disk is as it was. The caller holds the document's lock.
int WriteRecord(const InterfaceRef<TR::MediaAcceleratorDatabaseEntry>& inEntry, const UTF16String& inPath);

/// The file whose bytes are the documents' locks.
UTF16String DocumentLockFile();

/// Calls inVisit(key, text) for every stored value of a record file in stored order.
/// @throws Failure (kExit_Failed) when the file cannot be read, (kExit_Negative) when it is no record.
void VisitStoredValues(const UTF16String& inPath,
                       const std::function<void(std::string_view inType, std::string_view inKey,
                                                const UTF16String& inText)>& inVisit);

} // namespace trhost
