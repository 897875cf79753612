#include "WrittenForm.h"

#include "TextCoding.h"

#include <BE/XMLFile.h>

#include <cstring>

namespace BE {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

class Scanner {
public:
    Scanner(std::string_view inBytes, DocumentTable& outTable)
        : mAt(inBytes.data()), mEnd(inBytes.data() + inBytes.size()), mTable(outTable)
    {
        if (inBytes.starts_with(kDeclaration)) {
            mAt += kDeclaration.size();
        }
    }

    bool Scan()
    {
        static_assert(kDialectVersion == 1);
        if (!Take("<BackEndDocument") || !Take(" Version=\"1\">")) {
            return false;
        }
        mTable.groups.emplace_back();
        for (;;) {
            SkipSpace();
            if (Take("</")) {
                if (mDepth == 1) {
                    return TakeEnd();
                }
                if (!Close()) {
                    return false;
                }
            } else if (!Take("<") || mDepth >= kMaxXMLNesting || !TakeElement()) {
                return false;
            }
        }
    }

private:
    /// Moves behind the literal when it stands here: the zeros behind the last byte match none.
    template <std::size_t N>
    bool Take(const char (&inLiteral)[N])
    {
        static_assert(N - 1 <= kSlackBytes);
        if (std::memcmp(mAt, inLiteral, N - 1) != 0) {
            return false;
        }
        mAt += N - 1;
        return true;
    }

    void SkipSpace()
    {
        while (*mAt == ' ' || *mAt == '\n') {
            ++mAt;
        }
    }

    /// Moves onto the quote behind the text.
    bool TakeText(std::string_view& outText)
    {
        const auto* const quote =
            static_cast<const char*>(std::memchr(mAt, '"', static_cast<std::size_t>(mEnd - mAt)));
        if (!quote) {
            return false;
        }
        outText = {mAt, static_cast<std::size_t>(quote - mAt)};
        mAt = quote;
        return true;
    }

    bool TakeStart(StoredType& outType)
    {
        const auto is = [&](const auto& inLiteral, StoredType inType) {
            outType = inType;
            return Take(inLiteral);
        };
        switch (*mAt) {
        case 'S':
            return is("String Key=\"", StoredType::kString);
        case 'B':
            return is("Binary Key=\"", StoredType::kBinary) || is("Bool Key=\"", StoredType::kBool);
        case 'U':
            return is("UInt32 Key=\"", StoredType::kUInt32) || is("UInt64 Key=\"", StoredType::kUInt64);
        case 'I':
            return is("Int32 Key=\"", StoredType::kInt32) || is("Int64 Key=\"", StoredType::kInt64);
        case 'G':
            return is("Guid Key=\"", StoredType::kGuid);
        case 'D':
            return is("Double Key=\"", StoredType::kDouble);
        case 'E':
            return is("Entry Key=\"", StoredType::kEntry);
        case 'M':
            return is("Map Key=\"", StoredType::kMap);
        case 'O':
            return is("Object Key=\"", StoredType::kObject);
        default:
            return false;
        }
    }

    bool TakeElement()
    {
        StoredType type;
        std::string_view key;
        if (!TakeStart(type) || mInMap != (type == StoredType::kEntry) || !TakeText(key) ||
            (!mInMap && !IsPlain(key))) {
            return false;
        }
        const auto index = static_cast<std::uint32_t>(mTable.values.size());
        StoredValue value{key.data(), "", static_cast<std::uint32_t>(key.size()), 0, index + 1, 0, type};
        StoredGroup& parent = mTable.groups[mGroup];
        if (parent.count++ == 0) {
            parent.first = index;
        }
        if (type == StoredType::kObject || type == StoredType::kMap) {
            return Open(value);
        }
        std::string_view text;
        if (!Take("\" Value=\"") || !TakeText(text) || !Take("\"/>")) {
            return false;
        }
        value.value = text.data();
        value.valueSize = static_cast<std::uint32_t>(text.size());
        mTable.values.push_back(value);
        return true;
    }

    bool Open(StoredValue& ioValue)
    {
        StoredGroup group;
        if (ioValue.type == StoredType::kObject) {
            std::string_view classID;
            std::string_view version;
            if (!Take("\" ClassID=\"") || !TakeText(classID) || !Take("\" ClassName=\"") ||
                !TakeText(group.className) || !Take("\" Version=\"") || !TakeText(version) ||
                !ParseVersion(version, group.version)) {
                return false;
            }
            const std::optional<Guid> guid = Guid::FromText(classID);
            if (!guid) {
                return false;
            }
            group.classID = *guid;
        }
        if (!Take("\">")) {
            return false;
        }
        mOpen[mDepth++] = static_cast<std::uint32_t>(mTable.values.size());
        mInMap = ioValue.type == StoredType::kMap;
        mGroup = ioValue.group = static_cast<std::uint32_t>(mTable.groups.size());
        mTable.values.push_back(ioValue);
        mTable.groups.push_back(group);
        return true;
    }

    /// Behind the "</" of an object or a map.
    bool Close()
    {
        StoredValue& value = mTable.values[mOpen[--mDepth]];
        if (mInMap ? !Take("Map>") : !Take("Object>")) {
            return false;
        }
        value.next = static_cast<std::uint32_t>(mTable.values.size());
        if (StoredGroup& group = mTable.groups[value.group]; group.count != 0) {
            group.end = value.next;
        }
        mInMap = false; // maps hold no maps
        mGroup = mDepth == 1 ? 0 : mTable.values[mOpen[mDepth - 1]].group;
        return true;
    }

    bool TakeEnd()
    {
        if (!Take("BackEndDocument>")) {
            return false;
        }
        SkipSpace();
        mTable.groups.front().end = static_cast<std::uint32_t>(mTable.values.size());
        return mAt == mEnd;
    }

    const char* mAt;
    const char* const mEnd;
    DocumentTable& mTable;
    std::uint32_t mOpen[kMaxXMLNesting] = {}; // the value whose children are read, by depth
    int mDepth = 1;                           // elements around the current one
    std::uint32_t mGroup = 0;                 // of the innermost of them
    bool mInMap = false;
};

} // namespace

bool ReadWrittenForm(std::string_view inBytes, DocumentTable& outTable)
{
    return Scanner(inBytes, outTable).Scan();
}

} // namespace BE
