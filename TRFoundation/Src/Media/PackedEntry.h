#pragma once

#include <TR/MediaAcceleratorDatabaseEntry.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace TR {

class PackedEntry;
using PackedEntryPtr = boost::intrusive_ptr<const PackedEntry>;

/// An entry's contents in one block of memory, immutable and shared: what the database keeps of recently
/// used entries. Texts take one byte a unit where all their units fit, folders that several paths share are
/// stored once, and streams and items are found by binary search without unpacking anything.
///
/// Threading: any thread.
class PackedEntry {
public:
    using Streams = MediaAcceleratorDatabaseEntry::Streams;

    struct ItemView {
        kiocore::UTF16View key;
        kiocore::UTF16View path;
        kiocore::UTF16View winPath;
        bool canBeCopied;
    };
    struct StreamView {
        kiocore::UTF16View id;
        std::span<const ItemView> items; ///< in the order of their keys, each key once
    };

    /// @param inStreams  in the order of their IDs, each ID once.
    static PackedEntryPtr Pack(kiocore::UTF16View inOriginalPath, kiocore::UTF16View inOriginalWinPath,
                               std::span<const StreamView> inStreams);
    static PackedEntryPtr Pack(const UTF16String& inOriginalPath, const UTF16String& inOriginalWinPath,
                               const Streams& inStreams);
    void Unpack(UTF16String& outOriginalPath, UTF16String& outOriginalWinPath, Streams& outStreams) const;

    /// @param outPath  untouched when there is no such stream or item; no allocation once it is large enough.
    /// @return 0; -1 when there is no such stream or item, or the item's path is empty.
    int FindItemPath(kiocore::UTF16View inStreamID, kiocore::UTF16View inKey, UTF16String& outPath) const;

    void GetOriginalPath(UTF16String& outPath) const;
    std::size_t GetStreamCount() const { return mStreamCount; }
    std::size_t GetItemCount() const;

    /// Of the whole block.
    std::size_t BytesUsed() const { return mBytes; }

private:
    friend void intrusive_ptr_add_ref(const PackedEntry* inEntry);
    friend void intrusive_ptr_release(const PackedEntry* inEntry);
    class Reader;
    class Writer;

    PackedEntry() = default;
    const std::uint8_t* Begin() const { return reinterpret_cast<const std::uint8_t*>(this); }
    std::uint32_t TableAt(std::size_t inIndex) const;
    const std::uint8_t* Stream(std::size_t inIndex) const { return Begin() + TableAt(inIndex); }
    const std::uint8_t* Folder(std::size_t inIndex) const
    {
        return Begin() + TableAt(mStreamCount + inIndex);
    }

    // The tables of stream and folder offsets follow, then the original paths, then streams and folders.
    mutable std::atomic<std::uint32_t> mReferences{0};
    std::uint32_t mBytes = 0;
    std::uint32_t mStreamCount = 0;
    std::uint32_t mFolderCount = 0;
};

/// An entry as the database's memory holds it.
struct EntrySnapshot {
    Guid contentState;
    bool upToDate = true;
    bool modified = false;
    PackedEntryPtr contents;

    static EntrySnapshot Of(const MediaAcceleratorDatabaseEntry& inEntry);
    /// An entry of the caller's own that shares these contents until it is changed.
    InterfaceRef<MediaAcceleratorDatabaseEntry> MakeEntry() const;
};

} // namespace TR
