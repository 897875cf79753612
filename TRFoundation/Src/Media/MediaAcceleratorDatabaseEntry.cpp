#include <TR/MediaAcceleratorDatabaseEntry.h>

#include <TR/TRFoundation.h>

#include "CacheFileTouch.h"
#include "PackedEntry.h"

#include <ZOL/File.h>

#include <utility>

namespace TR {

using kiocore::classref::MakeObject;
using kiocore::classref::UnknownBase;
using kiocore::utility::DecimalText;

const ImmutableString
    MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey("MediaAcceleratorDatabaseEntry");

MediaAcceleratorDatabaseEntry::MediaAcceleratorDatabaseEntry() = default;
MediaAcceleratorDatabaseEntry::~MediaAcceleratorDatabaseEntry() = default;

const CFUUIDBytes& MediaAcceleratorDatabaseEntry::InterfaceID()
{
    static constexpr CFUUIDBytes kID{
        {0x5c, 0x0e, 0x1b, 0x52, 0x8f, 0x0d, 0x4d, 0x6e, 0x9a, 0x37, 0x41, 0xc2, 0x66, 0x9e, 0x0b, 0x18}};
    return kID;
}

void* MediaAcceleratorDatabaseEntry::QueryMap(const CFUUIDBytes& inInterfaceID)
{
    if (inInterfaceID == BE::ISerializeable::InterfaceID()) {
        return static_cast<BE::ISerializeable*>(this);
    }
    if (inInterfaceID == InterfaceID()) {
        return this;
    }
    return UnknownBase::QueryMap(inInterfaceID);
}

void MediaAcceleratorDatabaseEntry::CreateInstanceRef(InterfaceRef<UnknownBase>& outObject)
{
    outObject = MakeObject<MediaAcceleratorDatabaseEntry>();
}

InterfaceRef<MediaAcceleratorDatabaseEntry> MediaAcceleratorDatabaseEntry::Create(const Guid& inContentState)
{
    auto entry = MakeObject<MediaAcceleratorDatabaseEntry>();
    entry->SetContentState(inContentState);
    return entry;
}

InterfaceRef<MediaAcceleratorDatabaseEntry> MediaAcceleratorDatabaseEntry::Clone() const
{
    auto clone = MakeObject<MediaAcceleratorDatabaseEntry>();
    clone->mContentState = mContentState;
    clone->mUpToDate = mUpToDate;
    clone->mModified = mModified;
    clone->mPacked = mPacked;
    if (mRecord) {
        clone->mRecord = std::make_unique<Record>(*mRecord);
    }
    return clone;
}

const MediaAcceleratorDatabaseEntry::Record& MediaAcceleratorDatabaseEntry::Contents() const
{
    if (!mRecord) {
        auto record = std::make_unique<Record>();
        if (mPacked) {
            mPacked->Unpack(record->originalPath, record->originalWinPath, record->streams);
        }
        mRecord = std::move(record);
        mPacked.reset();
    }
    return *mRecord;
}

MediaAcceleratorDatabaseEntry::Record& MediaAcceleratorDatabaseEntry::Contents()
{
    return const_cast<Record&>(std::as_const(*this).Contents());
}

void MediaAcceleratorDatabaseEntry::SetContentState(const Guid& inContentState)
{
    if (inContentState != mContentState) {
        mUpToDate = false;
        mContentState = inContentState;
    }
}

void MediaAcceleratorDatabaseEntry::SetOriginal(const UTF16String& inPath)
{
    Contents().originalPath = inPath;
}
UTF16String MediaAcceleratorDatabaseEntry::GetOriginal() const
{
    if (mPacked) {
        UTF16String path;
        mPacked->GetOriginalPath(path);
        return path;
    }
    return Contents().originalPath;
}

void MediaAcceleratorDatabaseEntry::AddItem(const UTF16String& inStreamID, const MediaAcceleratorItem& inItem,
                                            bool inReplace)
{
    Clean();
    Items& items = Contents().streams[inStreamID];
    const auto [present, inserted] = items.try_emplace(inItem.key, inItem);
    if (!inserted && inReplace) {
        MediaAcceleratorItem& stored = present->second;
        if (stored.path == inItem.path) {
            return;
        }
        // The stored Windows path stays: the new item comes from this platform and has none to offer.
        stored.path = inItem.path;
        stored.key = inItem.key;
        stored.canBeCopied = inItem.canBeCopied;
    }
    mUpToDate = true;
    mModified = true;
}

void MediaAcceleratorDatabaseEntry::AddItem(unsigned int inStreamID, const MediaAcceleratorItem& inItem,
                                            bool inReplace)
{
    AddItem(DecimalText(inStreamID), inItem, inReplace);
}

void MediaAcceleratorDatabaseEntry::GetItems(const UTF16String& inStreamID,
                                             std::vector<MediaAcceleratorItem>& out) const
{
    if (!mUpToDate) {
        return;
    }
    const Streams& streams = Contents().streams;
    if (const auto stream = streams.find(inStreamID); stream != streams.end()) {
        for (const auto& [key, item] : stream->second) {
            out.push_back(item);
        }
    }
}

void MediaAcceleratorDatabaseEntry::GetItems(unsigned int inStreamID,
                                             std::vector<MediaAcceleratorItem>& out) const
{
    GetItems(DecimalText(inStreamID), out);
}

int MediaAcceleratorDatabaseEntry::FindItem(const UTF16String& inStreamID, const UTF16String& inKey,
                                            UTF16String& outPath) const
{
    if (mPacked) {
        if (mPacked->FindItemPath(inStreamID, inKey, outPath) < 0) {
            return -1;
        }
    } else {
        const Streams& streams = Contents().streams;
        const auto stream = streams.find(inStreamID);
        if (stream == streams.end()) {
            return -1;
        }
        const auto item = stream->second.find(inKey);
        if (item == stream->second.end()) {
            return -1;
        }
        outPath = item->second.path;
        if (outPath.empty()) {
            return -1;
        }
    }
    TouchCacheFile(outPath);
    return 0;
}

int MediaAcceleratorDatabaseEntry::FindItem(unsigned int inStreamID, const UTF16String& inKey,
                                            UTF16String& outPath) const
{
    return FindItem(DecimalText(inStreamID), inKey, outPath);
}

void MediaAcceleratorDatabaseEntry::GetStreamIDs(std::vector<UTF16String>& out) const
{
    for (const auto& [streamID, items] : Contents().streams) {
        out.push_back(streamID);
    }
}

std::size_t MediaAcceleratorDatabaseEntry::GetStreamCount() const
{
    return mPacked ? mPacked->GetStreamCount() : Contents().streams.size();
}

std::size_t MediaAcceleratorDatabaseEntry::GetItemCount() const
{
    if (mPacked) {
        return mPacked->GetItemCount();
    }
    std::size_t count = 0;
    for (const auto& [streamID, items] : Contents().streams) {
        count += items.size();
    }
    return count;
}

void MediaAcceleratorDatabaseEntry::Invalidate(unsigned long inStreamID)
{
    if (Contents().streams.contains(DecimalText(inStreamID))) {
        mUpToDate = false;
    }
}

void MediaAcceleratorDatabaseEntry::Clean()
{
    if (mUpToDate) {
        return;
    }
    Streams& streams = Contents().streams;
    for (const auto& [streamID, items] : streams) {
        for (const auto& [key, item] : items) {
            if (!item.path.empty()) {
                ZOL::File::Delete(item.path);
            }
            mModified = true;
        }
    }
    streams.clear();
}

EntrySnapshot EntrySnapshot::Of(const MediaAcceleratorDatabaseEntry& inEntry)
{
    EntrySnapshot snapshot{inEntry.mContentState, inEntry.mUpToDate, inEntry.mModified, inEntry.mPacked};
    if (!snapshot.contents) {
        const auto& record = inEntry.Contents();
        snapshot.contents = PackedEntry::Pack(record.originalPath, record.originalWinPath, record.streams);
    }
    return snapshot;
}

InterfaceRef<MediaAcceleratorDatabaseEntry> EntrySnapshot::MakeEntry() const
{
    auto entry = MakeObject<MediaAcceleratorDatabaseEntry>();
    entry->mContentState = contentState;
    entry->mUpToDate = upToDate;
    entry->mModified = modified;
    entry->mPacked = contents;
    return entry;
}

} // namespace TR
