#include "XMLDataWriter.h"

#include "ScalarText.h"
#include "TextCoding.h"

#include <BE/XMLFile.h>

#include <charconv>

namespace BE {
namespace {

constexpr std::string_view kValueEnd = "\"/>\n";
/// Of a usual record; longer ones grow.
constexpr std::size_t kUsualBytes = 4096;

void AppendNumber(std::string& ioBytes, std::uint32_t inNumber)
{
    char digits[10];
    ioBytes.append(digits, std::to_chars(digits, digits + sizeof(digits), inNumber).ptr);
}

} // namespace

XMLDataWriter::XMLDataWriter()
{
    mBytes.reserve(kUsualBytes);
    mBytes.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<").append(kRootName).append(" Version=\"");
    AppendNumber(mBytes, kDialectVersion);
    mBytes += "\">\n";
}

void XMLDataWriter::AppendEnd(std::string& ioBytes)
{
    ioBytes.append("</").append(kRootName).append(">\n");
}

void XMLDataWriter::AppendStart(std::string_view inElement, std::string_view inKey)
{
    if (mInMap != (inElement == NameOf(StoredType::kEntry))) {
        throw kiocore::kio_exception("Cannot write \"" + std::string(inKey) + "\": " +
                                         (mInMap ? "a map is open and holds nothing but its own values"
                                                 : "no map is open that it could be a value of"),
                                     kiocore::kError_BadArgument);
    }
    if (mDepth >= kMaxXMLNesting) {
        throw kiocore::kio_exception("Cannot write \"" + std::string(inKey) +
                                         "\": it would nest deeper than " + std::to_string(kMaxXMLNesting) +
                                         " elements, which no reader accepts",
                                     kiocore::kError_BadArgument);
    }
    mBytes.append(static_cast<std::size_t>(2 * mDepth), ' ').append("<").append(inElement).append(" Key=\"");
}

void XMLDataWriter::AppendValueStart(std::string_view inElement, std::string_view inKey)
{
    AppendStart(inElement, inKey);
    AppendEncoded(mBytes, inKey);
    mBytes += "\" Value=\"";
}

void XMLDataWriter::WriteValue(const ImmutableString& inKey, const UTF16String& inValue)
{
    AppendValueStart(NameOf(StoredType::kString), inKey);
    AppendEncoded(mBytes, inValue);
    mBytes += kValueEnd;
}

void XMLDataWriter::WriteValue(const ImmutableString& inKey, const MF::BinaryData& inValue)
{
    AppendValueStart(NameOf(StoredType::kBinary), inKey);
    AppendHex(mBytes, inValue);
    mBytes += kValueEnd;
}

void XMLDataWriter::WriteValue(const ImmutableString& inKey, const ISerializeableValue& inValue)
{
    AppendValueStart(NameOf(inValue.GetType()), inKey);
    AppendScalar(mBytes, inValue);
    mBytes += kValueEnd;
}

void XMLDataWriter::WriteStored(StoredType inType, std::string_view inKey, UTF16View inText)
{
    AppendValueStart(NameOf(inType), inKey);
    AppendEncoded(mBytes, inText);
    mBytes += kValueEnd;
}

void XMLDataWriter::WriteObject(const ImmutableString& inKey, const InterfaceRef<ISerializeable>& inObject)
{
    // An object that throws leaves nothing behind, so that the document can still be saved.
    const std::size_t size = mBytes.size();
    const int depth = mDepth;
    const bool inMap = mInMap;
    try {
        BeginObject(inKey, inObject->GetClassID(), inObject->GetClassName(), inObject->GetVersion());
        inObject->SerializeOut(*this);
        EndObject();
    } catch (...) {
        mBytes.resize(size);
        mDepth = depth;
        mInMap = inMap;
        throw;
    }
}

void XMLDataWriter::BeginObject(std::string_view inKey, const Guid& inClassID, std::string_view inClassName,
                                std::uint32_t inVersion)
{
    AppendStart(NameOf(StoredType::kObject), inKey);
    AppendEncoded(mBytes, inKey);
    mBytes.append("\" ClassID=\"").append(inClassID.AsUTF8()).append("\" ClassName=\"");
    AppendEncoded(mBytes, inClassName);
    mBytes += "\" Version=\"";
    AppendNumber(mBytes, inVersion);
    mBytes += "\">\n";
    ++mDepth;
}

void XMLDataWriter::EndObject()
{
    --mDepth;
    mBytes.append(static_cast<std::size_t>(2 * mDepth), ' ').append("</Object>\n");
}

void XMLDataWriter::BeginValueMap(const ImmutableString& inKey, const ImmutableString& inItemKey)
{
    AppendStart(NameOf(StoredType::kMap), inKey);
    AppendEncoded(mBytes, inKey.View());
    if (!inItemKey.IsEmpty()) {
        mBytes += "\" ItemKey=\"";
        AppendEncoded(mBytes, inItemKey.View());
    }
    mBytes += "\">\n";
    ++mDepth;
    mInMap = true;
}

void XMLDataWriter::WriteMapValue(const UTF16String& inMapKey, const UTF16String& inValue)
{
    AppendStart(NameOf(StoredType::kEntry), "map entry");
    AppendEncoded(mBytes, inMapKey);
    mBytes += "\" Value=\"";
    AppendEncoded(mBytes, inValue);
    mBytes += kValueEnd;
}

void XMLDataWriter::EndValueMap()
{
    if (!mInMap) {
        throw kiocore::kio_exception("Cannot end a map: none is open", kiocore::kError_BadArgument);
    }
    mInMap = false;
    --mDepth;
    mBytes.append(static_cast<std::size_t>(2 * mDepth), ' ').append("</Map>\n");
}

std::string XMLDataWriter::GetBytes() const
{
    std::string bytes = mBytes;
    AppendEnd(bytes);
    return bytes;
}

} // namespace BE
