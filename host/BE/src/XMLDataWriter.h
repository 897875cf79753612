#pragma once

#include "XMLDocument.h"

#include <string>

namespace BE {

using kiocore::UTF16View;

/// Appends values to the text of one document. Keys are not compared with those written before.
class XMLDataWriter final : public DataWriter {
public:
    XMLDataWriter();

    void WriteValue(const ImmutableString& inKey, const UTF16String& inValue) override;
    void WriteValue(const ImmutableString& inKey, const MF::BinaryData& inValue) override;
    void WriteValue(const ImmutableString& inKey, const ISerializeableValue& inValue) override;
    void WriteObject(const ImmutableString& inKey, const InterfaceRef<ISerializeable>& inObject) override;
    void BeginValueMap(const ImmutableString& inKey, const ImmutableString& inItemKey) override;
    void WriteMapValue(const UTF16String& inMapKey, const UTF16String& inValue) override;
    void EndValueMap() override;

    /// What WriteObject does around the object's own values. Pair them.
    void BeginObject(std::string_view inKey, const Guid& inClassID, std::string_view inClassName,
                     std::uint32_t inVersion);
    void EndObject();
    /// A value of any type but object and map, as a reader gave it.
    void WriteStored(StoredType inType, std::string_view inKey, UTF16View inText);

    /// No object or map is open.
    bool IsComplete() const { return mDepth == kDepthInRoot && !mInMap; }
    /// The document with its end.
    std::string GetBytes() const;
    /// Calls inUse with the document's bytes, without copying them.
    template <typename Use>
    auto WithBytes(Use inUse)
    {
        const std::size_t size = mBytes.size();
        AppendEnd(mBytes);
        const ScCut cut{mBytes, size};
        return inUse(std::string_view(mBytes));
    }

private:
    static constexpr int kDepthInRoot = 1;
    struct ScCut {
        std::string& bytes;
        std::size_t size;
        ~ScCut() { bytes.resize(size); }
    };

    static void AppendEnd(std::string& ioBytes);
    void AppendStart(std::string_view inElement, std::string_view inKey);
    void AppendValueStart(std::string_view inElement, std::string_view inKey);

    std::string mBytes;
    int mDepth = kDepthInRoot; // open elements
    bool mInMap = false;
};

} // namespace BE
