#pragma once

#include "XMLDocument.h"

#include <vector>

namespace BE {

/// Reads the values of one object of a document, which must outlive it.
class XMLDataReader final : public DataReader {
public:
    XMLDataReader(const XMLDocument& inDocument, const StoredGroup& inGroup);
    /// As if made anew, for another group.
    void Reset(const StoredGroup& inGroup);

    bool ReadValue(const ImmutableString& inKey, UTF16String& ioValue) override;
    bool ReadValue(const ImmutableString& inKey, MF::BinaryData& ioValue) override;
    bool ReadValue(const ImmutableString& inKey, ISerializeableValue& ioValue) override;
    bool ReadObject(const ImmutableString& inKey, InterfaceRef<ISerializeable>& outObject) override;
    bool ReadValueMap(const ImmutableString& inKey,
                      const std::function<bool(const UTF16String&, const UTF16String&)>& inInsert) override;
    std::size_t GetValueCount() const override { return mCount; }

private:
    const StoredValue* Find(std::string_view inKey);
    const StoredValue* FindFarAway(std::string_view inKey, std::uint32_t inFrom);
    const StoredValue* FindInIndex(std::string_view inKey);
    void BeginAgainAt(const StoredValue& inValue);
    void BuildIndex();
    const StoredValue* FindOfType(const ImmutableString& inKey, StoredType inType);

    const XMLDocument& mDocument;
    std::uint32_t mFirst = 0;
    std::uint32_t mEnd = 0;
    std::uint32_t mCount = 0;
    std::uint32_t mPlace = 0;          // where the next key is expected
    std::uint64_t mEffort = 0;         // how many more values may be looked at one by one
    std::vector<std::uint32_t> mIndex; // by key, then by position; empty until it pays
};

} // namespace BE
