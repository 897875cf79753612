#pragma once

#include "platform/FileBytes.h"

#include <BE/Serialization.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace BE {

/// The newest version of the dialect that is read, and the one that is written.
inline constexpr std::uint32_t kDialectVersion = 1;
inline constexpr const char* kRootName = "BackEndDocument";

/// The elements of the dialect. The scalar types come first, in ValueType's order.
enum class StoredType : std::uint8_t {
    kBool,
    kInt32,
    kUInt32,
    kInt64,
    kUInt64,
    kDouble,
    kGuid,
    kString,
    kBinary,
    kObject,
    kMap,
    kEntry, ///< of a map
};
const char* NameOf(StoredType inType);

/// One element. Texts lie in the document. Keys are decoded (but for an entry's); values stand as in the
/// file.
struct StoredValue {
    const char* key;
    const char* value; ///< not terminated; empty for objects and maps
    std::uint32_t keySize;
    std::uint32_t valueSize;
    std::uint32_t next;  ///< index of the next element on this level
    std::uint32_t group; ///< of an object or a map: index of its StoredGroup
    StoredType type;

    std::string_view Key() const { return {key, keySize}; }
    std::string_view Value() const { return {value, valueSize}; }
};

/// What an object or a map holds.
struct StoredGroup {
    std::uint32_t first = 0; ///< index of its first element
    std::uint32_t end = 0;   ///< index behind its last one and all that that holds
    std::uint32_t count = 0; ///< of its own elements, without what those hold
    std::uint32_t version = 0;
    Guid classID;
    std::string_view className;
};

/// The elements of a document in stored order; the texts in it lie in the document's bytes.
struct DocumentTable {
    std::vector<StoredValue> values;
    std::vector<StoredGroup> groups; ///< the first is the root
};

/// @return false when the text is no number.
bool ParseVersion(std::string_view inText, std::uint32_t& outVersion);

/// A document in memory: its bytes, and one flat table of its elements in stored order.
///
/// Threading: one thread at a time.
class XMLDocument {
public:
    XMLDocument();
    ~XMLDocument();
    XMLDocument(const XMLDocument&) = delete;
    XMLDocument& operator=(const XMLDocument&) = delete;

    /// @return whether it could be read; Error() tells why not, and the document is empty then.
    bool OpenFile(const UTF16String& inPath);
    bool OpenBytes(std::string_view inBytes);

    const std::string& Error() const { return mError; }
    /// True when the last OpenFile failed because there is no such file.
    bool FileIsMissing() const { return mFileIsMissing; }
    kiocore::filesupport::FileTime ModificationTime() const { return mModificationTime; }

    const StoredValue& At(std::uint32_t inIndex) const { return mStorage.table.values[inIndex]; }
    const StoredGroup& Root() const { return mStorage.table.groups.front(); }
    const StoredGroup& GroupOf(const StoredValue& inValue) const
    {
        return mStorage.table.groups[inValue.group];
    }
    /// The first element of the group with the key, or null.
    const StoredValue* Find(const StoredGroup& inGroup, std::string_view inKey) const;

private:
    class Builder;
    /// All memory of a document. A thread keeps one of moderate size for the next reader.
    struct Storage {
        ByteBuffer buffer;
        DocumentTable table;
    };
    struct Spare;
    static thread_local Spare sSpare;

    void Clear();
    bool Fail(std::string inError);
    bool Read(std::size_t inSize);
    bool Parse(std::string_view inBytes);

    Storage mStorage;
    std::string mError;
    kiocore::filesupport::FileTime mModificationTime = kiocore::filesupport::kNoFileTime;
    bool mFileIsMissing = false;
};

} // namespace BE
