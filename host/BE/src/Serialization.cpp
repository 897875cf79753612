#include <BE/Serialization.h>

#include <charconv>
#include <cstring>

namespace BE {

exDataReadFailed::exDataReadFailed(const std::string& inDetail)
    : kio_exception("Data Read Failed", inDetail, kiocore::kError_DataReadFailed)
{}
exDataReadFailed::~exDataReadFailed() = default;

exIncomingObjectVersionTooOld::exIncomingObjectVersionTooOld(const ImmutableString& inClassName,
                                                             unsigned int inFound, unsigned int inOldest)
    : exDataReadFailed("An object of class " + inClassName.AsString() + " has version " +
                       std::to_string(inFound) + "; the oldest that this build reads is " +
                       std::to_string(inOldest)),
      mClassName(inClassName), mVersion(inFound)
{}
exIncomingObjectVersionTooOld::~exIncomingObjectVersionTooOld() = default;

exSerializeableTypeMismatch::exSerializeableTypeMismatch(const std::string& inKey, const std::string& inFound,
                                                         const std::string& inExpected)
    : kio_exception("The value \"" + inKey + "\" is stored as " + inFound + "; expected " + inExpected,
                    kiocore::kError_TypeMismatch)
{}
exSerializeableTypeMismatch::~exSerializeableTypeMismatch() = default;

exMapInsertionFailure::exMapInsertionFailure(const std::string& inKey)
    : exDataReadFailed("The map key \"" + inKey + "\" occurs more than once; expected each key once")
{}
exMapInsertionFailure::~exMapInsertionFailure() = default;

exDamagedData::exDamagedData(const std::string& inText) : kio_exception(inText, kiocore::kError_DamagedData)
{}
exDamagedData::~exDamagedData() = default;

const char* NameOf(ValueType inType)
{
    switch (inType) {
    case ValueType::kBool:
        return "Bool";
    case ValueType::kInt32:
        return "Int32";
    case ValueType::kUInt32:
        return "UInt32";
    case ValueType::kInt64:
        return "Int64";
    case ValueType::kUInt64:
        return "UInt64";
    case ValueType::kDouble:
        return "Double";
    case ValueType::kGuid:
        return "Guid";
    }
    return "Unknown";
}

ISerializeableValue::~ISerializeableValue() = default;
DataReader::~DataReader() = default;
DataWriter::~DataWriter() = default;
IDictionarySink::~IDictionarySink() = default;

ISerializeable::~ISerializeable() = default;
unsigned int ISerializeable::GetMinCompatibleVersion() const
{
    return 0;
}
const CFUUIDBytes& ISerializeable::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x5e, 0x7c, 0x3f, 0x9a, 0x41, 0xd0, 0x4b, 0x6e, 0x8f, 0x12, 0x6b, 0xc9, 0x05, 0xe2, 0xa7, 0x34}};
    return kID;
}

bool ReadValueMap(DataReader& inReader, const ImmutableString& inKey, ValueMap& ioMap)
{
    ValueMap read;
    const bool found =
        inReader.ReadValueMap(inKey, [&](const UTF16String& inMapKey, const UTF16String& inValue) {
            return read.emplace(inMapKey, inValue).second;
        });
    if (found) {
        ioMap.swap(read);
    }
    return found;
}

void WriteValueMap(DataWriter& inWriter, const ImmutableString& inKey, const ImmutableString& inItemKey,
                   const ValueMap& inMap)
{
    inWriter.BeginValueMap(inKey, inItemKey);
    for (const auto& [key, value] : inMap) {
        inWriter.WriteMapValue(key, value);
    }
    inWriter.EndValueMap();
}

ImmutableString CreateKeyWithIndex(const ImmutableString& inKey, unsigned int inIndex)
{
    static constexpr std::size_t kMaxDigits = 10;
    const std::string_view base = inKey;
    char small[64];
    if (base.size() + 1 + kMaxDigits <= sizeof(small)) {
        std::memcpy(small, base.data(), base.size());
        small[base.size()] = '.';
        const char* end = std::to_chars(small + base.size() + 1, small + sizeof(small), inIndex).ptr;
        return ImmutableString(std::string_view(small, static_cast<std::size_t>(end - small)));
    }
    return ImmutableString(std::string(base) + "." + std::to_string(inIndex));
}

} // namespace BE
