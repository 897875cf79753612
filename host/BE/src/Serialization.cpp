#include <BE/Serialization.h>

#include <charconv>
#include <cstring>

namespace BE {

exIncomingObjectVersionTooOld::exIncomingObjectVersionTooOld(const std::string& inClassName, unsigned inFound,
                                                             unsigned inOldest)
    : kio_exception("An object of class " + inClassName + " has version " + std::to_string(inFound) +
                        "; the oldest that this build reads is " + std::to_string(inOldest),
                    kiocore::kError_ObjectVersionTooOld)
{}
exIncomingObjectVersionTooOld::~exIncomingObjectVersionTooOld() = default;

exSerializeableTypeMismatch::exSerializeableTypeMismatch(const std::string& inKey, const std::string& inFound,
                                                         const std::string& inExpected)
    : kio_exception("The value \"" + inKey + "\" is stored as " + inFound + "; expected " + inExpected,
                    kiocore::kError_TypeMismatch)
{}
exSerializeableTypeMismatch::~exSerializeableTypeMismatch() = default;

exMapInsertionFailure::exMapInsertionFailure(const std::string& inKey)
    : kio_exception("The map key \"" + inKey + "\" occurs more than once; expected each key once",
                    kiocore::kError_MapInsertion)
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
const CFUUIDBytes& ISerializeable::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0x5e, 0x7c, 0x3f, 0x9a, 0x41, 0xd0, 0x4b, 0x6e, 0x8f, 0x12, 0x6b, 0xc9, 0x05, 0xe2, 0xa7, 0x34}};
    return kID;
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
