#include <TR/MediaAcceleratorDatabase.h>
#include <TR/MediaAcceleratorDatabaseEntry.h>
#include <TR/TRFoundation.h>

#include "GatheredStreams.h"

#include <BE/Serialization.h>
#include <ZOL/File.h>
#include <ZOL/PathUtils.h>
#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/FileUtils.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace TR {

using BE::CreateKeyWithIndex;
using BE::SerializeableValue;
using kiocore::filesupport::FileTime;
using kiocore::filesupport::kNoFileTime;
using kiocore::utility::DecimalText;

namespace {

constexpr unsigned int kVersion = 4;
constexpr unsigned int kFirstVersionWithContentState = 3;
constexpr unsigned int kFirstVersionWithPlatformPaths = 4;

const ImmutableString kMediaAcceleratorDatabaseEntryKey_OriginalPath("OriginalPath");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_OriginalMacPath("OriginalMacPath");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_OriginalWinPath("OriginalWinPath");
// The entry's own, for all that its name says; records in the field carry it.
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ContentState("Item.ContentState");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_StreamCount("Stream.Count");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_StreamID("Stream.ID");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemCount("Item.Count");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemPath("Item.Path");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemMacPath("Item.MacPath");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemWinPath("Item.WinPath");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemKey("Item.Key");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemModDate("Item.ModDate");
const ImmutableString kMediaAcceleratorDatabaseEntryKey_ItemCanBeCopied("Item.CanBeCopied");

/// Each stream has a block of 256 indices for its items. A stream with more than 255 runs into the next
/// one's block; records in the field depend on the rule, so it stays.
constexpr unsigned int ItemIndex(unsigned int inStream, unsigned int inItem)
{
    return inStream * 256u + inItem + 1;
}

/// In what is written today.
constexpr std::size_t kValuesOfItem = 6;

/// How many items a record may claim beyond the values that it holds before it counts as damaged: items
/// whose keys are all missing are allowed, but not enough of them to keep a reader busy.
constexpr std::size_t kMostMissingItems = 65536;

MF::BinaryData ModificationDate(const UTF16String& inPath)
{
    FileTime time = kNoFileTime;
    if (!inPath.empty()) {
        ZOL::File::GetLastModificationTime(inPath, time);
    }
    return MF::BinaryData(&time, sizeof(time));
}

void CheckCount(const char* inWhat, std::size_t inCount, std::size_t inMost)
{
    if (inCount > inMost) {
        throw BE::exDamagedData("A media cache record claims " + std::to_string(inCount) + " " + inWhat +
                                "; with the values that it holds there can be at most " +
                                std::to_string(inMost));
    }
}

} // namespace

unsigned int MediaAcceleratorDatabaseEntry::GetVersion() const
{
    return kVersion;
}
Guid MediaAcceleratorDatabaseEntry::GetClassID() const
{
    return kMediaAcceleratorDatabaseEntryClassID;
}
ImmutableString MediaAcceleratorDatabaseEntry::GetClassName() const
{
    return kMediaAcceleratorDatabaseEntryKey;
}

template <typename Visitor>
void MediaAcceleratorDatabaseEntry::VisitStored(Visitor&& inVisitor) const
{
    const Record& record = Contents();
    inVisitor(kMediaAcceleratorDatabaseEntryKey_OriginalPath, record.originalPath);
    inVisitor(kMediaAcceleratorDatabaseEntryKey_OriginalMacPath, record.originalPath);
    inVisitor(kMediaAcceleratorDatabaseEntryKey_OriginalWinPath, record.originalWinPath);
    inVisitor(kMediaAcceleratorDatabaseEntryKey_ContentState, SerializeableValue<Guid>(mContentState));
    if (!mUpToDate && !mModified) {
        return;
    }
    inVisitor(kMediaAcceleratorDatabaseEntryKey_StreamCount,
              SerializeableValue<std::uint32_t>(static_cast<std::uint32_t>(record.streams.size())));
    unsigned int s = 0;
    for (const auto& [streamID, items] : record.streams) {
        inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_StreamID, s + 1), streamID);
        unsigned int i = 0;
        for (const auto& [key, item] : items) {
            const unsigned int n = ItemIndex(s, i++);
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemPath, n), item.path);
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemMacPath, n), item.path);
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemWinPath, n), item.winPath);
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemKey, n), item.key);
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemModDate, n),
                      ModificationDate(item.path));
            inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemCanBeCopied, n),
                      SerializeableValue<bool>(item.canBeCopied));
        }
        inVisitor(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemCount, s + 1),
                  SerializeableValue<std::uint32_t>(static_cast<std::uint32_t>(items.size())));
        ++s;
    }
}

void MediaAcceleratorDatabaseEntry::SerializeOut(BE::DataWriter& inWriter) const
{
    VisitStored([&](const ImmutableString& key, const auto& value) { inWriter.WriteValue(key, value); });
}

void MediaAcceleratorDatabaseEntry::SerializeToSink(BE::IDictionarySink& inSink) const
{
    VisitStored([&](const ImmutableString& key, const auto& value) { inSink.Put(key, value); });
}

void MediaAcceleratorDatabaseEntry::SerializeIn(unsigned int inVersion, BE::DataReader& inReader)
{
    Record& record = Contents();
    const bool hasPlatformPaths = inVersion >= kFirstVersionWithPlatformPaths;
    const ImmutableString& itemPathKey = hasPlatformPaths ? kMediaAcceleratorDatabaseEntryKey_ItemMacPath
                                                          : kMediaAcceleratorDatabaseEntryKey_ItemPath;
    if (hasPlatformPaths) {
        inReader.ReadValue(kMediaAcceleratorDatabaseEntryKey_OriginalMacPath, record.originalPath);
        inReader.ReadValue(kMediaAcceleratorDatabaseEntryKey_OriginalWinPath, record.originalWinPath);
    } else {
        inReader.ReadValue(kMediaAcceleratorDatabaseEntryKey_OriginalPath, record.originalPath);
    }
    if (inVersion >= kFirstVersionWithContentState) {
        SerializeableValue<Guid> contentState(mContentState);
        inReader.ReadValue(kMediaAcceleratorDatabaseEntryKey_ContentState, contentState);
        mContentState = contentState.Get();
    }

    const std::size_t valueCount = inReader.GetValueCount();
    SerializeableValue<std::uint32_t> streamCount;
    inReader.ReadValue(kMediaAcceleratorDatabaseEntryKey_StreamCount, streamCount);
    CheckCount("streams", streamCount.Get(), valueCount);

    GatheredStreams gathered(valueCount / kValuesOfItem);
    std::size_t itemsClaimed = 0;
    SerializeableValue<bool> canBeCopied; // deliberately outlives an item: older writers left it out
    MF::BinaryData modDate;
    MediaAcceleratorItem item; // one for all, so that the memory of those that are dropped is used again
    for (unsigned int s = 0; s < streamCount.Get(); ++s) {
        UTF16String streamID = DecimalText(s);
        inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_StreamID, s + 1), streamID);
        SerializeableValue<std::uint32_t> itemCount;
        inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemCount, s + 1), itemCount);
        CheckCount("items of a stream", itemCount.Get(), valueCount);
        itemsClaimed += itemCount.Get();
        CheckCount("items", itemsClaimed, valueCount + kMostMissingItems);

        gathered.BeginStream(streamID);
        for (unsigned int i = 0; i < itemCount.Get(); ++i) {
            const unsigned int n = ItemIndex(s, i);
            item.path.clear();
            item.winPath.clear();
            item.key.clear();
            inReader.ReadValue(CreateKeyWithIndex(itemPathKey, n), item.path);
            if (hasPlatformPaths) {
                inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemWinPath, n),
                                   item.winPath);
            }
            inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemKey, n), item.key);
            modDate.SetSize(0);
            inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemModDate, n), modDate);
            FileTime recordedTime = kNoFileTime;
            if (const std::size_t size = std::min(modDate.GetSize(), sizeof(recordedTime))) {
                std::memcpy(&recordedTime, modDate.GetData(), size);
            }
            inReader.ReadValue(CreateKeyWithIndex(kMediaAcceleratorDatabaseEntryKey_ItemCanBeCopied, n),
                               canBeCopied);
            item.canBeCopied = canBeCopied.Get();
            if (CheckItem(item, recordedTime)) {
                gathered.Add(item);
            }
        }
    }
    Take(gathered);
}

/// Into a record without streams, which stays packed then, or beside those that it has.
void MediaAcceleratorDatabaseEntry::Take(GatheredStreams& inGathered)
{
    Record& record = Contents();
    if (record.streams.empty()) {
        mPacked = PackedEntry::Pack(record.originalPath, record.originalWinPath, inGathered.InOrder());
        mRecord.reset();
        return;
    }
    for (const PackedEntry::StreamView& stream : inGathered.InOrder()) {
        const auto [present, isNew] = record.streams.try_emplace(UTF16String(stream.id));
        if (!isNew) {
            continue;
        }
        for (const PackedEntry::ItemView& item : stream.items) {
            UTF16String key(item.key);
            MediaAcceleratorItem unpacked{UTF16String(item.path), UTF16String(item.winPath), key,
                                          item.canBeCopied};
            present->second.try_emplace(present->second.end(), std::move(key), std::move(unpacked));
        }
    }
}

/// @return whether the item survives; its path may be rebuilt.
bool MediaAcceleratorDatabaseEntry::CheckItem(MediaAcceleratorItem& ioItem, std::uint64_t inRecordedTime)
{
    FileTime time = kNoFileTime;
    const bool exists = !ioItem.path.empty() && ZOL::File::GetLastModificationTime(ioItem.path, time) >= 0;
    if (exists && time == inRecordedTime) {
        return true;
    }
    mModified = true;
    if (exists || !ioItem.path.empty() || ioItem.winPath.empty()) {
        return false; // rewritten behind our back, or gone
    }
    ioItem.path = RebuildPath(ioItem.winPath);
    return true;
}

/// Where a cache file that was recorded on the other platform is to be looked for on this one.
UTF16String MediaAcceleratorDatabaseEntry::RebuildPath(const UTF16String& inWinPath)
{
    const std::size_t separator = inWinPath.rfind(ZOL::PathUtils::kOppositePlatformPathSeparator);
    const UTF16String filePart = separator == UTF16String::npos ? inWinPath : inWinPath.substr(separator + 1);
    UTF16String folder;
    GetMediaAcceleratorDirectoryPath(Contents().originalPath, folder);
    return kiocore::utility::FileUtils::AddTrailingSlash(folder) + filePart;
}

} // namespace TR
