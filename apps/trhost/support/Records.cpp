#include "Records.h"

#include "CacheFileKinds.h"
#include "Failure.h"
#include "HostSession.h"
#include "LocalText.h"

#include <BE/XMLFile.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <map>
#include <sys/stat.h>
#include <utility>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

InterfaceRef<BE::IXMLFileReader> CreateReader()
{
    return InterfaceRef<BE::IXMLFileReader>(
        kiocore::classref::ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID));
}

/// The number behind the base of an indexed key: 257 of "Item.Path.257".
std::optional<unsigned> IndexOf(std::string_view inKey, std::string_view inBase)
{
    const std::string first = BE::CreateKeyWithIndex(kiocore::ImmutableString(inBase), 0).AsString();
    const std::string_view prefix = std::string_view(first).substr(0, first.size() - 1);
    if (!inKey.starts_with(prefix) || inKey.size() == prefix.size() || inKey.size() > prefix.size() + 10) {
        return std::nullopt;
    }
    std::uint64_t index = 0;
    for (char digit : inKey.substr(prefix.size())) {
        if (digit < '0' || digit > '9') {
            return std::nullopt;
        }
        index = index * 10 + std::uint64_t(digit - '0');
    }
    return index <= 0xFFFFFFFF ? std::optional(unsigned(index)) : std::nullopt;
}

/// The library drops items whose files are gone when it reads a record. What was recorded shows only in
/// the stored values: items by the index of their keys, streams by theirs.
class StoredItems {
public:
    void Add(std::string_view inKey, const UTF16String& inText)
    {
        if (const auto stream = IndexOf(inKey, "Stream.ID")) {
            mStreams[*stream] = inText;
        } else if (const auto item = IndexOf(inKey, "Item.Key")) {
            mKeys[*item] = inText;
        } else if (const auto macPath = IndexOf(inKey, "Item.MacPath")) {
            mPaths[*macPath] = inText;
        } else if (const auto path = IndexOf(inKey, "Item.Path")) {
            mPaths.emplace(*path, inText); // version 3 and older have only this one
        }
    }

    std::vector<RecordedItem> Get() const
    {
        std::vector<RecordedItem> items;
        for (const auto& [index, path] : mPaths) {
            RecordedItem item;
            // Items of stream s (from 0) have the indexes s * 256 + 1 and up, the stream's own keys s + 1.
            const unsigned stream = (index - 1) / 256;
            const auto streamID = mStreams.find(stream + 1);
            item.streamID =
                streamID != mStreams.end() ? streamID->second : kiocore::utility::DecimalText(stream);
            const auto key = mKeys.find(index);
            item.key = key != mKeys.end() ? key->second : UTF16String();
            item.path = path;
            items.push_back(std::move(item));
        }
        return items;
    }

private:
    std::map<unsigned, UTF16String> mStreams;
    std::map<unsigned, UTF16String> mKeys;
    std::map<unsigned, UTF16String> mPaths;
};

/// Asks the disk about an item, and takes over what the library made of it.
void CompleteItem(const TR::MediaAcceleratorDatabaseEntry::Streams& inLive, RecordedItem& ioItem)
{
    const auto stream = inLive.find(ioItem.streamID);
    const auto live = stream == inLive.end() ? TR::MediaAcceleratorDatabaseEntry::Items::const_iterator()
                                             : stream->second.find(ioItem.key);
    const bool kept = stream != inLive.end() && live != stream->second.end();
    if (kept) {
        ioItem.path = live->second.path; // rebuilt, when it was recorded on the other platform
        ioItem.canBeCopied = live->second.canBeCopied;
    }
    struct stat status;
    if (ioItem.path.empty() || stat(kiocore::filesupport::NativePath(ioItem.path).CString(), &status) != 0) {
        ioItem.state = ItemState::kMissing;
        return;
    }
    ioItem.state = kept ? ItemState::kPresent : ItemState::kChanged;
    ioItem.sizeBytes = std::uint64_t(status.st_size);
    ioItem.accessed = kiocore::filesupport::ToFileTime(status.st_atim);
}

TR::MediaAcceleratorDatabaseEntry::Streams LiveItems(const TR::MediaAcceleratorDatabaseEntry& inEntry)
{
    TR::MediaAcceleratorDatabaseEntry::Streams streams;
    std::vector<UTF16String> streamIDs;
    inEntry.GetStreamIDs(streamIDs);
    for (const UTF16String& streamID : streamIDs) {
        std::vector<TR::MediaAcceleratorItem> items;
        inEntry.GetItems(streamID, items);
        auto& byKey = streams[streamID];
        for (TR::MediaAcceleratorItem& item : items) {
            byKey.emplace(item.key, item);
        }
    }
    return streams;
}

} // namespace

UTF16String TextOf(ItemState inState)
{
    switch (inState) {
    case ItemState::kPresent:
        return Text("$$$/Halcyon/TrHost/ItemState/Present=present#{of a cache file}");
    case ItemState::kMissing:
        return Text("$$$/Halcyon/TrHost/ItemState/Missing=missing#{of a cache file}");
    case ItemState::kChanged:
        return Text("$$$/Halcyon/TrHost/ItemState/Changed=changed#{of a cache file}");
    }
    return {};
}

const char* NameOf(ItemState inState)
{
    switch (inState) {
    case ItemState::kPresent:
        return "present";
    case ItemState::kMissing:
        return "missing";
    case ItemState::kChanged:
        return "changed";
    }
    return "";
}

std::optional<RecordName> ParseRecordName(const UTF16String& inPath)
{
    const UTF16String name = ZOL::PathUtils::GetFullFilePart(inPath);
    const std::size_t extension = TR::kMediaAcceleratorFileExtension.size();
    if (name.size() < Guid::kTextLength + extension || !kiocore::utility::IsASCII(name)) {
        return std::nullopt;
    }
    const std::string text = kiocore::utility::ToUTF8(name);
    const auto documentID = Guid::FromText(std::string_view(text).substr(0, Guid::kTextLength));
    if (!documentID) {
        return std::nullopt;
    }
    RecordName result{*documentID, 0};
    const std::string_view tag =
        std::string_view(text).substr(Guid::kTextLength, text.size() - Guid::kTextLength - extension);
    if (tag.size() > 6) {
        return std::nullopt;
    }
    for (char digit : tag) {
        if (digit < '0' || digit > '9') {
            return std::nullopt;
        }
        result.tag = result.tag * 10 + (digit - '0');
    }
    return result;
}

std::optional<Record> ReadRecord(const UTF16String& inPath, std::string& outError)
{
    Record record;
    record.path = inPath;
    record.name = ParseRecordName(inPath).value_or(RecordName());
    const auto reader = CreateReader();
    if (reader->Open(inPath) < 0) {
        outError = reader->GetOpenError();
        return std::nullopt;
    }
    record.modified = reader->GetModificationTime();
    try {
        InterfaceRef<BE::ISerializeable> object;
        if (!reader->GetDataReader().ReadObject(
                TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey, object)) {
            outError = LocalText("$$$/Halcyon/TrHost/HoldsNoRecord=holds no record of a media document");
            return std::nullopt;
        }
        record.entry = InterfaceRef<TR::MediaAcceleratorDatabaseEntry>(object);
        if (!record.entry) {
            outError =
                LocalText("$$$/Halcyon/TrHost/HoldsOtherClass=holds an object of another class than @0",
                          {TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey.AsString()});
            return std::nullopt;
        }
        StoredItems stored;
        reader->VisitStored(TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                            [&](std::string_view, std::string_view inKey, const UTF16String& inText) {
                                stored.Add(inKey, inText);
                            });
        record.items = stored.Get();
    } catch (const std::exception& error) {
        outError = error.what();
        return std::nullopt;
    }
    record.originalPath = record.entry->GetOriginal();
    record.contentState = record.entry->GetContentState();
    const auto live = LiveItems(*record.entry);
    for (RecordedItem& item : record.items) {
        CompleteItem(live, item);
    }
    std::sort(record.items.begin(), record.items.end(), [](const RecordedItem& inA, const RecordedItem& inB) {
        return std::tie(inA.streamID, inA.key) < std::tie(inB.streamID, inB.key);
    });
    return record;
}

std::vector<UTF16String> RecordPaths(const Guid& inDocumentID)
{
    std::vector<UTF16String> paths;
    for (int tag : TR::MediaAcceleratorDatabase::GetVersionTags()) {
        paths.push_back(TR::MediaAcceleratorDatabase::GetAcceleratorDatabasePath(
            kiocore::utility::DecimalText(static_cast<unsigned long long>(tag)), inDocumentID));
    }
    paths.push_back(TR::MediaAcceleratorDatabase::GetAcceleratorDatabasePath({}, inDocumentID));
    return paths;
}

std::optional<Record> FindRecord(const Guid& inDocumentID)
{
    for (const UTF16String& path : RecordPaths(inDocumentID)) {
        struct stat status;
        if (stat(kiocore::filesupport::NativePath(path).CString(), &status) != 0) {
            continue;
        }
        std::string error;
        if (auto record = ReadRecord(path, error)) {
            return record;
        }
    }
    return std::nullopt;
}

std::size_t TagRank(int inTag)
{
    const std::vector<int> tags = TR::MediaAcceleratorDatabase::GetVersionTags();
    if (inTag == 0) {
        return tags.size();
    }
    const auto found = std::find(tags.begin(), tags.end(), inTag);
    return found == tags.end() ? tags.size() + 1 : std::size_t(found - tags.begin());
}

std::vector<UTF16String> FindRecordFiles()
{
    const ZOL::FileList files = ZOL::FolderSearch::FindFiles(
        PreferredFolder(&BE::IPreferences::GetMediaCacheDatabaseFolder), RecordExtensions());
    std::vector<UTF16String> paths;
    paths.reserve(files.Size());
    for (std::size_t i = 0; i < files.Size(); ++i) {
        paths.push_back(files.GetPath(i));
    }
    return paths;
}

void VisitRecords(const std::function<void(Record&)>& inVisit)
{
    // One document's record files are told apart by their tags only, so they lie side by side in the list.
    const std::vector<UTF16String> files = FindRecordFiles();
    for (std::size_t begin = 0; begin < files.size();) {
        std::size_t end = begin + 1;
        const auto name = ParseRecordName(files[begin]);
        while (name && end < files.size()) {
            const auto next = ParseRecordName(files[end]);
            if (!next || next->documentID != name->documentID) {
                break;
            }
            ++end;
        }
        std::vector<UTF16String> versions(files.begin() + std::ptrdiff_t(begin),
                                          files.begin() + std::ptrdiff_t(end));
        begin = end;
        if (!name) {
            continue; // the library never looks for such a name
        }
        std::sort(versions.begin(), versions.end(), [](const UTF16String& inA, const UTF16String& inB) {
            return TagRank(ParseRecordName(inA)->tag) < TagRank(ParseRecordName(inB)->tag);
        });
        for (const UTF16String& path : versions) {
            std::string error;
            if (auto record = ReadRecord(path, error)) {
                inVisit(*record);
                break;
            }
        }
    }
}

int WriteRecord(const InterfaceRef<TR::MediaAcceleratorDatabaseEntry>& inEntry, const UTF16String& inPath)
{
    const InterfaceRef<BE::IXMLFileWriter> writer(
        kiocore::classref::ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID));
    writer->GetDataWriter().WriteObject(TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                        InterfaceRef<BE::ISerializeable>(inEntry));
    return writer->Save(inPath);
}

UTF16String DocumentLockFile()
{
    UTF16String path;
    if (Preferences()->GetDocumentLockFile(path) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoLockFile=the preferences name no file for the locks of "
                           "documents"));
    }
    return path;
}

void VisitStoredValues(const UTF16String& inPath,
                       const std::function<void(std::string_view inType, std::string_view inKey,
                                                const UTF16String& inText)>& inVisit)
{
    const auto reader = CreateReader();
    if (reader->Open(inPath) < 0) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/RecordUnreadable=@0 is no readable record: @1",
                                         {inPath, ToUTF16(reader->GetOpenError())}));
    }
    if (!reader->VisitStored(TR::MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey, inVisit)) {
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/NoRecordIn=@0 holds no record: no object "
                                           "MediaAcceleratorDatabaseEntry was found in it",
                                           {inPath}));
    }
}

} // namespace trhost
