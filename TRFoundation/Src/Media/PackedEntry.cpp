#include "PackedEntry.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace TR {

using kiocore::UTF16View;

// A text is its length doubled, plus 1 when its units take two bytes, as a variable-length number, and the
// units. A path is a folder's index plus 1 (0 for none) and the rest as a text. A stream is its ID, the
// number of items, that many 32-bit offsets from the stream's start, and the items; an item is key, flags,
// path, Windows path.

namespace {

enum ItemFlags : std::uint8_t { kCanBeCopied = 1 };

std::uint32_t Load32(const std::uint8_t* inBytes)
{
    std::uint32_t value;
    std::memcpy(&value, inBytes, sizeof(value));
    return value;
}

struct PackedText {
    const std::uint8_t* units;
    std::size_t length;
    bool wide;

    char16_t At(std::size_t inIndex) const
    {
        if (!wide) {
            return units[inIndex];
        }
        char16_t unit;
        std::memcpy(&unit, units + inIndex * 2, sizeof(unit));
        return unit;
    }

    /// Below, equal to or above zero as inText sorts before, with or after this.
    int Compare(UTF16View inText) const
    {
        const std::size_t common = std::min(inText.size(), length);
        for (std::size_t i = 0; i < common; ++i) {
            if (const char16_t ours = At(i); inText[i] != ours) {
                return inText[i] < ours ? -1 : 1;
            }
        }
        return inText.size() == length ? 0 : (inText.size() < length ? -1 : 1);
    }

    void AppendTo(UTF16String& ioText) const
    {
        const std::size_t before = ioText.size();
        ioText.resize(before + length);
        if (wide) {
            std::memcpy(ioText.data() + before, units, length * 2);
        } else {
            for (std::size_t i = 0; i < length; ++i) {
                ioText[before + i] = units[i];
            }
        }
    }
};

/// Folder part of a path in either platform's form, for sharing it between paths; not for use as a path.
UTF16View FolderOf(UTF16View inPath)
{
    std::size_t length = inPath.size();
    while (length != 0 && inPath[length - 1] != u'/' && inPath[length - 1] != u'\\') {
        --length;
    }
    return inPath.substr(0, length);
}

bool IsSame(UTF16View inA, UTF16View inB)
{
    return inA.size() == inB.size() &&
           std::memcmp(inA.data(), inB.data(), inA.size() * sizeof(char16_t)) == 0;
}

/// Numbers the folders of paths in the order in which they come.
class Folders {
public:
    Folders() { mInOrder.reserve(kFew); }

    /// @return the folder's number, from 0.
    std::size_t Note(UTF16View inFolder)
    {
        const std::size_t few = std::min(mInOrder.size(), kFew);
        for (std::size_t i = 0; i < few; ++i) {
            if (IsSame(mInOrder[i], inFolder)) {
                return i;
            }
        }
        if (few == kFew) {
            const auto [found, isNew] = mFurther.try_emplace(inFolder, mInOrder.size());
            if (!isNew) {
                return found->second;
            }
        }
        mInOrder.push_back(inFolder);
        return mInOrder.size() - 1;
    }
    const std::vector<UTF16View>& InOrder() const { return mInOrder; }

private:
    /// Records name a folder or two; these are compared one by one.
    static constexpr std::size_t kFew = 4;

    std::vector<UTF16View> mInOrder;
    std::map<UTF16View, std::size_t> mFurther;
};

// A fixed count lets the compiler use vector registers without having to know the length.
constexpr std::size_t kBlock = 16;

bool IsNarrow(UTF16View inText)
{
    char16_t seen = 0;
    std::size_t i = 0;
    for (; i + kBlock <= inText.size(); i += kBlock) {
        for (std::size_t k = 0; k < kBlock; ++k) {
            seen |= inText[i + k];
        }
    }
    for (; i < inText.size(); ++i) {
        seen |= inText[i];
    }
    return seen <= 0xFF;
}

void Narrow(UTF16View inText, char* outBytes)
{
    std::size_t i = 0;
    for (; i + kBlock <= inText.size(); i += kBlock) {
        for (std::size_t k = 0; k < kBlock; ++k) {
            outBytes[i + k] = static_cast<char>(inText[i + k]);
        }
    }
    for (; i < inText.size(); ++i) {
        outBytes[i] = static_cast<char>(inText[i]);
    }
}

} // namespace

class PackedEntry::Reader {
public:
    explicit Reader(const std::uint8_t* inAt) : mAt(inAt) {}

    std::size_t Number()
    {
        std::size_t number = 0;
        for (unsigned shift = 0;; shift += 7) {
            const std::uint8_t byte = *mAt++;
            number |= std::size_t(byte & 0x7F) << shift;
            if (byte < 0x80) {
                return number;
            }
        }
    }
    std::uint8_t Byte() { return *mAt++; }
    PackedText Text()
    {
        const std::size_t header = Number();
        const PackedText text{mAt, header >> 1, (header & 1) != 0};
        mAt += text.length << (text.wide ? 1 : 0);
        return text;
    }
    void Path(const PackedEntry& inEntry, UTF16String& outPath)
    {
        outPath.clear();
        if (const std::size_t folder = Number()) {
            Reader(inEntry.Folder(folder - 1)).Text().AppendTo(outPath);
        }
        Text().AppendTo(outPath);
    }
    const std::uint8_t* At() const { return mAt; }

private:
    const std::uint8_t* mAt;
};

class PackedEntry::Writer {
public:
    void Number(std::size_t inNumber)
    {
        for (; inNumber >= 0x80; inNumber >>= 7) {
            mBytes.push_back(static_cast<char>(inNumber | 0x80));
        }
        mBytes.push_back(static_cast<char>(inNumber));
    }
    void Byte(std::uint8_t inByte) { mBytes.push_back(static_cast<char>(inByte)); }
    void Text(UTF16View inText)
    {
        const bool wide = !IsNarrow(inText);
        Number(inText.size() << 1 | (wide ? 1 : 0));
        if (wide) {
            mBytes.append(reinterpret_cast<const char*>(inText.data()), inText.size() * 2);
        } else {
            const std::size_t at = mBytes.size();
            mBytes.resize(at + inText.size());
            Narrow(inText, mBytes.data() + at);
        }
    }
    /// @param ioFolders  knows the path's folder.
    void Path(Folders& ioFolders, UTF16View inPath)
    {
        const UTF16View folder = FolderOf(inPath);
        if (folder.empty()) {
            Number(0);
        } else {
            Number(ioFolders.Note(folder) + 1);
        }
        Text(inPath.substr(folder.size()));
    }
    void Append(std::string_view inBytes) { mBytes.append(inBytes); }
    void Offset(std::size_t inAt, std::size_t inValue)
    {
        if (inValue > std::numeric_limits<std::uint32_t>::max()) {
            throw std::length_error("a media cache record is larger than 4 GiB");
        }
        const auto value = static_cast<std::uint32_t>(inValue);
        std::memcpy(mBytes.data() + inAt, &value, sizeof(value));
    }
    void Expect(std::size_t inBytes) { mBytes.reserve(inBytes); }
    void Reserve(std::size_t inBytes) { mBytes.append(inBytes, '\0'); }
    std::size_t Size() const { return mBytes.size(); }
    const std::string& Bytes() const { return mBytes; }

private:
    std::string mBytes;
};

void intrusive_ptr_add_ref(const PackedEntry* inEntry)
{
    inEntry->mReferences.fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const PackedEntry* inEntry)
{
    if (inEntry->mReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        inEntry->~PackedEntry();
        ::operator delete(const_cast<PackedEntry*>(inEntry));
    }
}

std::uint32_t PackedEntry::TableAt(std::size_t inIndex) const
{
    return Load32(Begin() + sizeof(PackedEntry) + inIndex * sizeof(std::uint32_t));
}

PackedEntryPtr PackedEntry::Pack(const UTF16String& inOriginalPath, const UTF16String& inOriginalWinPath,
                                 const Streams& inStreams)
{
    std::size_t itemCount = 0;
    for (const auto& [streamID, items] : inStreams) {
        itemCount += items.size();
    }
    std::vector<ItemView> itemViews;
    itemViews.reserve(itemCount); // so that the spans stay
    std::vector<StreamView> streamViews;
    streamViews.reserve(inStreams.size());
    for (const auto& [streamID, items] : inStreams) {
        const ItemView* const first = itemViews.data() + itemViews.size();
        for (const auto& [key, item] : items) {
            itemViews.push_back({key, item.path, item.winPath, item.canBeCopied});
        }
        streamViews.push_back({streamID, {first, items.size()}});
    }
    return Pack(inOriginalPath, inOriginalWinPath, streamViews);
}

PackedEntryPtr PackedEntry::Pack(UTF16View inOriginalPath, UTF16View inOriginalWinPath,
                                 std::span<const StreamView> inStreams)
{
    Folders folders;
    const auto noteFolder = [&](UTF16View inPath) {
        if (const UTF16View folder = FolderOf(inPath); !folder.empty()) {
            folders.Note(folder);
        }
    };
    noteFolder(inOriginalPath);
    std::size_t textUnits = inOriginalPath.size() + inOriginalWinPath.size();
    std::size_t texts = 3;
    for (const StreamView& stream : inStreams) {
        textUnits += stream.id.size();
        texts += 3 + stream.items.size() * 5;
        for (const ItemView& item : stream.items) {
            noteFolder(item.path);
            textUnits += item.key.size() + item.path.size() + item.winPath.size();
        }
    }

    const std::vector<UTF16View>& folderOrder = folders.InOrder();
    constexpr std::size_t kOffset = sizeof(std::uint32_t);
    constexpr std::size_t kTable = sizeof(PackedEntry);
    Writer out;
    out.Expect(kTable + textUnits + texts * kOffset); // what it takes unless texts are wide
    out.Reserve(kTable + (inStreams.size() + folderOrder.size()) * kOffset);
    out.Path(folders, inOriginalPath);
    out.Text(inOriginalWinPath);
    std::size_t table = kTable;
    for (const auto& [streamID, items] : inStreams) {
        const std::size_t streamAt = out.Size();
        out.Offset(table, streamAt);
        table += kOffset;
        out.Text(streamID);
        out.Number(items.size());
        std::size_t itemTable = out.Size();
        out.Reserve(items.size() * kOffset);
        for (const ItemView& item : items) {
            out.Offset(itemTable, out.Size() - streamAt);
            itemTable += kOffset;
            out.Text(item.key);
            out.Byte(item.canBeCopied ? kCanBeCopied : 0);
            out.Path(folders, item.path);
            out.Text(item.winPath);
        }
    }
    for (UTF16View folder : folderOrder) {
        out.Offset(table, out.Size());
        table += kOffset;
        out.Text(folder);
    }
    if (out.Size() > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("a media cache record is larger than 4 GiB");
    }

    void* const block = ::operator new(out.Size());
    std::memcpy(static_cast<char*>(block) + kTable, out.Bytes().data() + kTable, out.Size() - kTable);
    auto* const packed = new (block) PackedEntry;
    packed->mBytes = static_cast<std::uint32_t>(out.Size());
    packed->mStreamCount = static_cast<std::uint32_t>(inStreams.size());
    packed->mFolderCount = static_cast<std::uint32_t>(folderOrder.size());
    return PackedEntryPtr(packed);
}

void PackedEntry::GetOriginalPath(UTF16String& outPath) const
{
    Reader(Begin() + sizeof(PackedEntry) + (mStreamCount + mFolderCount) * sizeof(std::uint32_t))
        .Path(*this, outPath);
}

std::size_t PackedEntry::GetItemCount() const
{
    std::size_t count = 0;
    for (std::size_t s = 0; s < mStreamCount; ++s) {
        Reader stream(Stream(s));
        stream.Text();
        count += stream.Number();
    }
    return count;
}

void PackedEntry::Unpack(UTF16String& outOriginalPath, UTF16String& outOriginalWinPath,
                         Streams& outStreams) const
{
    Reader paths(Begin() + sizeof(PackedEntry) + (mStreamCount + mFolderCount) * sizeof(std::uint32_t));
    paths.Path(*this, outOriginalPath);
    outOriginalWinPath.clear();
    paths.Text().AppendTo(outOriginalWinPath);
    outStreams.clear();
    for (std::size_t s = 0; s < mStreamCount; ++s) {
        Reader in(Stream(s));
        UTF16String streamID;
        in.Text().AppendTo(streamID);
        const std::size_t count = in.Number();
        Reader item(in.At() + count * sizeof(std::uint32_t));
        auto& items =
            outStreams
                .emplace_hint(outStreams.end(), std::move(streamID), MediaAcceleratorDatabaseEntry::Items())
                ->second;
        for (std::size_t i = 0; i < count; ++i) {
            UTF16String key;
            item.Text().AppendTo(key);
            MediaAcceleratorItem unpacked;
            unpacked.key = key;
            unpacked.canBeCopied = (item.Byte() & kCanBeCopied) != 0;
            item.Path(*this, unpacked.path);
            item.Text().AppendTo(unpacked.winPath);
            items.emplace_hint(items.end(), std::move(key), std::move(unpacked));
        }
    }
}

namespace {

/// Index of the element that inCompare answers 0 for, or inCount.
template <typename Comparison>
std::size_t BinarySearch(std::size_t inCount, Comparison inCompare)
{
    std::size_t first = 0;
    std::size_t last = inCount;
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        const int order = inCompare(middle);
        if (order == 0) {
            return middle;
        }
        if (order < 0) {
            last = middle;
        } else {
            first = middle + 1;
        }
    }
    return inCount;
}

} // namespace

int PackedEntry::FindItemPath(UTF16View inStreamID, UTF16View inKey, UTF16String& outPath) const
{
    const std::size_t stream = BinarySearch(mStreamCount, [&](std::size_t inIndex) {
        return Reader(Stream(inIndex)).Text().Compare(inStreamID);
    });
    if (stream == mStreamCount) {
        return -1;
    }
    const std::uint8_t* const start = Stream(stream);
    Reader in(start);
    in.Text();
    const std::size_t count = in.Number();
    const auto item = [&](std::size_t inIndex) { return Reader(start + Load32(in.At() + inIndex * 4)); };
    const std::size_t found =
        BinarySearch(count, [&](std::size_t inIndex) { return item(inIndex).Text().Compare(inKey); });
    if (found == count) {
        return -1;
    }
    Reader reader = item(found);
    reader.Text();
    reader.Byte();
    reader.Path(*this, outPath);
    return outPath.empty() ? -1 : 0;
}

} // namespace TR
