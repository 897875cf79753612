#include "XMLDocument.h"

#include "TextCoding.h"
#include "WrittenForm.h"

#include <BE/XMLFile.h>

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

namespace BE {
namespace {

/// What a thread keeps for its next reader, at most.
constexpr std::size_t kMaxSpareBytes = 1u << 20;
/// An element takes the parser many times the four bytes that it can be written in.
constexpr std::ptrdiff_t kMaxTags = 2 << 20;
constexpr std::ptrdiff_t kShortestTag = 3; // "<a>"

constexpr const char* kTypeNames[] = {"Bool", "Int32",  "UInt32", "Int64",  "UInt64", "Double",
                                      "Guid", "String", "Binary", "Object", "Map",    "Entry"};

std::string Quoted(const char* inText)
{
    static constexpr std::size_t kMost = 80;
    const std::string text(inText, strnlen(inText, kMost + 1));
    return "\"" + (text.size() > kMost ? text.substr(0, kMost) + "..." : text) + "\"";
}

/// Compares a name in our buffer with a literal in a load or two: the buffer goes on for kSlackBytes.
template <std::size_t N>
bool Is(const char* inName, const char (&inLiteral)[N])
{
    static_assert(N <= kSlackBytes);
    return std::memcmp(inName, inLiteral, N) == 0;
}

/// @return false when the dialect has no such element.
bool StoredTypeFromName(const char* inName, StoredType& outType)
{
    const auto is = [&](const auto& inLiteral, StoredType inType) {
        outType = inType;
        return Is(inName, inLiteral);
    };
    switch (inName[0]) {
    case 'S':
        return is("String", StoredType::kString);
    case 'B':
        return is("Binary", StoredType::kBinary) || is("Bool", StoredType::kBool);
    case 'U':
        return is("UInt32", StoredType::kUInt32) || is("UInt64", StoredType::kUInt64);
    case 'I':
        return is("Int32", StoredType::kInt32) || is("Int64", StoredType::kInt64);
    case 'G':
        return is("Guid", StoredType::kGuid);
    case 'D':
        return is("Double", StoredType::kDouble);
    case 'E':
        return is("Entry", StoredType::kEntry);
    case 'M':
        return is("Map", StoredType::kMap);
    case 'O':
        return is("Object", StoredType::kObject);
    default:
        return false;
    }
}

/// The attributes that an element may have; absent ones are null.
struct Attributes {
    const char* key = nullptr;
    const char* value = nullptr;
    const char* classID = nullptr;
    const char* className = nullptr;
    const char* version = nullptr;

    /// @return null, or the name of an attribute that occurs twice. Attributes of other names are ignored.
    const char* Read(const pugi::xml_node& inNode)
    {
        pugi::xml_attribute attribute = inNode.first_attribute();
        // Behind the last one the name is empty. Each question to the parser is a call, so ask few.
        for (const char* name; *(name = attribute.name()); attribute = attribute.next_attribute()) {
            const char** place = PlaceOf(name);
            if (place && *place) {
                return name;
            }
            if (place) {
                *place = attribute.value();
            }
        }
        return nullptr;
    }

private:
    const char** PlaceOf(const char* inName)
    {
        switch (inName[0]) {
        case 'K':
            return Is(inName, "Key") ? &key : nullptr;
        case 'V':
            return Is(inName, "Value") ? &value : Is(inName, "Version") ? &version : nullptr;
        case 'C':
            return Is(inName, "ClassID") ? &classID : Is(inName, "ClassName") ? &className : nullptr;
        default:
            return nullptr;
        }
    }
};

/// A reason not to take the document, on its way out of the walk over its elements.
struct NotTaken {
    std::string reason;
};

} // namespace

bool ParseVersion(std::string_view inText, std::uint32_t& outVersion)
{
    const char* const end = inText.data() + inText.size();
    const auto parsed = std::from_chars(inText.data(), end, outVersion);
    return parsed.ec == std::errc() && parsed.ptr == end;
}

const char* NameOf(StoredType inType)
{
    return kTypeNames[static_cast<std::size_t>(inType)];
}

struct XMLDocument::Spare {
    Storage storage;
    // Of a type without a destructor, so that it can be asked when the rest is gone already.
    static thread_local bool sIsGone;
    ~Spare() { sIsGone = true; }
};
thread_local bool XMLDocument::Spare::sIsGone = false;
thread_local XMLDocument::Spare XMLDocument::sSpare;

/// Makes the table of elements, checking the form of each.
class XMLDocument::Builder {
public:
    explicit Builder(DocumentTable& outTable) : mTable(outTable) {}

    void AddDocument(const pugi::xml_document& inDocument)
    {
        pugi::xml_node root = inDocument.first_child();
        if (root.type() == pugi::node_declaration) {
            CheckDeclaration(root);
            root = root.next_sibling();
        }
        if (root.type() == pugi::node_doctype) {
            throw NotTaken{"has a document type declaration; none is accepted"};
        }
        if (!root) {
            throw NotTaken{"is no well-formed XML: it has no element"};
        }
        if (root.type() != pugi::node_element) {
            throw NotTaken{"has text before its first element"};
        }
        if (root.next_sibling()) {
            throw NotTaken{"goes on after its first element"};
        }
        CheckRoot(root);
        mTable.groups.emplace_back();
        AddChildren(root);
    }

private:
    static void CheckDeclaration(const pugi::xml_node& inDeclaration)
    {
        const char* version = inDeclaration.attribute("version").value();
        if (std::strcmp(version, "1.0") != 0) {
            throw NotTaken{"is XML of version " + Quoted(version) + "; expected \"1.0\""};
        }
        const pugi::xml_attribute encoding = inDeclaration.attribute("encoding");
        if (encoding && strcasecmp(encoding.value(), "UTF-8") != 0) {
            throw NotTaken{"declares the encoding " + Quoted(encoding.value()) + "; expected \"UTF-8\""};
        }
    }

    static void CheckRoot(const pugi::xml_node& inRoot)
    {
        if (std::strcmp(inRoot.name(), kRootName) != 0) {
            throw NotTaken{"has the root element " + Quoted(inRoot.name()) + "; expected " +
                           Quoted(kRootName)};
        }
        Attributes attributes;
        const char* twice = attributes.Read(inRoot);
        std::uint32_t version = 0;
        if (twice || !attributes.version || !ParseVersion(attributes.version, version) || version == 0) {
            throw NotTaken{"has no readable version of its dialect; expected Version=\"" +
                           std::to_string(kDialectVersion) + "\" in its root element"};
        }
        if (version > kDialectVersion) {
            throw NotTaken{"has version " + std::to_string(version) +
                           " of the dialect; this build reads up to " + std::to_string(kDialectVersion)};
        }
    }

    /// Walks without recursion: the depth is the file's to choose, the stack is not.
    void AddChildren(const pugi::xml_node& inRoot)
    {
        std::uint32_t open[kMaxXMLNesting] = {}; // the value whose children are walked, by depth
        int depth = 1;                           // elements around the current one
        pugi::xml_node parent = inRoot;
        pugi::xml_node node = inRoot.first_child();
        for (;;) {
            if (!node) {
                const auto end = static_cast<std::uint32_t>(mTable.values.size());
                if (depth == 1) {
                    mTable.groups.front().end = end;
                    return;
                }
                StoredValue& closed = mTable.values[open[--depth]];
                closed.next = end;
                mTable.groups[closed.group].end = end;
                node = parent.next_sibling();
                parent = parent.parent();
                continue;
            }
            if (depth >= kMaxXMLNesting) {
                throw NotTaken{"nests deeper than " + std::to_string(kMaxXMLNesting) + " elements"};
            }
            const auto index = static_cast<std::uint32_t>(mTable.values.size());
            AddElement(node, depth == 1 ? nullptr : &mTable.values[open[depth - 1]]);
            const pugi::xml_node child = node.first_child();
            if (!child) {
                node = node.next_sibling();
                continue;
            }
            if (mTable.values[index].type != StoredType::kObject &&
                mTable.values[index].type != StoredType::kMap) {
                throw NotTaken{"has contents in the element " + Quoted(node.name()) +
                               " that only has attributes"};
            }
            open[depth++] = index;
            parent = node;
            node = child;
        }
    }

    void AddElement(const pugi::xml_node& inNode, const StoredValue* inParent)
    {
        StoredType type;
        if (!StoredTypeFromName(inNode.name(), type)) {
            if (inNode.type() != pugi::node_element) {
                throw NotTaken{"has text between its elements: " + Quoted(inNode.value())};
            }
            throw NotTaken{"has an unknown element " + Quoted(inNode.name())};
        }
        const bool inMap = inParent && inParent->type == StoredType::kMap;
        if (inMap != (type == StoredType::kEntry)) {
            throw NotTaken{"has the element " + Quoted(inNode.name()) + (inMap ? " in" : " outside of") +
                           " a map"};
        }
        Attributes attributes;
        if (const char* twice = attributes.Read(inNode)) {
            throw NotTaken{"has an element with two attributes " + Quoted(twice)};
        }
        if (!attributes.key) {
            throw NotTaken{"has an element " + Quoted(inNode.name()) + " without a key"};
        }
        StoredGroup& parentGroup = mTable.groups[inParent ? inParent->group : 0];
        const auto index = static_cast<std::uint32_t>(mTable.values.size());
        if (parentGroup.count++ == 0) {
            parentGroup.first = index;
        }
        StoredValue value{attributes.key, "", 0, 0, index + 1, 0, type};
        SetKey(value);
        if (type == StoredType::kObject || type == StoredType::kMap) {
            value.group = static_cast<std::uint32_t>(mTable.groups.size());
            AddGroup(value, attributes);
        } else if (!attributes.value) {
            throw NotTaken{"has the element " + Quoted(inNode.name()) + " " + Quoted(attributes.key) +
                           " without a value"};
        } else {
            value.value = attributes.value;
            value.valueSize = static_cast<std::uint32_t>(std::strlen(attributes.value));
        }
        mTable.values.push_back(value);
    }

    void AddGroup(const StoredValue& inValue, const Attributes& inAttributes)
    {
        StoredGroup group;
        if (inValue.type == StoredType::kObject) {
            const std::optional<Guid> classID =
                Guid::FromText(inAttributes.classID ? inAttributes.classID : "");
            if (!classID) {
                throw NotTaken{"has an object " + Quoted(inAttributes.key) +
                               " without a readable class identifier"};
            }
            if (!inAttributes.version || !ParseVersion(inAttributes.version, group.version)) {
                throw NotTaken{"has an object " + Quoted(inAttributes.key) + " without a readable version"};
            }
            group.classID = *classID;
            group.className = inAttributes.className ? inAttributes.className : "";
        }
        mTable.groups.push_back(group);
    }

    void SetKey(StoredValue& ioValue)
    {
        const Measured measured = Measure(ioValue.key);
        ioValue.keySize = static_cast<std::uint32_t>(measured.size);
        if (measured.plain || ioValue.type == StoredType::kEntry) {
            return;
        }
        if (const char* problem = DecodeText(ioValue.Key(), mKeyUTF16)) {
            throw NotTaken{"has a key " + Quoted(ioValue.key) + " that " + problem};
        }
        kiocore::utility::ToUTF8(mKeyUTF16, mKeyUTF8);
        // Its stored form lies in our buffer and is never shorter.
        std::memcpy(const_cast<char*>(ioValue.key), mKeyUTF8.data(), mKeyUTF8.size());
        ioValue.keySize = static_cast<std::uint32_t>(mKeyUTF8.size());
    }

    DocumentTable& mTable;
    UTF16String mKeyUTF16;
    std::string mKeyUTF8;
};

XMLDocument::XMLDocument()
{
    if (!Spare::sIsGone) {
        mStorage = std::exchange(sSpare.storage, Storage());
    }
    Clear();
}

XMLDocument::~XMLDocument()
{
    const bool moderate = mStorage.buffer.capacity <= kMaxSpareBytes &&
                          mStorage.table.values.capacity() * sizeof(StoredValue) <= kMaxSpareBytes &&
                          mStorage.table.groups.capacity() * sizeof(StoredGroup) <= kMaxSpareBytes;
    if (moderate && !Spare::sIsGone) {
        sSpare.storage = std::move(mStorage);
    }
}

void XMLDocument::Clear()
{
    if (mStorage.buffer.capacity > kMaxSpareBytes) {
        mStorage = Storage(); // a reader that met one large file does not stay large
    }
    mStorage.table.values.clear();
    mStorage.table.groups.clear();
    mStorage.table.groups.emplace_back();
    mError.clear();
    mModificationTime = kiocore::filesupport::kNoFileTime;
    mFileIsMissing = false;
}

bool XMLDocument::Fail(std::string inError)
{
    const bool missing = mFileIsMissing;
    Clear();
    mFileIsMissing = missing;
    mError = std::move(inError);
    return false;
}

bool XMLDocument::OpenFile(const UTF16String& inPath)
{
    Clear();
    const FileBytes file = ReadFileBytes(inPath, kMaxXMLFileBytes, mStorage.buffer);
    const auto named = [&](const std::string& inRest) {
        return kiocore::utility::ToUTF8(inPath) + " " + inRest;
    };
    if (file.errorNumber == EFBIG) {
        return Fail(named("has " + std::to_string(file.size) + " bytes; at most " +
                          std::to_string(kMaxXMLFileBytes) + " are read"));
    }
    if (file.errorNumber != 0) {
        mFileIsMissing = file.errorNumber == ENOENT;
        return Fail(
            kiocore::file_exception(file.failedStep, kiocore::utility::ToUTF8(inPath), file.errorNumber)
                .what());
    }
    if (!Read(file.size)) {
        return Fail(named(mError));
    }
    mModificationTime = file.modificationTime;
    return true;
}

bool XMLDocument::OpenBytes(std::string_view inBytes)
{
    Clear();
    if (inBytes.size() > kMaxXMLFileBytes) {
        return Fail("The document has " + std::to_string(inBytes.size()) + " bytes; at most " +
                    std::to_string(kMaxXMLFileBytes) + " are read");
    }
    char* const buffer = mStorage.buffer.Reserve(inBytes.size());
    inBytes.copy(buffer, inBytes.size()); // memcpy takes no null, not even for nothing
    return Read(inBytes.size()) || Fail("The document " + mError);
}

bool XMLDocument::Read(std::size_t inSize)
{
    std::string_view bytes(mStorage.buffer.bytes.get(), inSize);
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    mError = CheckBytes(bytes);
    if (!mError.empty()) {
        return false;
    }
    if (static_cast<std::ptrdiff_t>(bytes.size()) / kShortestTag > kMaxTags &&
        std::count(bytes.begin(), bytes.end(), '<') > kMaxTags) {
        mError = "has more than " + std::to_string(kMaxTags) + " tags";
        return false;
    }
    mStorage.table.groups.clear();
    if (ReadWrittenForm(bytes, mStorage.table)) {
        return true;
    }
    mStorage.table.values.clear();
    mStorage.table.groups.clear();
    return Parse(bytes);
}

/// By way of the parser, which knows all of XML.
bool XMLDocument::Parse(std::string_view inBytes)
{
    // The parser would take any last byte for the end.
    const std::size_t last = inBytes.find_last_not_of(" \t\r\n");
    if (last != std::string_view::npos && inBytes[last] != '>') {
        mError = "is no well-formed XML: it does not end with a tag";
        return false;
    }
    // Escapes stay: we decode a value when it is read. The rest is asked for so that it can be refused.
    static constexpr unsigned kFlags = pugi::parse_minimal | pugi::parse_declaration | pugi::parse_doctype |
                                       pugi::parse_cdata | pugi::parse_fragment;
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer_inplace(
        const_cast<char*>(inBytes.data()), inBytes.size(), kFlags, pugi::encoding_utf8);
    if (!result) {
        mError = std::string("is no well-formed XML: ") + result.description() + " at offset " +
                 std::to_string(result.offset);
        return false;
    }
    try {
        Builder(mStorage.table).AddDocument(document);
    } catch (const NotTaken& notTaken) {
        mError = notTaken.reason;
        return false;
    }
    return true;
}

const StoredValue* XMLDocument::Find(const StoredGroup& inGroup, std::string_view inKey) const
{
    std::uint32_t at = inGroup.first;
    for (std::uint32_t i = 0; i < inGroup.count; ++i, at = At(at).next) {
        if (At(at).Key() == inKey) {
            return &At(at);
        }
    }
    return nullptr;
}

} // namespace BE
