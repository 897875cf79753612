#pragma once

#include <MF/BinaryData.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/config/Errors.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

namespace BE {

using kiocore::Guid;
using kiocore::ImmutableString;
using kiocore::InterfaceRef;
using kiocore::UTF16String;

using ValueMap = std::map<UTF16String, UTF16String>;

class DataReader;
class DataWriter;
class IDictionarySink;

/// Stored data has a form that its reader does not take: message "Data Read Failed", kError_DataReadFailed;
/// what() tells the case.
class KIO_EXPORT exDataReadFailed : public kiocore::kio_exception {
public:
    explicit exDataReadFailed(const std::string& inDetail);
    ~exDataReadFailed() override;
};

/// A record was written by a version that this build no longer reads.
class KIO_EXPORT exIncomingObjectVersionTooOld : public exDataReadFailed {
public:
    exIncomingObjectVersionTooOld(const ImmutableString& inClassName, unsigned int inFound,
                                  unsigned int inOldest);
    ~exIncomingObjectVersionTooOld() override;
    const ImmutableString& ClassName() const noexcept { return mClassName; }
    /// The one found.
    unsigned int Version() const noexcept { return mVersion; }

private:
    ImmutableString mClassName;
    unsigned int mVersion;
};

/// A value is stored under the key, but of another type than was asked for.
class KIO_EXPORT exSerializeableTypeMismatch : public kiocore::kio_exception {
public:
    exSerializeableTypeMismatch(const std::string& inKey, const std::string& inFound,
                                const std::string& inExpected);
    ~exSerializeableTypeMismatch() override;
};

/// A map holds two values under one key.
class KIO_EXPORT exMapInsertionFailure : public exDataReadFailed {
public:
    explicit exMapInsertionFailure(const std::string& inKey);
    ~exMapInsertionFailure() override;
};

/// The stored form of a value cannot be read: the text names the key, what was found and what was expected.
class KIO_EXPORT exDamagedData : public kiocore::kio_exception {
public:
    explicit exDamagedData(const std::string& inText);
    ~exDamagedData() override;
};

/// The types of scalar values that a record can hold.
enum class ValueType { kBool, kInt32, kUInt32, kInt64, kUInt64, kDouble, kGuid };
/// As written in records and messages: "Bool", "Int32", ...
KIO_EXPORT const char* NameOf(ValueType inType);

template <typename T>
struct ValueTypeOf;
template <>
struct ValueTypeOf<bool> {
    static constexpr ValueType kType = ValueType::kBool;
};
template <>
struct ValueTypeOf<std::int32_t> {
    static constexpr ValueType kType = ValueType::kInt32;
};
template <>
struct ValueTypeOf<std::uint32_t> {
    static constexpr ValueType kType = ValueType::kUInt32;
};
template <>
struct ValueTypeOf<std::int64_t> {
    static constexpr ValueType kType = ValueType::kInt64;
};
template <>
struct ValueTypeOf<std::uint64_t> {
    static constexpr ValueType kType = ValueType::kUInt64;
};
template <>
struct ValueTypeOf<double> {
    static constexpr ValueType kType = ValueType::kDouble;
};
template <>
struct ValueTypeOf<Guid> {
    static constexpr ValueType kType = ValueType::kGuid;
};

/// A scalar with its type, so that one reader operation serves all of them.
class KIO_EXPORT ISerializeableValue {
public:
    virtual ~ISerializeableValue();
    virtual ValueType GetType() const = 0;
    /// The value's storage: a T as ValueTypeOf<T> says for GetType().
    virtual void* GetStorage() = 0;
    virtual const void* GetStorage() const = 0;
};

template <typename T>
class SerializeableValue final : public ISerializeableValue {
public:
    SerializeableValue() = default;
    explicit SerializeableValue(const T& inValue) : mValue(inValue) {}
    const T& Get() const { return mValue; }
    void Set(const T& inValue) { mValue = inValue; }

    ValueType GetType() const override { return ValueTypeOf<T>::kType; }
    void* GetStorage() override { return &mValue; }
    const void* GetStorage() const override { return &mValue; }

private:
    T mValue{};
};

/// An object that can be stored. Implemented by class-factory objects.
class KIO_EXPORT ISerializeable : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~ISerializeable() override;

    /// Puts what SerializeOut writes, the same keys and values in the same order, for inspection.
    virtual void SerializeToSink(IDictionarySink& inSink) const = 0;
    /// @param inVersion  the version under which the object was written.
    /// Exceptions of the reader pass through; the object is then partly filled.
    virtual void SerializeIn(unsigned int inVersion, DataReader& inReader) = 0;
    virtual void SerializeOut(DataWriter& inWriter) const = 0;
    virtual unsigned int GetVersion() const = 0;
    /// The oldest version of the class that still understands what SerializeOut writes; 0, the default,
    /// when the class does not say. Readers do not check it.
    virtual unsigned int GetMinCompatibleVersion() const;
    virtual Guid GetClassID() const = 0;
    virtual ImmutableString GetClassName() const = 0;
};

/// Reads the values of one object. A value is read over a variable that already holds the default: an
/// absent key leaves it.
///
/// Each read throws exSerializeableTypeMismatch when the key holds another type, and exDamagedData when
/// the stored form cannot be read. Reading keys in the order in which they were written costs one
/// comparison a key; any other order works too.
///
/// Threading: one thread at a time.
class KIO_EXPORT DataReader {
public:
    virtual ~DataReader();
    /// @return whether the key was there.
    virtual bool ReadValue(const ImmutableString& inKey, UTF16String& ioValue) = 0;
    virtual bool ReadValue(const ImmutableString& inKey, MF::BinaryData& ioValue) = 0;
    virtual bool ReadValue(const ImmutableString& inKey, ISerializeableValue& ioValue) = 0;
    /// Makes the object through the class factory and calls its SerializeIn.
    /// @return false, outObject untouched, when the key is absent.
    virtual bool ReadObject(const ImmutableString& inKey, InterfaceRef<ISerializeable>& outObject) = 0;
    /// Gives each pair of a map of texts to inInsert, in stored order. BE::ReadValueMap
    /// fills a map.
    /// @param inInsert  false = the key is there already: throws exMapInsertionFailure.
    /// @return whether the key was there.
    virtual bool ReadValueMap(
        const ImmutableString& inKey,
        const std::function<bool(const UTF16String& inMapKey, const UTF16String& inValue)>& inInsert) = 0;
    /// How many values (objects and maps count as one) this object holds: no count in it can be larger.
    virtual std::size_t GetValueCount() const = 0;
};

/// Writes the values of one object, in the order of the calls. Keys must differ within an object; that is not
/// checked, and a key that was written more than once is read in stored order, each value in its turn.
///
/// Threading: one thread at a time.
class KIO_EXPORT DataWriter {
public:
    virtual ~DataWriter();
    virtual void WriteValue(const ImmutableString& inKey, const UTF16String& inValue) = 0;
    virtual void WriteValue(const ImmutableString& inKey, const MF::BinaryData& inValue) = 0;
    virtual void WriteValue(const ImmutableString& inKey, const ISerializeableValue& inValue) = 0;
    /// Writes class ID, class name, version, then calls the object's SerializeOut.
    virtual void WriteObject(const ImmutableString& inKey, const InterfaceRef<ISerializeable>& inObject) = 0;
    /// @param inItemKey  what one pair of the map is called, for other programs; may be empty.
    virtual void BeginValueMap(const ImmutableString& inKey, const ImmutableString& inItemKey) = 0;
    void BeginValueMap(const ImmutableString& inKey) { BeginValueMap(inKey, ImmutableString::Empty()); }
    virtual void WriteMapValue(const UTF16String& inMapKey, const UTF16String& inValue) = 0;
    virtual void EndValueMap() = 0;
};

/// Receives an object's keys and values, for inspection.
class KIO_EXPORT IDictionarySink {
public:
    virtual ~IDictionarySink();
    virtual void Put(const ImmutableString& inKey, const UTF16String& inValue) = 0;
    virtual void Put(const ImmutableString& inKey, const MF::BinaryData& inValue) = 0;
    virtual void Put(const ImmutableString& inKey, const ISerializeableValue& inValue) = 0;
    /// @param inItemKey  what one pair of the map is called.
    virtual void PutMap(const ImmutableString& inKey, const ImmutableString& inItemKey,
                        const ValueMap& inMap) = 0;
};

/// Reads a map of texts.
/// @param ioMap  replaced when the key is there; untouched when it is absent or reading it throws.
/// @return whether the key was there.
/// @throws exMapInsertionFailure when one key stands in the map twice, and what the reader throws.
KIO_EXPORT bool ReadValueMap(DataReader& inReader, const ImmutableString& inKey, ValueMap& ioMap);
/// Writes a whole map of texts.
KIO_EXPORT void WriteValueMap(DataWriter& inWriter, const ImmutableString& inKey,
                              const ImmutableString& inItemKey, const ValueMap& inMap);

/// "Stream.ID" and 3 make "Stream.ID.3".
KIO_EXPORT ImmutableString CreateKeyWithIndex(const ImmutableString& inKey, unsigned int inIndex);

} // namespace BE
