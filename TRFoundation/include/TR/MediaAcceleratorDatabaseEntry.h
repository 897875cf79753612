#pragma once

#include <BE/Serialization.h>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace TR {

using kiocore::Guid;
using kiocore::ImmutableString;
using kiocore::InterfaceRef;
using kiocore::UTF16String;

class GatheredStreams;
class PackedEntry;
struct EntrySnapshot;

/// One cache file of a stream.
///
/// Threading: a plain value.
struct MediaAcceleratorItem {
    UTF16String path;         ///< full path of the cache file on this platform
    UTF16String winPath;      ///< the same in Windows form, for databases that move between platforms
    UTF16String key;          ///< which cache file of its stream this is
    bool canBeCopied = false; ///< whether it may be copied along with the media
};

/// The cache files of one media document, by stream and key. Stream IDs are decimal text for the
/// numeric forms ("0", "17") and opaque otherwise, as item keys are.
///
/// Contents that came from the database are shared with it until they are first looked at or changed, so
/// getting an entry and cloning one are cheap.
///
/// Threading: one thread at a time; an entry that was handed out belongs to its caller alone.
class KIO_EXPORT MediaAcceleratorDatabaseEntry final : public BE::ISerializeable,
                                                       public virtual kiocore::classref::UnknownBase {
public:
    using Items = std::map<UTF16String, MediaAcceleratorItem>; // by key
    using Streams = std::map<UTF16String, Items>;              // by stream ID

    /// "MediaAcceleratorDatabaseEntry": the key under which the database stores an entry.
    static const ImmutableString kMediaAcceleratorDatabaseEntryKey;
    static const CFUUIDBytes& InterfaceID();

    MediaAcceleratorDatabaseEntry();
    ~MediaAcceleratorDatabaseEntry() override;

    /// A new entry whose content state is then set: with any but the zero GUID it is not up to date.
    static InterfaceRef<MediaAcceleratorDatabaseEntry> Create(const Guid& inContentState);
    static void CreateInstanceRef(InterfaceRef<kiocore::classref::UnknownBase>& outObject);
    InterfaceRef<MediaAcceleratorDatabaseEntry> Clone() const;

    /// Another GUID than the present one marks the entry not up to date.
    void SetContentState(const Guid& inContentState);
    const Guid& GetContentState() const { return mContentState; }
    /// Path of the media file. Does not mark the entry modified.
    void SetOriginal(const UTF16String& inPath);
    UTF16String GetOriginal() const;

    /// Cleans first, so an entry that is not up to date starts afresh. Then adds the item; with inReplace
    /// one of the same key takes the new item's path, key and canBeCopied but keeps its own winPath, and
    /// nothing changes when the paths are equal. Without inReplace an item of the same key stays, and the
    /// entry is marked all the same.
    /// @throws what deleting files throws; the items not yet reached are then still there.
    void AddItem(const UTF16String& inStreamID, const MediaAcceleratorItem& inItem, bool inReplace);
    void AddItem(unsigned int inStreamID, const MediaAcceleratorItem& inItem, bool inReplace);

    /// Appends the stream's items in key order; nothing while the entry is not up to date.
    void GetItems(const UTF16String& inStreamID, std::vector<MediaAcceleratorItem>& out) const;
    void GetItems(unsigned int inStreamID, std::vector<MediaAcceleratorItem>& out) const;

    /// Finds a cache file, also in an entry that is not up to date, and touches its access time, so that
    /// cache files in use look recently used to whoever prunes by age.
    /// @return 0; -1 when stream or key are unknown (outPath untouched) or the item has no path here.
    int FindItem(const UTF16String& inStreamID, const UTF16String& inKey, UTF16String& outPath) const;
    int FindItem(unsigned int inStreamID, const UTF16String& inKey, UTF16String& outPath) const;

    /// Appends all stream IDs in order, also of an entry that is not up to date.
    void GetStreamIDs(std::vector<UTF16String>& out) const;
    std::size_t GetStreamCount() const;
    std::size_t GetItemCount() const;

    /// Marks the whole entry not up to date if it has this stream. Deletes nothing yet.
    void Invalidate(unsigned long inStreamID);
    /// Deletes all cache files of an entry that is not up to date and forgets its streams.
    /// @throws what deleting files throws; nothing is forgotten then.
    void Clean();

    bool IsUpToDate() const { return mUpToDate; }
    bool IsModified() const { return mModified; }

    /// Reading drops items whose cache file changed or vanished since it was recorded, and marks the
    /// entry modified then. Deletes no file.
    void SerializeIn(unsigned int inVersion, BE::DataReader& inReader) override;
    void SerializeOut(BE::DataWriter& inWriter) const override;
    void SerializeToSink(BE::IDictionarySink& inSink) const override;
    unsigned int GetVersion() const override;
    Guid GetClassID() const override;
    ImmutableString GetClassName() const override;
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

private:
    friend struct EntrySnapshot;
    struct Record {
        UTF16String originalPath;
        UTF16String originalWinPath;
        Streams streams;
    };

    const Record& Contents() const;
    Record& Contents();
    template <typename Visitor>
    void VisitStored(Visitor&& inVisitor) const;
    bool CheckItem(MediaAcceleratorItem& ioItem, std::uint64_t inRecordedTime);
    void Take(GatheredStreams& inGathered);
    UTF16String RebuildPath(const UTF16String& inWinPath);

    Guid mContentState;
    bool mUpToDate = true;
    bool mModified = false;
    // Shared and packed until somebody looks; our own afterwards. Both empty: an entry without streams.
    mutable boost::intrusive_ptr<const PackedEntry> mPacked;
    mutable std::unique_ptr<Record> mRecord;
};

} // namespace TR
