// Any texts as an entry's contents: packed, they must answer as the plain maps do, and unpacked be the same.

#include <Media/PackedEntry.h>

#include <cstdlib>
#include <span>
#include <vector>

namespace {

using kiocore::UTF16String;
using TR::MediaAcceleratorItem;
using TR::PackedEntry;
using TR::PackedEntryPtr;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

/// The input: original path, original Windows path, then steps. A step is a byte; a multiple of 4 and a text
/// begin a stream, anything else and three texts (key, path, Windows path) make an item.
///
/// A text is a byte and that many bytes as it says in its lowest 6 bits: one for each unit, or two with
/// bit 6. Bit 7 repeats the text 140 times, once in an input and not for a stream's ID, which every search
/// in the stream compares.
class Input {
public:
    explicit Input(std::span<const std::uint8_t> inBytes) : mBytes(inBytes) {}

    bool IsAtEnd() const { return mBytes.empty(); }
    std::uint8_t Byte()
    {
        if (mBytes.empty()) {
            return 0;
        }
        const std::uint8_t byte = mBytes.front();
        mBytes = mBytes.subspan(1);
        return byte;
    }
    UTF16String Text(bool inMayBeLong = true)
    {
        const std::uint8_t form = Byte();
        const bool isLong = inMayBeLong && form & 0x80 && mLongTexts-- > 0;
        UTF16String once;
        for (int i = form & 0x3F; i > 0 && !IsAtEnd(); --i) {
            const unsigned high = form & 0x40 ? Byte() : 0;
            once += static_cast<char16_t>(high << 8 | Byte());
        }
        UTF16String text;
        for (int i = isLong ? 140 : 1; i > 0; --i) {
            text += once;
        }
        return text;
    }

private:
    std::span<const std::uint8_t> mBytes;
    int mLongTexts = 1; // more would only make it slow
};

struct Contents {
    UTF16String originalPath;
    UTF16String originalWinPath;
    PackedEntry::Streams streams;
};

Contents Read(Input inInput)
{
    Contents contents;
    contents.originalPath = inInput.Text();
    contents.originalWinPath = inInput.Text();
    TR::MediaAcceleratorDatabaseEntry::Items* items = nullptr;
    while (!inInput.IsAtEnd()) {
        const std::uint8_t step = inInput.Byte();
        if (step % 4 == 0 || !items) {
            items = &contents.streams[inInput.Text(false)];
            continue;
        }
        MediaAcceleratorItem item;
        item.key = inInput.Text();
        item.path = inInput.Text();
        item.winPath = inInput.Text();
        item.canBeCopied = step % 4 == 1;
        UTF16String key = item.key;
        items->try_emplace(std::move(key), std::move(item));
    }
    return contents;
}

void ExpectTheSame(const PackedEntry::Streams& inA, const PackedEntry::Streams& inB)
{
    Require(inA.size() == inB.size());
    for (auto a = inA.begin(), b = inB.begin(); a != inA.end(); ++a, ++b) {
        Require(a->first == b->first && a->second.size() == b->second.size());
        for (auto ours = a->second.begin(), theirs = b->second.begin(); ours != a->second.end();
             ++ours, ++theirs) {
            const MediaAcceleratorItem& item = ours->second;
            const MediaAcceleratorItem& other = theirs->second;
            Require(ours->first == theirs->first && item.key == other.key && item.path == other.path &&
                    item.winPath == other.winPath && item.canBeCopied == other.canBeCopied);
        }
    }
}

void ExpectTheMapsAnswer(const PackedEntry& inPacked, const PackedEntry::Streams& inStreams,
                         const UTF16String& inStreamID, const UTF16String& inKey)
{
    static const UTF16String kUntouched = u"untouched";
    UTF16String path = kUntouched;
    const int result = inPacked.FindItemPath(inStreamID, inKey, path);
    const auto stream = inStreams.find(inStreamID);
    if (stream == inStreams.end() || !stream->second.contains(inKey)) {
        Require(result == -1 && path == kUntouched);
        return;
    }
    const UTF16String& expected = stream->second.at(inKey).path;
    Require(result == (expected.empty() ? -1 : 0) && path == expected);
}

/// Texts that sort right before and behind this one.
std::vector<UTF16String> NeighboursOf(const UTF16String& inText)
{
    std::vector<UTF16String> neighbours = {inText + UTF16String(1, u'\0'), inText + u'\xFFFF'};
    if (!inText.empty()) {
        neighbours.push_back(inText.substr(0, inText.size() - 1));
        UTF16String changed = inText;
        ++changed.back();
        neighbours.push_back(changed);
        changed = inText;
        changed.front() ^= 0x100; // the same in its lower byte
        neighbours.push_back(changed);
    }
    return neighbours;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const Contents contents = Read(Input({inBytes, inSize}));
    const PackedEntryPtr packed =
        PackedEntry::Pack(contents.originalPath, contents.originalWinPath, contents.streams);

    Contents unpacked{u"before", u"before", {{u"before", {}}}};
    packed->Unpack(unpacked.originalPath, unpacked.originalWinPath, unpacked.streams);
    Require(unpacked.originalPath == contents.originalPath);
    Require(unpacked.originalWinPath == contents.originalWinPath);
    ExpectTheSame(unpacked.streams, contents.streams);
    Require(
        PackedEntry::Pack(unpacked.originalPath, unpacked.originalWinPath, unpacked.streams)->BytesUsed() ==
        packed->BytesUsed());

    int looksAround = 6; // enough for an input that is meant to find something, and quick
    UTF16String lastKey;
    for (const auto& [streamID, items] : contents.streams) {
        ExpectTheMapsAnswer(*packed, contents.streams, streamID, lastKey); // a neighbour's, perhaps not ours
        if (looksAround-- > 0) {
            for (const UTF16String& other : NeighboursOf(streamID)) {
                ExpectTheMapsAnswer(*packed, contents.streams, other, lastKey);
            }
        }
        for (const auto& [key, item] : items) {
            ExpectTheMapsAnswer(*packed, contents.streams, streamID, key);
            if (looksAround-- > 0) {
                for (const UTF16String& other : NeighboursOf(key)) {
                    ExpectTheMapsAnswer(*packed, contents.streams, streamID, other);
                }
            }
            lastKey = key;
        }
    }
    return 0;
}
