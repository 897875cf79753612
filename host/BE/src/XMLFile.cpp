#include <BE/XMLFile.h>

#include "PreferenceStore.h"
#include "TextCoding.h"
#include "XMLDataReader.h"
#include "XMLDataWriter.h"
#include "XMLFileClasses.h"

#include <kiocore/classref/ClassFactory.h>
#include <kiocore/debug/Trace.h>

#include <cerrno>

namespace BE {

using kiocore::classref::ClassFactory;
using kiocore::classref::UnknownBase;

constinit const Guid kXMLFileReaderClassID(Guid::Bytes{0x15, 0x39, 0xc5, 0x4a, 0x5c, 0xb5, 0x4d, 0x9e, 0x96,
                                                       0xbc, 0x83, 0x6f, 0x69, 0x9b, 0x51, 0x97});
constinit const Guid kXMLFileWriterClassID(Guid::Bytes{0x57, 0xb7, 0x47, 0x32, 0xd8, 0xb3, 0x4f, 0x45, 0x98,
                                                       0x91, 0x03, 0x0c, 0xa9, 0x6d, 0x6a, 0xaa});

IXMLFileReader::~IXMLFileReader() = default;
const CFUUIDBytes& IXMLFileReader::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0xaf, 0x56, 0xb0, 0x47, 0x45, 0x22, 0x4a, 0x8f, 0xab, 0x5c, 0x0f, 0x90, 0xa5, 0xb7, 0x2c, 0x23}};
    return kID;
}

IXMLFileWriter::~IXMLFileWriter() = default;
const CFUUIDBytes& IXMLFileWriter::InterfaceID()
{
    static constexpr CFUUIDBytes kID = {
        {0xcb, 0x05, 0xb8, 0xb7, 0x12, 0x58, 0x4f, 0x10, 0x99, 0xf3, 0x00, 0xa8, 0x8c, 0xf9, 0xf9, 0xfb}};
    return kID;
}

namespace {

class XMLFileReader final : public UnknownBase, public IXMLFileReader {
public:
    XMLFileReader() : mReader(mDocument, mDocument.Root()) {}

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IXMLFileReader::InterfaceID() ? static_cast<IXMLFileReader*>(this)
                                                              : UnknownBase::QueryMap(inInterfaceID);
    }

    int Open(const UTF16String& inPath) override
    {
        KIO_HOST_CALL("BE::IXMLFileReader::Open", inPath);
        return Opened(mDocument.OpenFile(inPath));
    }

    int OpenBytes(std::string_view inBytes) override
    {
        KIO_HOST_CALL("BE::IXMLFileReader::OpenBytes", inBytes.size());
        return Opened(mDocument.OpenBytes(inBytes));
    }

    std::string GetOpenError() const override { return mDocument.Error(); }
    kiocore::filesupport::FileTime GetModificationTime() const override
    {
        return mDocument.ModificationTime();
    }
    DataReader& GetDataReader() override { return mReader; }

    bool VisitStored(
        const ImmutableString& inKey,
        const std::function<void(std::string_view, std::string_view, const UTF16String&)>& inVisit) override
    {
        const StoredValue* object = mDocument.Find(mDocument.Root(), inKey);
        if (!object || object->type != StoredType::kObject) {
            return false;
        }
        VisitGroup(mDocument.GroupOf(*object), inVisit);
        return true;
    }

private:
    int Opened(bool inSuccess)
    {
        mReader.Reset(mDocument.Root());
        return inSuccess ? 0 : -1;
    }

    void VisitGroup(
        const StoredGroup& inGroup,
        const std::function<void(std::string_view, std::string_view, const UTF16String&)>& inVisit) const
    {
        UTF16String text;
        std::uint32_t at = inGroup.first;
        for (std::uint32_t i = 0; i < inGroup.count; ++i) {
            const StoredValue& value = mDocument.At(at);
            at = value.next;
            if (value.type == StoredType::kObject) {
                const StoredGroup& object = mDocument.GroupOf(value);
                kiocore::utility::ToUTF16(object.className, text);
                text += u" version ";
                kiocore::utility::AppendDecimal(text, object.version);
            } else if (value.type == StoredType::kMap) {
                text = kiocore::utility::DecimalText(mDocument.GroupOf(value).count);
            } else if (DecodeText(value.Value(), text)) {
                kiocore::utility::ToUTF16(value.Value(), text); // damaged: shown as it stands
            }
            inVisit(NameOf(value.type), value.Key(), text);
            if (value.type == StoredType::kMap) {
                VisitGroup(mDocument.GroupOf(value), inVisit);
            }
        }
    }

    XMLDocument mDocument;
    XMLDataReader mReader;
};

class XMLFileWriter final : public UnknownBase, public IXMLFileWriter {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IXMLFileWriter::InterfaceID() ? static_cast<IXMLFileWriter*>(this)
                                                              : UnknownBase::QueryMap(inInterfaceID);
    }

    DataWriter& GetDataWriter() override { return mWriter; }

    int Save(const UTF16String& inPath) override
    {
        KIO_HOST_CALL("BE::IXMLFileWriter::Save", inPath);
        mResult = {};
        if (!mWriter.IsComplete()) {
            mResult.errorNumber = EINVAL;
            mResult.failedStep = "end the document: an object or a map is still open";
            return mResult.result;
        }
        const auto durability = PreferenceStore::Get().GetDurability();
        mResult = mWriter.WithBytes([&](std::string_view bytes) {
            if (bytes.size() > kMaxXMLFileBytes) {
                kiocore::filesupport::SaveResult tooLarge;
                tooLarge.errorNumber = EFBIG;
                tooLarge.failedStep = "keep within the size that readers accept";
                return tooLarge;
            }
            return kiocore::filesupport::SaveFileAtomically(inPath, bytes, durability);
        });
        return mResult.result;
    }

    kiocore::filesupport::SaveResult GetSaveResult() const override { return mResult; }
    std::string GetBytes() const override { return mWriter.GetBytes(); }

private:
    XMLDataWriter mWriter;
    kiocore::filesupport::SaveResult mResult;
};

template <typename C>
void Make(InterfaceRef<UnknownBase>& outObject)
{
    outObject = kiocore::classref::MakeObject<C>();
}

} // namespace

void RegisterXMLFileClasses()
{
    ClassFactory::RegisterClass(kXMLFileReaderClassID, "BE::kXMLFileReaderClassID", "XMLFileReader",
                                &Make<XMLFileReader>);
    ClassFactory::RegisterClass(kXMLFileWriterClassID, "BE::kXMLFileWriterClassID", "XMLFileWriter",
                                &Make<XMLFileWriter>);
}

} // namespace BE
