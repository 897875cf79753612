// Any bytes as a document: opened, visited, and read by every type in and out of order. What was read is
// written again and must come back the same, and whichever way of reading took the document, the parser must
// take it too, as the same.

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <kiocore/classref/ClassFactory.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace BE;

constexpr const char* kTopKey = "MediaAcceleratorDatabaseEntry";

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

/// Reads one key as a T; a refusal is an answer.
template <typename T>
bool Read(DataReader& inReader, const ImmutableString& inKey, T& ioValue)
{
    try {
        return inReader.ReadValue(inKey, ioValue);
    } catch (const kiocore::kio_exception& refusal) {
        Require(*refusal.what() != '\0');
        return false;
    }
}

struct Texts {
    std::vector<std::pair<ImmutableString, UTF16String>> values;
};

/// Reads each key that the document shows as every type, from the last to the first.
class Reading final : public kiocore::classref::UnknownBase, public ISerializeable {
public:
    static inline std::vector<ImmutableString> sKeys;
    static inline Texts sTexts;

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == ISerializeable::InterfaceID() ? static_cast<ISerializeable*>(this) : nullptr;
    }
    void SerializeIn(unsigned int, DataReader& inReader) override
    {
        for (auto key = sKeys.rbegin(); key != sKeys.rend(); ++key) {
            UTF16String text;
            if (Read(inReader, *key, text)) {
                sTexts.values.emplace_back(*key, text);
            }
            MF::BinaryData binary;
            Read(inReader, *key, binary);
            ReadScalar<bool>(inReader, *key);
            ReadScalar<std::int32_t>(inReader, *key);
            ReadScalar<std::uint32_t>(inReader, *key);
            ReadScalar<std::int64_t>(inReader, *key);
            ReadScalar<std::uint64_t>(inReader, *key);
            ReadScalar<double>(inReader, *key);
            ReadScalar<Guid>(inReader, *key);
            std::map<UTF16String, UTF16String> map;
            try {
                inReader.ReadValueMap(*key, [&](const UTF16String& mapKey, const UTF16String& value) {
                    return map.emplace(mapKey, value).second;
                });
            } catch (const kiocore::kio_exception&) {
            }
        }
    }
    void SerializeOut(DataWriter&) const override {}
    void SerializeToSink(IDictionarySink&) const override {}
    unsigned int GetVersion() const override { return 1; }
    Guid GetClassID() const override { return Guid("e727e14d-731c-47f8-9d24-2cb69e8c5323"); }
    ImmutableString GetClassName() const override { return kTopKey; }

private:
    template <typename T>
    static void ReadScalar(DataReader& inReader, const ImmutableString& inKey)
    {
        SerializeableValue<T> value;
        Read(inReader, inKey, value);
    }
};

void ExpectTextsComeBack(const Texts& inTexts)
{
    const InterfaceRef<IXMLFileWriter> writer =
        kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileWriterClassID);
    for (const auto& [key, text] : inTexts.values) {
        writer->GetDataWriter().WriteValue(key, text);
    }
    const InterfaceRef<IXMLFileReader> reader =
        kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileReaderClassID);
    Require(reader->OpenBytes(writer->GetBytes()) == 0);
    for (const auto& [key, text] : inTexts.values) {
        UTF16String again;
        Require(reader->GetDataReader().ReadValue(key, again) && again == text);
    }
}

std::vector<UTF16String> Shown(IXMLFileReader& inReader)
{
    std::vector<UTF16String> shown;
    inReader.VisitStored(kTopKey, [&](std::string_view type, std::string_view key, const UTF16String& value) {
        shown.push_back(kiocore::utility::ToUTF16(type));
        shown.push_back(kiocore::utility::ToUTF16(key));
        shown.push_back(value);
    });
    return shown;
}

/// A comment in front is nothing that our writer writes, so such a document goes to the parser.
void ExpectTheParserToAgree(IXMLFileReader& inReader, std::string_view inBytes)
{
    inBytes.remove_prefix(inBytes.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    const InterfaceRef<IXMLFileReader> parser =
        kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileReaderClassID);
    Require(parser->OpenBytes("<!---->" + std::string(inBytes)) == 0 && Shown(*parser) == Shown(inReader) &&
            parser->GetDataReader().GetValueCount() == inReader.GetDataReader().GetValueCount());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    BE::Initialize();
    kiocore::classref::ClassFactory::RegisterClass(
        Guid("e727e14d-731c-47f8-9d24-2cb69e8c5323"), "kReadingClassID", "Reading",
        [](InterfaceRef<kiocore::classref::UnknownBase>& outObject) {
            outObject = kiocore::classref::MakeObject<Reading>();
        });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const InterfaceRef<IXMLFileReader> reader =
        kiocore::classref::ClassFactory::CreateInstanceRef(kXMLFileReaderClassID);
    const std::string_view bytes(reinterpret_cast<const char*>(inBytes), inSize);
    const int result = reader->OpenBytes(bytes);
    Require((result == 0) == reader->GetOpenError().empty());
    if (result == 0) {
        ExpectTheParserToAgree(*reader, bytes);
    }
    Reading::sKeys.clear();
    Reading::sTexts.values.clear();
    reader->VisitStored(kTopKey, [](std::string_view, std::string_view key, const UTF16String&) {
        Reading::sKeys.emplace_back(key);
    });
    InterfaceRef<ISerializeable> object;
    try {
        reader->GetDataReader().ReadObject(kTopKey, object);
    } catch (const kiocore::kio_exception&) {
    }
    ExpectTextsComeBack(Reading::sTexts);
    return 0;
}
