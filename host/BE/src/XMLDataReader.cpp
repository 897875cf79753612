#include "XMLDataReader.h"

#include "ScalarText.h"
#include "TextCoding.h"

#include <kiocore/classref/ClassFactory.h>

#include <algorithm>

namespace BE {
namespace {

/// How far ahead of its place a key may be found and still move the place: readers leave out a value or two,
/// but a key from far ahead (a count stored behind what it counts) does not mean that all between was
/// skipped.
constexpr int kNear = 16;

bool Matches(const StoredValue& inValue, std::string_view inKey)
{
    return inValue.keySize == inKey.size() && std::memcmp(inValue.key, inKey.data(), inKey.size()) == 0;
}

[[noreturn]] void ThrowDamaged(const ImmutableString& inKey, StoredType inType, std::string_view inFound,
                               const std::string& inExpected)
{
    static constexpr std::size_t kMost = 80;
    const std::string found(inFound.substr(0, kMost));
    throw exDamagedData(std::string("The ") + NameOf(inType) + " \"" + inKey.AsString() +
                        "\" is stored as \"" + found + (inFound.size() > kMost ? "...\"" : "\"") +
                        "; expected " + inExpected);
}

void DecodeOrThrow(const ImmutableString& inKey, StoredType inType, std::string_view inStored,
                   UTF16String& outText)
{
    if (const char* problem = DecodeText(inStored, outText)) {
        ThrowDamaged(inKey, inType, inStored, std::string("a readable text; this one ") + problem);
    }
}

} // namespace

XMLDataReader::XMLDataReader(const XMLDocument& inDocument, const StoredGroup& inGroup)
    : mDocument(inDocument)
{
    Reset(inGroup);
}

void XMLDataReader::Reset(const StoredGroup& inGroup)
{
    mIndex.clear();
    mCount = inGroup.count;
    mFirst = mPlace = inGroup.first;
    mEnd = inGroup.end;
    mEffort = 64 + 4ull * mCount;
}

const StoredValue* XMLDataReader::Find(std::string_view inKey)
{
    std::uint32_t at = mPlace;
    for (int step = 0; step < kNear && at != mEnd; ++step) {
        const StoredValue& value = mDocument.At(at);
        at = value.next;
        if (Matches(value, inKey)) {
            mPlace = at;
            return &value;
        }
    }
    return mIndex.empty() ? FindFarAway(inKey, at) : FindInIndex(inKey);
}

/// Onwards from inFrom, then from the first value on: the order that FindInIndex keeps too.
const StoredValue* XMLDataReader::FindFarAway(std::string_view inKey, std::uint32_t inFrom)
{
    const std::uint32_t ranges[2][2] = {{inFrom, mEnd}, {mFirst, mPlace}};
    for (const auto& [from, to] : ranges) {
        for (std::uint32_t at = from; at != to;) {
            if (mEffort == 0) {
                BuildIndex();
                return FindInIndex(inKey);
            }
            --mEffort;
            const StoredValue& value = mDocument.At(at);
            if (Matches(value, inKey)) {
                BeginAgainAt(value);
                return &value;
            }
            at = value.next;
        }
    }
    return nullptr;
}

void XMLDataReader::BuildIndex()
{
    mIndex.reserve(mCount);
    for (std::uint32_t at = mFirst; at != mEnd; at = mDocument.At(at).next) {
        mIndex.push_back(at);
    }
    // Sorted rather than hashed: no choice of keys makes this slow.
    std::sort(mIndex.begin(), mIndex.end(), [this](std::uint32_t inA, std::uint32_t inB) {
        const int order = mDocument.At(inA).Key().compare(mDocument.At(inB).Key());
        return order < 0 || (order == 0 && inA < inB);
    });
}

const StoredValue* XMLDataReader::FindInIndex(std::string_view inKey)
{
    const auto firstNotBefore = [&](std::uint32_t inPosition) {
        const auto found = std::lower_bound(mIndex.begin(), mIndex.end(), inKey,
                                            [&](std::uint32_t inIndex, std::string_view key) {
                                                const int order = mDocument.At(inIndex).Key().compare(key);
                                                return order < 0 || (order == 0 && inIndex < inPosition);
                                            });
        return found != mIndex.end() && Matches(mDocument.At(*found), inKey) ? &mDocument.At(*found)
                                                                             : nullptr;
    };
    const StoredValue* found = firstNotBefore(mPlace);
    if (!found && mPlace != mFirst) {
        found = firstNotBefore(mFirst);
    }
    if (found) {
        BeginAgainAt(*found);
    }
    return found;
}

/// A value near the beginning, found from behind it, means that all is read once more.
void XMLDataReader::BeginAgainAt(const StoredValue& inValue)
{
    std::uint32_t at = mFirst;
    for (int step = 0; step < kNear && at != mEnd && at < mPlace; ++step) {
        const StoredValue& value = mDocument.At(at);
        at = value.next;
        if (&value == &inValue) {
            mPlace = at;
            return;
        }
    }
}

const StoredValue* XMLDataReader::FindOfType(const ImmutableString& inKey, StoredType inType)
{
    const StoredValue* value = Find(inKey);
    if (value && value->type != inType) {
        throw exSerializeableTypeMismatch(inKey.AsString(), NameOf(value->type), NameOf(inType));
    }
    return value;
}

bool XMLDataReader::ReadValue(const ImmutableString& inKey, UTF16String& ioValue)
{
    const StoredValue* value = FindOfType(inKey, StoredType::kString);
    if (!value) {
        return false;
    }
    DecodeOrThrow(inKey, StoredType::kString, value->Value(), ioValue);
    return true;
}

bool XMLDataReader::ReadValue(const ImmutableString& inKey, MF::BinaryData& ioValue)
{
    const StoredValue* value = FindOfType(inKey, StoredType::kBinary);
    if (!value) {
        return false;
    }
    if (!ParseHex(value->Value(), ioValue)) {
        ThrowDamaged(inKey, StoredType::kBinary, value->Value(), "pairs of hexadecimal digits");
    }
    return true;
}

bool XMLDataReader::ReadValue(const ImmutableString& inKey, ISerializeableValue& ioValue)
{
    const auto type = static_cast<StoredType>(ioValue.GetType());
    const StoredValue* value = FindOfType(inKey, type);
    if (!value) {
        return false;
    }
    if (!ParseScalar(value->Value(), ioValue)) {
        ThrowDamaged(inKey, type, value->Value(), FormOf(ioValue.GetType()));
    }
    return true;
}

bool XMLDataReader::ReadObject(const ImmutableString& inKey, InterfaceRef<ISerializeable>& outObject)
{
    const StoredValue* value = FindOfType(inKey, StoredType::kObject);
    if (!value) {
        return false;
    }
    const StoredGroup& group = mDocument.GroupOf(*value);
    const InterfaceRef<kiocore::classref::UnknownBase> made =
        kiocore::classref::ClassFactory::CreateClassInstanceRef(group.classID);
    const InterfaceRef<ISerializeable> object(made);
    if (!object) {
        throw exDamagedData("The object \"" + inKey.AsString() + "\" is of class " + group.classID.AsUTF8() +
                            " (" + std::string(group.className) + "), " +
                            (made ? "which cannot be stored" : "of which no object could be made") +
                            "; expected a class that can");
    }
    XMLDataReader reader(mDocument, group);
    object->SerializeIn(group.version, reader);
    outObject = object;
    return true;
}

bool XMLDataReader::ReadValueMap(const ImmutableString& inKey,
                                 const std::function<bool(const UTF16String&, const UTF16String&)>& inInsert)
{
    const StoredValue* value = FindOfType(inKey, StoredType::kMap);
    if (!value) {
        return false;
    }
    const StoredGroup& group = mDocument.GroupOf(*value);
    UTF16String mapKey;
    UTF16String mapValue;
    std::uint32_t at = group.first;
    for (std::uint32_t i = 0; i < group.count; ++i) {
        const StoredValue& entry = mDocument.At(at);
        DecodeOrThrow(inKey, StoredType::kMap, entry.Key(), mapKey);
        DecodeOrThrow(inKey, StoredType::kMap, entry.Value(), mapValue);
        if (!inInsert(mapKey, mapValue)) {
            throw exMapInsertionFailure(inKey.AsString() + "/" + kiocore::utility::ToUTF8(mapKey));
        }
        at = entry.next;
    }
    return true;
}

} // namespace BE
