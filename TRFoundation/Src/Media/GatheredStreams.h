#pragma once

#include "PackedEntry.h"

#include <cstddef>
#include <vector>

namespace TR {

/// What is read of a record's streams, all texts in one piece: most records that are read are packed at once
/// and never looked at item by item.
///
/// Threading: one thread at a time.
class GatheredStreams {
public:
    /// @param inItems  how many there may be, for getting memory at once.
    explicit GatheredStreams(std::size_t inItems);
    GatheredStreams(const GatheredStreams&) = delete;
    GatheredStreams& operator=(const GatheredStreams&) = delete;

    /// The items that are added next are this stream's.
    void BeginStream(kiocore::UTF16View inStreamID);
    void Add(const MediaAcceleratorItem& inItem);

    /// As maps would hold them: in the order of IDs and keys, of equal ones the first. Valid until something
    /// is added.
    const std::vector<PackedEntry::StreamView>& InOrder();

private:
    struct Text {
        std::size_t at;
        std::size_t size;
    };
    struct Item {
        Text key;
        Text path;
        Text winPath;
        bool canBeCopied;
    };
    struct Stream {
        Text id;
        std::size_t firstItem;
    };
    Text Keep(kiocore::UTF16View inText);
    kiocore::UTF16View View(const Text& inText) const { return {mTexts.data() + inText.at, inText.size}; }

    UTF16String mTexts;
    std::vector<Item> mItems;
    std::vector<Stream> mStreams;
    std::vector<PackedEntry::ItemView> mItemViews;
    std::vector<PackedEntry::StreamView> mStreamViews;
};

} // namespace TR
